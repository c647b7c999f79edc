// SPDX-License-Identifier: MIT
#include <ordwel/optparser.h>

#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace {

using namespace ordwel;

// Records every callback as "<id>[word,word]" (a printable id as its letter) and checks each call
// against the registered word range, as an application would rely on.
struct recorder : public arg::opt_functor {
    std::vector<std::string> m_calls;
    std::map<int, int> m_results;
    std::map<int, std::pair<unsigned int, unsigned int>> m_ranges;
    std::vector<std::vector<char const *>> m_args;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        std::string l_call = a_id > 32 && a_id < 127 ? std::string(1, static_cast<char>(a_id)) : std::to_string(a_id);
        l_call += "[";
        for (std::size_t l_index = 0; l_index < a_args.size(); ++l_index) {
            l_call += (l_index != 0 ? "," : "") + std::string(a_args[l_index]);
        }
        l_call += "]";
        m_calls.push_back(l_call);
        m_args.push_back(a_args);
        if (a_id == 1) {
            EXPECT_EQ(a_args.size(), 1u) << l_call;
        } else if (m_ranges.count(a_id) != 0) {
            EXPECT_GE(a_args.size(), m_ranges[a_id].first) << l_call;
            EXPECT_LE(a_args.size(), m_ranges[a_id].second) << l_call;
        }
        auto const l_result = m_results.find(a_id);
        return l_result != m_results.end() ? l_result->second : static_cast<int>(a_args.size());
    }
};

// A command line that owns its words, with the program's name in front.
struct command_line {
    std::vector<std::string> m_words;
    std::vector<char *> m_argv;

    explicit command_line(std::vector<std::string> const &a_words) : m_words(a_words)
    {
        m_words.insert(m_words.begin(), "prog");
        for (std::string &l_word : m_words) {
            m_argv.push_back(&l_word[0]);
        }
        m_argv.push_back(nullptr);
    }
    unsigned int argc() const { return static_cast<unsigned int>(m_words.size()); }
    char **argv() { return m_argv.data(); }
};

// The option table of the library's own parser tests; a_long_only names the long-only ids.
void add_test_options(arg::optparser &a_parser, recorder &a_recorder,
                      std::vector<std::pair<int, char const *>> const &a_long_only)
{
    struct row {
        int id;
        char const *name;
        unsigned int min;
        unsigned int max;
    } const l_rows[] = {
        {'a', "aaa", 0, 0},   {'b', "bbb", 1, 0},   {'c', "ccc", 0, 1},   {'d', "ddd", 2, 4},   {'e', "eee", 2, 255},
        {'i', nullptr, 0, 0}, {'j', nullptr, 1, 0}, {'k', nullptr, 0, 1}, {'l', nullptr, 2, 4}, {'m', nullptr, 2, 255},
    };
    for (row const &l_row : l_rows) {
        a_parser.add_opt(l_row.id, l_row.name, l_row.min, l_row.max);
        a_recorder.m_ranges[l_row.id] = {l_row.min, l_row.max < l_row.min ? l_row.min : l_row.max};
    }
    std::map<int, std::pair<unsigned int, unsigned int>> const l_long_ranges = {
        {-99, {0, 0}}, {-98, {1, 1}}, {-97, {2, 2}}, {-96, {2, 4}}, {-95, {2, 255}}};
    for (auto const &l_long : a_long_only) {
        auto const &l_range = l_long_ranges.at(l_long.first);
        a_parser.add_opt(l_long.first, l_long.second, l_range.first, l_range.first == 1 ? 0 : l_range.second);
        a_recorder.m_ranges[l_long.first] = l_range;
    }
}

// The blank-separated words of a_text.
std::vector<std::string> split(std::string const &a_text)
{
    std::vector<std::string> l_words;
    std::istringstream l_stream(a_text);
    for (std::string l_word; l_stream >> l_word;) {
        l_words.push_back(l_word);
    }
    return l_words;
}

// What parse returned and what it wrote to the standard error stream.
using outcome = std::pair<bool, std::string>;

outcome parse_words(arg::optparser &a_parser, std::string const &a_words)
{
    command_line l_line(split(a_words));
    testing::internal::CaptureStderr();
    bool const l_result = a_parser.parse(l_line.argc(), l_line.argv());
    return {l_result, testing::internal::GetCapturedStderr()};
}

TEST(optparser, parse_table_reports_every_callback_in_command_line_order)
{
    // Words and callbacks are separated by blanks; a parse fails exactly when it writes an error.
    struct row {
        char const *words, *expected;
        std::string error{};
        std::map<int, int> results{};
    } const l_rows[] = {
        {"-a nope", "a[] 1[nope]"},
        {"-a -b", "a[]", "*** too few arguments for option `b'\n"},
        {"-a -b yes", "a[] b[yes]"},
        {"--aaa --ddd yes", "a[]", "*** too few arguments for option `ddd'\n"},
        {"--aaa --ddd yes again and again and again", "a[] d[yes,again,and,again] 1[and] 1[again]"},
        {"--aaa --ddd=yes,again,and,again,and,again", "a[] d[yes,again,and,again] 1[and] 1[again]"},
        {"--aaa -c=3 --ccc 4 --l0 --l1 hej what? -ij1 --l2n yes again and again",
         "a[] c[=3] c[4] -99[] -98[hej] 1[what?] i[] j[1] -95[yes,again,and,again]"},
        // Clusters: flags until one that takes words, which takes the rest of the cluster.
        {"-aijapa", "a[] i[] j[apa]"},
        {"-iak", "i[] a[] k[]"},
        {"-akiiii", "a[] k[iiii]"},
        {"-e arg1 arg2 arg3 arg4 arg5", "e[arg1,arg2,arg3,arg4,arg5] 1[arg5]", "", {{'e', 4}}},
        // Values that look like numbers or a lone dash are taken; option-like words end the list.
        {"-c -5", "c[-5]"},
        {"-c -", "c[-]"},
        {"-c -a", "c[] a[]"},
        {"-d 1 --aaa", "", "*** too few arguments for option `d'\n"},
        {"-c -- x", "c[] 1[--] 1[x]"},
        {"- w -", "1[w]"},
        // After "--" everything is a word, "--" first, and nothing is an option any more.
        {"-a -- -b --ccc --ddd=x,y -", "a[] 1[--] 1[-b] 1[--ccc] 1[--ddd=x,y] 1[-]"},
        {"-aza", "a[]", "*** no such option `z'\n"},
        {"--zzz=1,2", "", "*** no such option `zzz'\n"},
        {"--i", "", "*** no such option `i'\n"}, // a short-only id has no long form
        // The --name=list form: each comma-separated piece is a word of its own.
        {"--bbb=x", "b[x]"},
        {"--bbb=", "b[]"},
        {"--ddd=,x,", "d[,x,]"},
        {"--aaa=x", "a[] 1[x]"},
        {"--ddd=x", "", "*** too few arguments for option `ddd'\n"},
        {"--ddd=1,2 3 -a", "d[1,2,3] a[]"},
        // A callback that uses fewer words than offered leaves the rest to the scan.
        {"--ddd p q r", "d[p,q,r] 1[q] 1[r]", "", {{'d', 1}}},
        {"-jx y", "j[x] 1[y]"},
        // Results beyond the offered words, or negative other than -1, never leave argv.
        {"-b x y", "b[x]", "", {{'b', 1000}}},
        {"--bbb x", "b[x] 1[x]", "", {{'b', -7}}},
        // A long-only option with exactly two words.
        {"--l0 --test2 a b c", "-99[] -97[a,b] 1[c]"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.words);
        recorder l_recorder;
        l_recorder.m_results = l_row.results;
        arg::optparser l_parser(&l_recorder);
        add_test_options(l_parser, l_recorder, {{-99, "l0"}, {-98, "l1"}, {-97, "test2"}, {-95, "l2n"}});
        EXPECT_EQ(parse_words(l_parser, l_row.words), outcome(l_row.error.empty(), l_row.error));
        EXPECT_EQ(l_recorder.m_calls, split(l_row.expected));
    }
}

TEST(optparser, empty_command_lines_call_nothing)
{
    recorder l_recorder;
    arg::optparser l_parser(&l_recorder);
    l_parser.add_opt('a', "aaa", 0, 0);
    char l_program[] = "prog";
    char *l_argv[] = {l_program, nullptr};
    EXPECT_TRUE(l_parser.parse(0, l_argv));
    EXPECT_TRUE(l_parser.parse(1, l_argv));
    EXPECT_TRUE(l_parser.parse(5, nullptr));
    EXPECT_TRUE(l_recorder.m_calls.empty());
}

TEST(optparser, words_handed_over_point_into_argv)
{
    recorder l_recorder;
    arg::optparser l_parser(&l_recorder);
    l_parser.add_opt('b', "bbb", 1, 0);
    l_parser.add_opt('j', nullptr, 1, 0);
    command_line l_line({"-b", "value", "-jattached", "loose"});
    ASSERT_TRUE(l_parser.parse(l_line.argc(), l_line.argv()));
    ASSERT_EQ(l_recorder.m_args.size(), 3u);
    EXPECT_EQ(l_recorder.m_args[0][0], l_line.argv()[2]);
    EXPECT_EQ(l_recorder.m_args[1][0], l_line.argv()[3] + 2);
    EXPECT_EQ(l_recorder.m_args[2][0], l_line.argv()[4]);
}

TEST(optparser, registration_rules)
{
    recorder l_recorder;
    arg::optparser l_parser(&l_recorder);
    // max below min means exactly min; a second registration of an id replaces the first.
    l_parser.add_opt('b', "bbb", 1, 0);
    l_parser.add_opt('x', "first", 0, 0);
    l_parser.add_opt('x', "second", 1, 1);
    EXPECT_EQ(parse_words(l_parser, "-b 1 2 --second v -x w"), outcome(true, ""));
    EXPECT_EQ(l_recorder.m_calls, split("b[1] 1[2] x[v] x[w]"));
    EXPECT_EQ(parse_words(l_parser, "--first"), outcome(false, "*** no such option `first'\n"));
    // A name holding '=' matches as a whole before the --name=list form is tried.
    l_parser.add_opt(-10, "x=y", 0, 0);
    l_parser.add_opt(-11, "x", 0, 2);
    EXPECT_EQ(parse_words(l_parser, "--x=y --x=z,w"), outcome(true, ""));
    EXPECT_EQ(l_recorder.m_calls, split("b[1] 1[2] x[v] x[w] -10[] -11[z,w]"));
}

TEST(optparser, table_changes_made_by_a_callback_count_from_the_next_step_on)
{
    struct editor : public recorder {
        arg::optparser *m_parser = nullptr;
        int operator()(int a_id, std::vector<char const *> a_args) override
        {
            int const l_result = recorder::operator()(a_id, a_args);
            if (a_id == 'a') {
                m_parser->add_opt('n', "new", 1, 1);
            } else if (a_id == 'b') {
                m_parser->add_opt('n', "renamed", 0, 0);
            } else if (a_id == 'c') {
                arg::optparser l_other(this);
                l_other.add_opt('z', nullptr, 0, 0);
                *m_parser = l_other;
            }
            return l_result;
        }
    } l_editor;
    arg::optparser l_parser(&l_editor);
    l_editor.m_parser = &l_parser;
    for (int const l_id : {'a', 'b', 'c'}) {
        l_parser.add_opt(l_id, nullptr, 0, 0);
    }
    EXPECT_EQ(parse_words(l_parser, "-a -n x --new y -b -nn --renamed -c -z -a"),
              outcome(false, "*** no such option `a'\n"));
    EXPECT_EQ(l_editor.m_calls, split("a[] n[x] n[y] b[] n[] n[] n[] c[] z[]"));

    // A letter is a signed char: the byte 0x9d reaches the id -99, never 157.
    arg::optparser l_high(&l_editor);
    l_high.add_opt(157, nullptr, 0, 0);
    EXPECT_EQ(parse_words(l_high, "-\x9d"), outcome(false, "*** no such option `\x9d'\n"));
    l_high.add_opt(-99, "version", 0, 0);
    EXPECT_EQ(parse_words(l_high, "-\x9d --version"), outcome(true, ""));
    EXPECT_EQ(l_editor.m_calls.size(), 11u);
}

TEST(optparser, stop_records_the_stopping_id_and_ends_the_scan)
{
    struct row {
        char const *words;
        int stopper, stopped_at;
        char const *expected;
    } const l_rows[] = {
        {"w -a x", 1, 1, "1[w]"},
        {"-aia x", 'a', 'a', "a[]"}, // a flag in a cluster
        {"x --ccc 1 y", 'c', 'c', "1[x] c[1]"},
        {"-- w v", 1, 0, "1[--] 1[w] 1[v]"}, // not after the end of options
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.words);
        recorder l_recorder;
        l_recorder.m_results[l_row.stopper] = -1;
        arg::optparser l_parser(&l_recorder);
        add_test_options(l_parser, l_recorder, {});
        EXPECT_EQ(parse_words(l_parser, l_row.words), outcome(true, ""));
        EXPECT_EQ(l_recorder.stopped_at(), l_row.stopped_at);
        EXPECT_EQ(l_recorder.m_calls, split(l_row.expected));
    }

    // parse does not reset it; copies of the functor carry it.
    recorder l_recorder;
    l_recorder.m_results[1] = -1;
    arg::optparser l_parser(&l_recorder);
    parse_words(l_parser, "w");
    l_recorder.m_results.clear();
    parse_words(l_parser, "w");
    EXPECT_EQ(l_recorder.stopped_at(), 1);
    recorder const l_copy(l_recorder);
    EXPECT_EQ(l_copy.stopped_at(), 1);
    recorder l_assigned;
    l_assigned = l_recorder;
    EXPECT_EQ(l_assigned.stopped_at(), 1);
}

TEST(optparser, copies_own_their_table_and_share_the_functor)
{
    recorder l_recorder;
    arg::optparser l_parser(&l_recorder);
    l_parser.add_opt('a', "aaa", 0, 0);
    arg::optparser l_copy(l_parser);
    l_copy.add_opt('z', "zzz", 0, 0);
    EXPECT_EQ(parse_words(l_copy, "-z -a"), outcome(true, ""));
    EXPECT_EQ(parse_words(l_parser, "-z -a"), outcome(false, "*** no such option `z'\n"));
    EXPECT_EQ(l_recorder.m_calls, split("z[] a[]"));
    arg::optparser l_assigned(nullptr);
    l_assigned = l_copy;
    EXPECT_EQ(parse_words(l_assigned, "-z -a"), outcome(true, ""));
    EXPECT_EQ(l_recorder.m_calls.size(), 4u);
}

TEST(optparser, a_parse_inside_a_callback_keeps_the_outer_words_alive)
{
    // The inner parse must not free the words that the outer "=" form made.
    struct nested : public arg::opt_functor {
        arg::optparser *m_parser = nullptr;
        command_line *m_inner = nullptr;
        std::vector<std::string> m_seen;
        int operator()(int a_id, std::vector<char const *> a_args) override
        {
            for (char const *const l_arg : a_args) {
                m_seen.push_back(std::to_string(a_id) + ":" + l_arg);
            }
            if (a_id == 'x' && m_inner != nullptr) {
                command_line *const l_inner = m_inner;
                m_inner = nullptr;
                m_parser->parse(l_inner->argc(), l_inner->argv());
                for (char const *const l_arg : a_args) {
                    m_seen.push_back(std::string("after:") + l_arg);
                }
            }
            return static_cast<int>(a_args.size());
        }
    } l_functor;
    arg::optparser l_parser(&l_functor);
    l_parser.add_opt('x', "xx", 1, 2);
    command_line l_outer({"--xx=one,two"});
    command_line l_inner({"--xx=in"});
    l_functor.m_parser = &l_parser;
    l_functor.m_inner = &l_inner;
    EXPECT_TRUE(l_parser.parse(l_outer.argc(), l_outer.argv()));
    EXPECT_EQ(l_functor.m_seen, (std::vector<std::string>{"120:one", "120:two", "120:in", "after:one", "after:two"}));
}

TEST(optparser, callback_exception_passes_through_and_earlier_calls_stand)
{
    struct thrower : public arg::opt_functor {
        int m_calls = 0;
        int operator()(int a_id, std::vector<char const *>) override
        {
            ++m_calls;
            if (a_id == 'b') {
                throw std::runtime_error("from the callback");
            }
            return 0;
        }
    } l_functor;
    arg::optparser l_parser(&l_functor);
    l_parser.add_opt('a', nullptr, 0, 0);
    l_parser.add_opt('b', nullptr, 0, 0);
    command_line l_line({"-ab", "w"});
    EXPECT_THROW(l_parser.parse(l_line.argc(), l_line.argv()), std::runtime_error);
    EXPECT_EQ(l_functor.m_calls, 2);
}

// ---- help text ----

// Runs a_write on a parser made while standard output is captured (so it is never a terminal) and
// gives back what it wrote.
template <class F> std::string help_output(F a_write, bool a_html = false)
{
    recorder l_recorder;
    testing::internal::CaptureStdout();
    {
        arg::optparser l_parser(&l_recorder);
        if (a_html) {
            l_parser.set_html_output();
        }
        a_write(l_parser);
    }
    return testing::internal::GetCapturedStdout();
}

std::vector<std::string> lines_of(std::string const &a_text)
{
    std::vector<std::string> l_lines;
    std::size_t l_start = 0;
    for (std::size_t l_end = a_text.find('\n'); l_end != std::string::npos; l_end = a_text.find('\n', l_start)) {
        l_lines.push_back(a_text.substr(l_start, l_end - l_start));
        l_start = l_end + 1;
    }
    if (l_start != a_text.size()) {
        l_lines.push_back(a_text.substr(l_start) + "<no line end>");
    }
    return l_lines;
}

std::string blanks(std::size_t a_count)
{
    return std::string(a_count, ' ');
}

void write_options_screen(arg::optparser &a_parser)
{
    a_parser.add_opt(-99, "version", 0, 0);
    a_parser.add_opt(105, nullptr, 0, 0);
    a_parser.add_opt(97, "another", 0, 0);
    a_parser.add_desc_indent1("OPTIONS");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(-99, "well you see that this is pretty good formatted output so bla bla bla...");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(105,
                      "do like this if you want to do stuff like that and maybe a little bit of thist and that too.");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(97,
                      "man those long descriptions are killing me big time, so I will try to make a little shorter one "
                      "now.");
}

TEST(optparser_help, finished_screen_in_text_form)
{
    std::vector<std::string> const l_expected = {
        "OPTIONS",
        "",
        blanks(13) + "--version  well you see that this is pretty good formatted output",
        blanks(24) + "so bla bla bla...",
        "",
        blanks(20) + "-i  do like this if you want to do stuff like that and maybe",
        blanks(24) + "a little bit of thist and that too.",
        "",
        blanks(20) + "-a",
        blanks(13) + "--another  man those long descriptions are killing me big time, so",
        blanks(24) + "I will try to make a little shorter one now.",
    };
    EXPECT_EQ(lines_of(help_output(write_options_screen)), l_expected);
}

TEST(optparser_help, wrapping_rules)
{
    std::string const l_56(56, 'x');
    struct row {
        char const *name;
        unsigned int width;
        std::string text;
        std::string expected;
    } const l_rows[] = {
        {"exact fit", 80, l_56, blanks(24) + l_56 + "\n"},
        {"blank at the limit", 80, l_56 + " tail", blanks(24) + l_56 + "\n" + blanks(24) + "tail\n"},
        {"blank behind the limit", 30, "abcdefghij klm", blanks(24) + "abcdefghij\n" + blanks(24) + "klm\n"},
        {"word too long for any line", 30, "abcdefghij", blanks(24) + "abcdefghij\n" + blanks(24) + "\n"},
        {"width below the column", 10, "one two three four", blanks(24) + "one two three four\n"},
        {"final bang dropped", 80, "The Option parser parses options!",
         blanks(24) + "The Option parser parses options\n"},
        {"position carries across pieces", 30, "abc!S!def ghi", blanks(24) + "abcdef\n" + blanks(24) + "ghi\n"},
        {"markup in text", 80, "!Q!x!QE! !SA!y!SAE! !SAA!z!SAAE! !S!w!SE!!X! !LT!!GT!",
         blanks(24) + "\"x\" <y> z w! &lt;&gt;\n"},
        {"empty text", 80, "", blanks(24) + "\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        EXPECT_EQ(help_output([&](arg::optparser &a_parser) {
                      a_parser.set_text_line_width(l_row.width);
                      a_parser.add_desc_indent4(nullptr);
                      a_parser.add_desc(l_row.text.c_str());
                  }),
                  l_row.expected);
    }
}

TEST(optparser_help, html_escaping_and_markup)
{
    EXPECT_EQ(help_output([](arg::optparser &a_parser) { a_parser.print("a<b&c>d"); }, true), "a&lt;b&amp;c&gt;d");
    EXPECT_EQ(help_output([](arg::optparser &a_parser) { a_parser.print("a<b&c>d"); }), "a<b&c>d");
    EXPECT_EQ(help_output([](arg::optparser &a_parser) { a_parser.add_desc("!LT!!GT!!SA!u!SAE!!SAA!v!SAAE!!S!w!SE!"); },
                          true),
              "&amp;lt;&amp;gt;<u>u</u><u>v</u><strong>w</strong>\n");
    // A label's text is escaped, its tags are not.
    EXPECT_EQ(help_output(
                  [](arg::optparser &a_parser) {
                      a_parser.add_opt(-5, "a<b", 0, 0);
                      a_parser.add_desc(-5, "x");
                  },
                  true),
              blanks(17) + "<strong>--a&lt;b  </strong>x\n");
    // An option with both names puts the short one on a line of its own, closing its tag on the next.
    EXPECT_EQ(help_output(
                  [](arg::optparser &a_parser) {
                      a_parser.add_opt('a', "another", 0, 0);
                      a_parser.add_desc('a', "x");
                  },
                  true),
              blanks(20) + "<strong>-a\n</strong>" + blanks(13) + "<strong>--another  </strong>x\n");
}

TEST(optparser_help, headings_at_each_level)
{
    auto const l_write = [](arg::optparser &a_parser) {
        a_parser.add_desc_indent1("NAME");
        a_parser.add_desc_indent2("SYNOPSIS");
        a_parser.add_desc_indent3("DESCRIPTION");
        a_parser.add_desc_indent4("OPTIONS");
        a_parser.add_desc_indent5("MORE");
        a_parser.add_html_underline_h3("H3");
        a_parser.add_html_underline_h4("H4");
        a_parser.text_underline();
        a_parser.text_underline_off();
        a_parser.text_strong();
        a_parser.text_strong_off();
    };
    EXPECT_EQ(help_output(l_write), "NAME\n" + blanks(8) + "SYNOPSIS\n" + blanks(16) + "DESCRIPTION\n" + blanks(24) +
                                        "OPTIONS\n" + blanks(32) + "MORE\n<h3>" + blanks(32) + "<u>H3</u></h3>\n<h4>" +
                                        blanks(32) + "<u>H4</u></h4>\n<>");
    EXPECT_EQ(help_output(l_write, true),
              "<h3>NAME</h3>\n" + blanks(8) + "<strong>SYNOPSIS\n</strong><h3>" + blanks(16) +
                  "DESCRIPTION</h3>\n<h3>" + blanks(24) + "OPTIONS</h3>\n<h3>" + blanks(32) + "MORE</h3>\n<h3>" +
                  blanks(32) + "<u>H3</u></h3>\n<h4>" + blanks(32) + "<u>H4</u></h4>\n<u></u><strong></strong>");
}

TEST(optparser_help, levels_labels_and_unknown_ids)
{
    EXPECT_EQ(help_output([](arg::optparser &a_parser) {
                  EXPECT_EQ(a_parser.get_indentation(), 1u);
                  a_parser.add_desc_indent2(nullptr);
                  EXPECT_EQ(a_parser.get_indentation(), 2u);
                  a_parser.set_indentation(0);
                  EXPECT_EQ(a_parser.get_indentation(), 1u);
                  a_parser.add_desc("a");
                  a_parser.set_indentation(1);
                  a_parser.add_desc("b");
                  a_parser.set_indentation(3);
                  EXPECT_EQ(a_parser.get_indentation(), 3u);
                  a_parser.add_desc("c");
                  a_parser.add_desc(42, "not registered");
                  EXPECT_FALSE(a_parser.is_html_output());
                  EXPECT_FALSE(a_parser.set_max_text_line_width());
              }),
              "a\nb\n" + blanks(16) + "c\n");

    // A labelled option leaves level 4 behind; a long name of 20 or more leaves no blanks before it.
    EXPECT_EQ(help_output([](arg::optparser &a_parser) {
                  a_parser.add_opt('q', nullptr, 0, 0);
                  a_parser.add_opt(-3, "a-very-long-option-name", 0, 0);
                  a_parser.add_opt(300, "big", 0, 0);
                  a_parser.add_desc('q', "x");
                  EXPECT_EQ(a_parser.get_indentation(), 4u);
                  a_parser.add_desc("y");
                  a_parser.add_desc(-3, "z");
                  a_parser.add_desc(300, "w");
              }),
              blanks(20) + "-q  x\n" + blanks(24) + "y\n--a-very-long-option-name  z\n" + blanks(17) + "--big  w\n");
}

TEST(optparser_help, copies_carry_the_layout)
{
    EXPECT_EQ(help_output([](arg::optparser &a_parser) {
                  a_parser.set_html_output();
                  a_parser.set_text_line_width(31);
                  a_parser.add_desc_indent3(nullptr);
                  arg::optparser l_copy(a_parser);
                  EXPECT_TRUE(l_copy.is_html_output());
                  EXPECT_EQ(l_copy.get_indentation(), 3u);
                  l_copy.add_desc("one two <three>");
              }),
              blanks(16) + "one two &lt;three&gt;\n");
}

#if !defined(_WIN32)
// Standard output on a pseudo terminal of 100 columns while a_write runs; gives what reached the
// terminal.
template <class F> std::string terminal_output(F a_write)
{
    int const l_master = posix_openpt(O_RDWR | O_NOCTTY);
    if (l_master < 0 || grantpt(l_master) != 0 || unlockpt(l_master) != 0) {
        ADD_FAILURE() << "no pseudo terminal";
        return std::string();
    }
    int const l_slave = open(ptsname(l_master), O_RDWR | O_NOCTTY);
    termios l_mode{};
    tcgetattr(l_slave, &l_mode);
    cfmakeraw(&l_mode);
    tcsetattr(l_slave, TCSANOW, &l_mode);
    winsize l_size{};
    l_size.ws_col = 100;
    l_size.ws_row = 40;
    ioctl(l_slave, TIOCSWINSZ, &l_size);

    std::fflush(stdout);
    int const l_saved = dup(1);
    dup2(l_slave, 1);
    {
        recorder l_recorder;
        arg::optparser l_parser(&l_recorder);
        a_write(l_parser);
    }
    std::fflush(stdout);
    dup2(l_saved, 1);
    close(l_saved);
    close(l_slave);

    std::string l_output;
    char l_chunk[4096];
    int const l_flags = fcntl(l_master, F_GETFL);
    fcntl(l_master, F_SETFL, l_flags | O_NONBLOCK);
    for (ssize_t l_count; (l_count = read(l_master, l_chunk, sizeof l_chunk)) > 0;) {
        l_output.append(l_chunk, static_cast<std::size_t>(l_count));
    }
    close(l_master);
    return l_output;
}

TEST(optparser_help, terminal_gets_bold_marks_in_order_and_its_width)
{
    std::string const l_output = terminal_output([](arg::optparser &a_parser) {
        EXPECT_TRUE(a_parser.set_max_text_line_width());
        a_parser.add_opt('a', "another", 0, 0);
        a_parser.add_desc_indent1("OPTIONS");
        a_parser.add_desc(97, ("x!S!y!SE! !SA!z!SAE! " + std::string(62, 'w') + " v").c_str());
        a_parser.clear_screen();
    });
    std::string const l_bold = "\x1b[1m";
    std::string const l_normal = "\x1b[22m";
    // The width is the terminal's less 8: 92, so the 62-letter word still fits behind "xy <z> ".
    EXPECT_EQ(l_output, l_bold + "OPTIONS\n" + l_normal + blanks(20) + l_bold + "-a\n" + l_normal + blanks(13) +
                            l_bold + "--another  " + l_normal + "x" + l_bold + "y" + l_normal + " <z> " +
                            std::string(62, 'w') + "\n" + blanks(24) + "v\n\x1b[2J\x1b[H");
}
#endif

} // namespace
