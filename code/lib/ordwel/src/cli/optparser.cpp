// SPDX-License-Identifier: MIT
#include <ordwel/optparser.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include <ordwel/strutil.h>

#include "platform/console.h"

namespace ordwel {
namespace arg {

namespace {

// The id that words of no option are reported under.
constexpr int k_word_id = 1;
// The column that every option label ends at, less the two blanks before the text.
constexpr int k_label_column = 20;

// A word may be an option's value unless it looks like an option itself: "-5" and "-" are values,
// "-x" and "--y" are not.
bool is_value_word(char const *a_word)
{
    return a_word[0] != '-' || a_word[1] == '\0' || (a_word[1] >= '0' && a_word[1] <= '9');
}

// HTML's three special characters and their entities, one table built on first use. strutil's
// table replacement works in one pass, so an ampersand that a replacement brings in is never
// escaped again.
std::string html_escaped(std::string const &a_text)
{
    static std::map<char, std::string> const k_table = {{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}};
    return strutil::string_replaced(a_text, k_table);
}

// A callback's result below -1 is outside its contract; it counts as 0 (no word used), so the scan
// still moves forward.
long long used_words(int a_result)
{
    return a_result < 0 ? 0 : a_result;
}

// Adds a number of used words to an index without leaving [0, a_limit]: a result beyond the words
// there are ends the scan instead of reading outside argv.
unsigned int index_after(unsigned int a_base, long long a_step, unsigned int a_limit)
{
    long long const l_index = static_cast<long long>(a_base) + a_step;
    if (l_index < 0) {
        return 0;
    }
    if (l_index > static_cast<long long>(a_limit)) {
        return a_limit;
    }
    return static_cast<unsigned int>(l_index);
}

// The words being scanned: argv itself until the scan meets a "--name=v1,v2" word; from then on a
// copy in which each such word stands replaced by "--name", "v1", "v2".
class word_line {
public:
    word_line(char const *const *a_argv, unsigned int a_argc) : m_words(a_argv), m_size(a_argc), m_copy() {}

    char const *operator[](std::size_t a_index) const { return m_words[a_index]; }
    // The place of a word, so that a run of words can be handed on as a range; a_index may be size().
    char const *const *at(std::size_t a_index) const { return m_words + a_index; }
    std::size_t size() const { return m_size; }

    void replace(std::size_t a_index, std::vector<char const *> const &a_words)
    {
        if (m_copy.empty()) {
            m_copy.assign(m_words, m_words + m_size);
        }
        m_copy.erase(m_copy.begin() + static_cast<std::ptrdiff_t>(a_index));
        m_copy.insert(m_copy.begin() + static_cast<std::ptrdiff_t>(a_index), a_words.begin(), a_words.end());
        m_words = m_copy.data();
        m_size = m_copy.size();
    }

private:
    char const *const *m_words;
    std::size_t m_size;
    std::vector<char const *> m_copy;
};

using opts = optparser::opts;
using opt = optparser::opt;
using entry = opts::value_type;

} // namespace

// The table in the form the scan reads it, built from the map when a parse first needs it and
// dropped whenever the map changes (add_opt, assignment), so a callback that edits the table is
// seen from the next step on. The scan keeps no pointer into it across a callback.
struct opt_lookup {
    // An option with a long name, its first letter copied beside it: most names differ there.
    struct named {
        char m_first;
        char const *m_name;
        entry const *m_entry;
    };
    // The options with a long name, in id order, so the first of equal names wins as in the map.
    std::vector<named> m_named;
    // The option of each short letter. A letter is a signed char widened to int, so the ids -128 to
    // 127 are reachable, each at the index of its byte.
    entry const *m_letters[256];

    explicit opt_lookup(opts const &a_opts) : m_named(), m_letters()
    {
        for (entry const &l_entry : a_opts) {
            if (l_entry.second.m_name != nullptr) {
                m_named.push_back({l_entry.second.m_name[0], l_entry.second.m_name, &l_entry});
            }
            if (l_entry.first >= -128 && l_entry.first <= 127) {
                m_letters[static_cast<unsigned char>(static_cast<signed char>(l_entry.first))] = &l_entry;
            }
        }
    }

    // The option of a long name (the whole text compared), or null.
    entry const *find_long(char const *a_name) const
    {
        for (named const &l_named : m_named) {
            if (l_named.m_first == a_name[0] && std::strcmp(l_named.m_name, a_name) == 0) {
                return l_named.m_entry;
            }
        }
        return nullptr;
    }

    // The option of a short letter, or null.
    entry const *find_letter(char a_letter) const { return m_letters[static_cast<unsigned char>(a_letter)]; }
};

namespace {

// How a step of the scan leaves it: on with the next word, or over for one of three reasons.
enum class scan_step { next_word, ended, stopped, failed };

// One parse's walk over the words. Each step reads the word at an index, calls the functor and
// moves the index past the words that were used. The table and the functor are the parser's own
// and are read anew at every step, as a callback may change them.
class option_scan {
public:
    option_scan(opt_functor *const &a_functor, opts const &a_opts, std::unique_ptr<opt_lookup> &a_lookup,
                std::deque<std::string> &a_split_words, char const *const *a_argv, unsigned int a_argc)
        : m_functor(a_functor), m_opts(a_opts), m_lookup(a_lookup), m_split_words(a_split_words),
          m_line(a_argv, a_argc), m_stopped_by(0)
    {
    }

    scan_step run()
    {
        for (unsigned int l_index = 1; l_index < m_line.size(); ++l_index) {
            scan_step const l_step = word(l_index);
            if (l_step != scan_step::next_word) {
                return l_step;
            }
        }
        return scan_step::ended;
    }

    // The id whose callback answered -1, after run() gave scan_step::stopped.
    int stopped_by() const { return m_stopped_by; }

private:
    // The table's lookup form, rebuilt here when a change of the table has dropped it.
    opt_lookup const &lookup()
    {
        if (m_lookup == nullptr) {
            m_lookup.reset(new opt_lookup(m_opts));
        }
        return *m_lookup;
    }

    // Sorts the word at a_index: a word of no option, a lone "-" (skipped), "--", a long option or
    // a cluster of short ones.
    scan_step word(unsigned int &a_index)
    {
        char const *const *const l_word = m_line.at(a_index);
        if (*l_word == nullptr) {
            return scan_step::next_word;
        }
        if ((*l_word)[0] != '-') {
            return call(k_word_id, l_word, l_word + 1) == -1 ? stop(k_word_id) : scan_step::next_word;
        }
        if ((*l_word)[1] == '\0') {
            return scan_step::next_word;
        }
        if ((*l_word)[1] == '-') {
            return (*l_word)[2] == '\0' ? end_of_options(a_index) : long_option(a_index);
        }
        return short_cluster(a_index);
    }

    // "--" and everything behind it are words, and no result counts.
    scan_step end_of_options(unsigned int a_index)
    {
        for (std::size_t l_rest = a_index; l_rest < m_line.size(); ++l_rest) {
            if (m_line[l_rest] != nullptr) {
                call(k_word_id, m_line.at(l_rest), m_line.at(l_rest) + 1);
            }
        }
        return scan_step::ended;
    }

    // "--name" with its values from the words behind it; "--name=v1,v2" is split first.
    scan_step long_option(unsigned int &a_index)
    {
        char const *const l_name = m_line[a_index] + 2;
        entry const *l_opt = lookup().find_long(l_name);
        if (l_opt == nullptr) {
            l_opt = split_equals_form(a_index, l_name);
            if (l_opt == nullptr) {
                return scan_step::failed;
            }
        }
        std::size_t const l_count = count_values(a_index + 1, l_opt->second.m_max);
        if (l_count < l_opt->second.m_min) {
            std::fprintf(stderr, "*** too few arguments for option `%s'\n", l_opt->second.m_name);
            return scan_step::failed;
        }
        // The id is read before the call: a callback may replace the table and free its entries.
        int const l_id = l_opt->first;
        char const *const *const l_first = m_line.at(a_index + 1);
        return advance(l_id, call(l_id, l_first, l_first + l_count), a_index, 0);
    }

    // "--name=v1,v2" becomes "--name", "v1", "v2" in the line, and the scan goes on as if they had
    // been typed so. The option of the bare name, or null after an error line.
    entry const *split_equals_form(unsigned int a_index, char const *a_name)
    {
        char const *const l_equals = std::strchr(a_name, '=');
        if (l_equals == nullptr) {
            std::fprintf(stderr, "*** no such option `%s'\n", a_name);
            return nullptr;
        }
        std::string const l_bare(a_name, l_equals);
        entry const *const l_opt = lookup().find_long(l_bare.c_str());
        if (l_opt == nullptr) {
            std::fprintf(stderr, "*** no such option `%s'\n", l_bare.c_str());
            return nullptr;
        }
        // The words live in the deque, which never moves what it holds, so argv-like pointers stay.
        std::vector<char const *> l_expanded;
        m_split_words.push_back("--" + l_bare);
        l_expanded.push_back(m_split_words.back().c_str());
        char const *l_piece = l_equals + 1;
        for (;;) {
            char const *const l_comma = std::strchr(l_piece, ',');
            m_split_words.emplace_back(l_piece, l_comma != nullptr ? l_comma : l_piece + std::strlen(l_piece));
            l_expanded.push_back(m_split_words.back().c_str());
            if (l_comma == nullptr) {
                break;
            }
            l_piece = l_comma + 1;
        }
        m_line.replace(a_index, l_expanded);
        return l_opt;
    }

    // A cluster of short options: flags in turn, until a letter that takes words ends it. The
    // lookup is fetched for each letter, as a flag's callback may have changed the table.
    scan_step short_cluster(unsigned int &a_index)
    {
        for (char const *l_letter = m_line[a_index] + 1; *l_letter != '\0'; ++l_letter) {
            entry const *const l_opt = lookup().find_letter(*l_letter);
            if (l_opt == nullptr) {
                std::fprintf(stderr, "*** no such option `%c'\n", *l_letter);
                return scan_step::failed;
            }
            if (l_opt->second.m_max != 0) {
                return short_option_with_words(a_index, l_letter, l_opt->second);
            }
            int const l_id = l_opt->first;
            if (call(l_id, nullptr, nullptr) == -1) {
                return stop(l_id);
            }
        }
        return scan_step::next_word;
    }

    // The letter at a_letter takes words. Whatever follows it in the word is its first value, "="
    // and all; the rest come from the words behind.
    scan_step short_option_with_words(unsigned int &a_index, char const *a_letter, opt const &a_opt)
    {
        int const l_id = static_cast<int>(static_cast<signed char>(*a_letter));
        std::size_t const l_attached = a_letter[1] != '\0' ? 1 : 0;
        std::size_t const l_count = count_values(a_index + 1, a_opt.m_max - l_attached);
        if (l_attached + l_count < a_opt.m_min) {
            std::fprintf(stderr, "*** too few arguments for option `%c'\n", *a_letter);
            return scan_step::failed;
        }
        char const *const *const l_first = m_line.at(a_index + 1);
        if (l_attached == 0) {
            return advance(l_id, call(l_id, l_first, l_first + l_count), a_index, 0);
        }
        // The attached word leads, the words of the line follow: one list, allocated at its size.
        std::vector<char const *> l_args(1 + l_count, a_letter + 1);
        std::copy(l_first, l_first + l_count, l_args.begin() + 1);
        // An attached word counts as used: one word fewer of the line was taken.
        return advance(l_id, (*m_functor)(l_id, std::move(l_args)), a_index, 1);
    }

    // The words from position a_next on that qualify as values, one after the other, at most a_room.
    std::size_t count_values(std::size_t a_next, std::size_t a_room) const
    {
        std::size_t l_count = 0;
        while (l_count < a_room && is_value_at(a_next + l_count)) {
            ++l_count;
        }
        return l_count;
    }

    bool is_value_at(std::size_t a_index) const
    {
        return a_index < m_line.size() && m_line[a_index] != nullptr && is_value_word(m_line[a_index]);
    }

    // Moves a_index past the words that the callback of a_id used (its a_result), less the
    // a_attached words that were not words of the line of their own; -1 stops the scan.
    scan_step advance(int a_id, int a_result, unsigned int &a_index, long long a_attached)
    {
        if (a_result == -1) {
            return stop(a_id);
        }
        a_index = index_after(a_index, used_words(a_result) - a_attached, static_cast<unsigned int>(m_line.size()));
        return scan_step::next_word;
    }

    // The callback takes its words by value: the list is built in place as its argument, from the
    // line's words [a_first, a_last), so an empty range allocates nothing.
    int call(int a_id, char const *const *a_first, char const *const *a_last)
    {
        return (*m_functor)(a_id, std::vector<char const *>(a_first, a_last));
    }

    scan_step stop(int a_id)
    {
        m_stopped_by = a_id;
        return scan_step::stopped;
    }

    opt_functor *const &m_functor;
    opts const &m_opts;
    std::unique_ptr<opt_lookup> &m_lookup;
    std::deque<std::string> &m_split_words;
    word_line m_line;
    int m_stopped_by;
};

} // namespace

// ---- opt_functor ----

opt_functor::opt_functor() : m_stopped_at(0)
{
}

opt_functor::opt_functor(opt_functor const &a_other) = default;
opt_functor &opt_functor::operator=(opt_functor const &a_other) = default;
opt_functor::~opt_functor() = default;

int opt_functor::stopped_at() const
{
    return m_stopped_at;
}

// ---- optparser: the table and the scan ----

optparser::optparser(opt_functor *a_functor)
    : m_functor(a_functor), m_opts(), m_lookup(), m_split_words(), m_parse_depth(0), m_indentation(1),
      m_text_line_width(80), m_column(0), m_html_output(false), m_no_console(true),
      m_console(nullptr), m_console_info{0, 0, 0}
{
    platform::console_state const l_console = platform::console_open();
    m_console = l_console.m_handle;
    m_no_console = !l_console.m_present;
    m_console_info.m_width = l_console.m_width;
    m_console_info.m_height = l_console.m_height;
    m_console_info.m_attributes = l_console.m_attributes;
}

// A copy has its own table and shares the functor. The words split from "=" forms belong to the
// parse that made them, so a copy starts without any.
optparser::optparser(optparser const &a_other)
    : m_functor(a_other.m_functor), m_opts(a_other.m_opts), m_lookup(), m_split_words(), m_parse_depth(0),
      m_indentation(a_other.m_indentation), m_text_line_width(a_other.m_text_line_width), m_column(a_other.m_column),
      m_html_output(a_other.m_html_output), m_no_console(a_other.m_no_console), m_console(a_other.m_console),
      m_console_info(a_other.m_console_info)
{
}

optparser &optparser::operator=(optparser const &a_other)
{
    if (this != &a_other) {
        m_functor = a_other.m_functor;
        m_opts = a_other.m_opts;
        m_lookup.reset();
        m_indentation = a_other.m_indentation;
        m_text_line_width = a_other.m_text_line_width;
        m_column = a_other.m_column;
        m_html_output = a_other.m_html_output;
        m_no_console = a_other.m_no_console;
        m_console = a_other.m_console;
        m_console_info = a_other.m_console_info;
    }
    return *this;
}

optparser::~optparser() = default;

void optparser::add_opt(int a_id, char const *a_name, unsigned int a_min, unsigned int a_max)
{
    opt const l_opt = {a_min, a_max < a_min ? a_min : a_max, a_name};
    m_opts[a_id] = l_opt;
    m_lookup.reset();
}

bool optparser::parse(unsigned int a_argc, char **a_argv)
{
    if (a_argc < 2 || a_argv == nullptr || m_functor == nullptr) {
        return true;
    }
    if (m_parse_depth == 0 && !m_split_words.empty()) {
        m_split_words.clear();
    }
    struct depth_guard {
        unsigned int &m_depth;
        explicit depth_guard(unsigned int &a_depth) : m_depth(a_depth) { ++m_depth; }
        depth_guard(depth_guard const &) = delete;
        depth_guard &operator=(depth_guard const &) = delete;
        ~depth_guard() { --m_depth; }
    } const l_depth(m_parse_depth);

    option_scan l_scan(m_functor, m_opts, m_lookup, m_split_words, a_argv, a_argc);
    scan_step const l_end = l_scan.run();
    if (l_end == scan_step::stopped) {
        m_functor->m_stopped_at = l_scan.stopped_by();
    }
    return l_end != scan_step::failed;
}

// ---- optparser: the output routes ----

void optparser::emit(char const *a_text, std::size_t a_size)
{
    if (m_html_output || m_no_console) {
        if (a_size != 0) {
            std::fwrite(a_text, 1, a_size, stdout);
        }
    } else {
        platform::console_state const l_console = {m_console, true, m_console_info.m_width, m_console_info.m_height,
                                                   m_console_info.m_attributes};
        platform::console_write(l_console, a_text, a_size);
    }
}

void optparser::emit(std::string const &a_text)
{
    emit(a_text.data(), a_text.size());
}

void optparser::print(std::string const &a_text)
{
    if (m_html_output) {
        emit(html_escaped(a_text));
    } else {
        emit(a_text);
    }
}

void optparser::new_line()
{
    emit("\n", 1);
}

void optparser::set_column(unsigned int a_count)
{
    static char const k_blanks[] = "                                                                ";
    while (a_count != 0) {
        unsigned int const l_piece = a_count < sizeof k_blanks - 1 ? a_count : sizeof k_blanks - 1;
        emit(k_blanks, l_piece);
        a_count -= l_piece;
    }
}

void optparser::text_strong()
{
    if (m_html_output) {
        emit("<strong>", 8);
    } else if (!m_no_console) {
        platform::console_state const l_console = {m_console, true, m_console_info.m_width, m_console_info.m_height,
                                                   m_console_info.m_attributes};
        platform::console_strong(l_console, true);
    }
}

void optparser::text_strong_off()
{
    if (m_html_output) {
        emit("</strong>", 9);
    } else if (!m_no_console) {
        platform::console_state const l_console = {m_console, true, m_console_info.m_width, m_console_info.m_height,
                                                   m_console_info.m_attributes};
        platform::console_strong(l_console, false);
    }
}

void optparser::text_underline()
{
    if (m_html_output) {
        emit("<u>", 3);
    } else {
        emit("<", 1);
    }
}

void optparser::text_underline_off()
{
    if (m_html_output) {
        emit("</u>", 4);
    } else {
        emit(">", 1);
    }
}

void optparser::set_html_output()
{
    m_html_output = true;
}

bool optparser::is_html_output() const
{
    return m_html_output;
}

void optparser::clear_screen()
{
    platform::console_state const l_console = {m_console, !m_no_console, m_console_info.m_width,
                                               m_console_info.m_height, m_console_info.m_attributes};
    platform::console_clear(l_console);
}

// ---- optparser: layout ----

void optparser::set_level(unsigned int a_level)
{
    m_indentation = a_level;
    m_column = a_level < 2 ? 0 : a_level * 8 - 8;
}

void optparser::set_indentation(unsigned int a_level)
{
    set_level(a_level < 2 ? 1 : a_level);
}

unsigned int optparser::get_indentation() const
{
    return m_indentation;
}

void optparser::set_text_line_width(unsigned int a_width)
{
    m_text_line_width = a_width;
}

bool optparser::set_max_text_line_width()
{
    if (m_no_console) {
        return false;
    }
    // A console narrower than the margin leaves a width of 0 rather than a wrapped-around one.
    m_text_line_width = m_console_info.m_width > 8 ? m_console_info.m_width - 8 : 0;
    return true;
}

void optparser::heading(char const *a_heading)
{
    if (a_heading == nullptr) {
        return;
    }
    if (m_html_output) {
        std::string l_line = "<h3>";
        l_line.append(m_column, ' ');
        l_line += a_heading;
        l_line += "</h3>\n";
        emit(l_line);
        return;
    }
    set_column(m_column);
    text_strong();
    emit(std::string(a_heading) + "\n");
    text_strong_off();
}

void optparser::add_desc_indent1(char const *a_heading)
{
    set_level(1);
    heading(a_heading);
}

void optparser::add_desc_indent2(char const *a_heading)
{
    set_level(2);
    if (a_heading == nullptr) {
        return;
    }
    // No h3 element at this level: the heading is emphasised body text, in HTML as well.
    set_column(m_column);
    text_strong();
    emit(std::string(a_heading) + "\n");
    text_strong_off();
}

void optparser::add_desc_indent3(char const *a_heading)
{
    set_level(3);
    heading(a_heading);
}

void optparser::add_desc_indent4(char const *a_heading)
{
    set_level(4);
    heading(a_heading);
}

void optparser::add_desc_indent5(char const *a_heading)
{
    set_level(5);
    heading(a_heading);
}

void optparser::add_desc_paragraph()
{
    new_line();
}

void optparser::add_html_underline_h3(char const *a_text)
{
    std::string l_line = "<h3>";
    l_line.append(m_column, ' ');
    l_line += "<u>";
    l_line += a_text != nullptr ? a_text : "";
    l_line += "</u></h3>\n";
    emit(l_line);
}

void optparser::add_html_underline_h4(char const *a_text)
{
    std::string l_line = "<h4>";
    l_line.append(m_column, ' ');
    l_line += "<u>";
    l_line += a_text != nullptr ? a_text : "";
    l_line += "</u></h4>\n";
    emit(l_line);
}

// ---- optparser: described options and body text ----

void optparser::add_desc(int a_id, char const *a_text)
{
    opts::const_iterator const l_opt = m_opts.find(a_id);
    if (l_opt == m_opts.end()) {
        return;
    }
    // Only ids of one byte name a letter; a larger id's low byte would be some other option's.
    char const l_short = a_id >= 1 && a_id <= 255 ? static_cast<char>(a_id & 0xff) : '\0';
    std::string const l_long = l_opt->second.m_name != nullptr ? l_opt->second.m_name : "";
    add_desc(l_short, l_long, a_text != nullptr ? a_text : "");
}

void optparser::add_desc(char const *a_text)
{
    add_desc('\0', std::string(), a_text != nullptr ? a_text : "");
}

void optparser::add_desc(char a_short_name, std::string const &a_long_name, std::string const &a_text)
{
    int const l_long_blanks = k_label_column - static_cast<int>(a_long_name.size() > 1000 ? 1000 : a_long_name.size());
    unsigned int const l_long_indent = l_long_blanks > 0 ? static_cast<unsigned int>(l_long_blanks) : 0;
    if (a_short_name != '\0' || !a_long_name.empty()) {
        set_level(4);
    }
    if (a_short_name != '\0' && !a_long_name.empty()) {
        set_column(k_label_column);
        text_strong();
        print(std::string("-") + a_short_name + "\n");
        text_strong_off();
        set_column(l_long_indent);
        text_strong();
        print("--" + a_long_name + "  ");
        text_strong_off();
    } else if (a_short_name != '\0') {
        set_column(k_label_column);
        text_strong();
        print(std::string("-") + a_short_name + "  ");
        text_strong_off();
    } else if (!a_long_name.empty()) {
        set_column(l_long_indent);
        text_strong();
        print("--" + a_long_name + "  ");
        text_strong_off();
    } else {
        set_column(m_column);
    }

    uint32 l_position = m_column;
    std::size_t l_start = 0;
    for (;;) {
        std::size_t const l_bang = a_text.find('!', l_start);
        std::size_t const l_end = l_bang == std::string::npos ? a_text.size() : l_bang;
        std::string const l_piece = a_text.substr(l_start, l_end - l_start);
        if (l_piece == "S") {
            text_strong();
        } else if (l_piece == "SE") {
            text_strong_off();
        } else if (l_piece == "Q" || l_piece == "QE") {
            print("\"");
        } else if (l_piece == "SA") {
            text_underline();
        } else if (l_piece == "SAE") {
            text_underline_off();
        } else if (l_piece == "SAA") {
            if (m_html_output) {
                emit("<u>", 3);
            }
        } else if (l_piece == "SAAE") {
            if (m_html_output) {
                emit("</u>", 4);
            }
        } else if (l_piece == "X") {
            print("!");
        } else if (l_piece == "LT") {
            print("&lt;");
        } else if (l_piece == "GT") {
            print("&gt;");
        } else {
            body_text(l_piece, l_position);
        }
        if (l_bang == std::string::npos) {
            break;
        }
        l_start = l_bang + 1;
    }
    new_line();
}

// Wraps one piece of body text at the line width, going on from column a_position and leaving
// there the column that the text ends at. Continuation lines start at the indentation column.
void optparser::body_text(std::string const &a_text, uint32 &a_position)
{
    std::size_t l_start = 0;
    for (;;) {
        std::size_t const l_left = a_text.size() - l_start;
        uint32 const l_room = m_text_line_width - a_position;
        if (l_left <= l_room) {
            print(a_text.substr(l_start));
            a_position += static_cast<uint32>(l_left);
            return;
        }
        std::size_t l_blank = a_text.rfind(' ', l_start + l_room);
        if (l_blank == std::string::npos || l_blank < l_start) {
            l_blank = a_text.find(' ', l_start + l_room);
        }
        if (l_blank == std::string::npos) {
            // One word too long for the line: it goes out whole.
            print(a_text.substr(l_start));
            new_line();
            set_column(m_column);
            a_position = m_column;
            return;
        }
        print(a_text.substr(l_start, l_blank - l_start));
        new_line();
        set_column(m_column);
        a_position = m_column;
        l_start = l_blank + 1;
    }
}

} // namespace arg
} // namespace ordwel
