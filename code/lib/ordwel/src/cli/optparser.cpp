#include <ordwel/optparser.h>

#include <cstdio>
#include <cstring>

#include <ordwel/strutil.h>

#include "platform/console.h"

namespace ordwel {
namespace arg {

namespace {

// The id that words of no option are reported under.
constexpr int k_word_id = 1;
// Room reserved up front in the list of words collected for an option.
constexpr std::size_t k_reserved_words = 16;
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
    : m_functor(a_functor), m_opts(), m_split_words(), m_parse_depth(0), m_indentation(1), m_text_line_width(80),
      m_column(0), m_html_output(false), m_no_console(true), m_console(nullptr), m_console_info{0, 0, 0}
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
    : m_functor(a_other.m_functor), m_opts(a_other.m_opts), m_split_words(), m_parse_depth(0),
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
}

optparser::opts::const_iterator optparser::get(char const *a_name) const
{
    for (opts::const_iterator l_iter = m_opts.begin(); l_iter != m_opts.end(); ++l_iter) {
        if (l_iter->second.m_name != nullptr && std::strcmp(l_iter->second.m_name, a_name) == 0) {
            return l_iter;
        }
    }
    return m_opts.end();
}

bool optparser::parse(unsigned int a_argc, char **a_argv)
{
    if (a_argc < 2 || a_argv == nullptr || m_functor == nullptr) {
        return true;
    }
    if (m_parse_depth == 0) {
        m_split_words.clear();
    }
    struct depth_guard {
        unsigned int &m_depth;
        explicit depth_guard(unsigned int &a_depth) : m_depth(a_depth) { ++m_depth; }
        depth_guard(depth_guard const &) = delete;
        depth_guard &operator=(depth_guard const &) = delete;
        ~depth_guard() { --m_depth; }
    } const l_depth(m_parse_depth);

    word_line l_line(a_argv, a_argc);
    std::vector<char const *> l_args;
    l_args.reserve(k_reserved_words);

    // Collects the values of an option behind position a_next into l_args: first up to the
    // minimum, where every word has to qualify, then on to the maximum while words qualify.
    auto const l_collect = [&](std::size_t a_next, opt const &a_opt) -> bool {
        while (l_args.size() < a_opt.m_min) {
            if (a_next >= l_line.size() || l_line[a_next] == nullptr || !is_value_word(l_line[a_next])) {
                return false;
            }
            l_args.push_back(l_line[a_next++]);
        }
        while (l_args.size() < a_opt.m_max && a_next < l_line.size() && l_line[a_next] != nullptr &&
               is_value_word(l_line[a_next])) {
            l_args.push_back(l_line[a_next++]);
        }
        return true;
    };
    auto const l_stop = [&](int a_id) {
        m_functor->m_stopped_at = a_id;
        return true;
    };

    for (unsigned int l_index = 1; l_index < l_line.size(); ++l_index) {
        char const *const l_word = l_line[l_index];
        l_args.clear();
        if (l_word == nullptr) {
            continue;
        }
        if (l_word[0] != '-') {
            if ((*m_functor)(k_word_id, std::vector<char const *>(1, l_word)) == -1) {
                return l_stop(k_word_id);
            }
            continue;
        }
        if (l_word[1] == '\0') {
            continue;
        }
        if (l_word[1] == '-' && l_word[2] == '\0') {
            // The end of the options: "--" and everything behind it are words, and no result counts.
            for (std::size_t l_rest = l_index; l_rest < l_line.size(); ++l_rest) {
                if (l_line[l_rest] != nullptr) {
                    (*m_functor)(k_word_id, std::vector<char const *>(1, l_line[l_rest]));
                }
            }
            return true;
        }
        if (l_word[1] == '-') {
            char const *const l_name = l_word + 2;
            opts::const_iterator l_opt = get(l_name);
            if (l_opt == m_opts.end()) {
                char const *const l_equals = std::strchr(l_name, '=');
                if (l_equals == nullptr) {
                    std::fprintf(stderr, "*** no such option `%s'\n", l_name);
                    return false;
                }
                std::string const l_bare(l_name, l_equals);
                l_opt = get(l_bare.c_str());
                if (l_opt == m_opts.end()) {
                    std::fprintf(stderr, "*** no such option `%s'\n", l_bare.c_str());
                    return false;
                }
                // "--name=v1,v2" becomes "--name", "v1", "v2" in the line, and the scan goes on as if
                // they had been typed so.
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
                l_line.replace(l_index, l_expanded);
            }
            unsigned int const l_remembered = l_index;
            if (!l_collect(l_index + 1, l_opt->second)) {
                std::fprintf(stderr, "*** too few arguments for option `%s'\n", l_opt->second.m_name);
                return false;
            }
            int const l_result = (*m_functor)(l_opt->first, l_args);
            if (l_result == -1) {
                return l_stop(l_opt->first);
            }
            l_index = index_after(l_remembered, used_words(l_result), static_cast<unsigned int>(l_line.size()));
            continue;
        }
        // A cluster of short options: flags in turn, until a letter that takes words ends it.
        for (char const *l_letter = l_word + 1; *l_letter != '\0'; ++l_letter) {
            int const l_id = static_cast<int>(static_cast<signed char>(*l_letter));
            opts::const_iterator const l_opt = m_opts.find(l_id);
            if (l_opt == m_opts.end()) {
                std::fprintf(stderr, "*** no such option `%c'\n", *l_letter);
                return false;
            }
            if (l_opt->second.m_max == 0) {
                if ((*m_functor)(l_id, std::vector<char const *>()) == -1) {
                    return l_stop(l_id);
                }
                continue;
            }
            // Whatever follows the letter in the word is its first value, "=" and all.
            bool const l_attached = l_letter[1] != '\0';
            if (l_attached) {
                l_args.push_back(l_letter + 1);
            }
            if (!l_collect(l_index + 1, l_opt->second)) {
                std::fprintf(stderr, "*** too few arguments for option `%c'\n", *l_letter);
                return false;
            }
            int const l_result = (*m_functor)(l_id, l_args);
            if (l_result == -1) {
                return l_stop(l_id);
            }
            // An attached word counts as used: one word fewer of the line was taken.
            l_index = index_after(l_index, used_words(l_result) - (l_attached ? 1 : 0),
                                  static_cast<unsigned int>(l_line.size()));
            break;
        }
    }
    return true;
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
