// SPDX-License-Identifier: MIT
// The self-test unit "parseopt" of suite "ordkin", and its callback classes.
#include <cstring>
#include <initializer_list>
#include <memory>

#include <ordwel/es.h>
#include <ordwel/optparser.h>
#include <ordwel/test.h>

namespace ordwel {

namespace {

// The option kinds the cases use: short and long, short only, long only.
constexpr int k_arg_0arg = 'a';
constexpr int k_arg_1arg = 'b';
constexpr int k_arg_0_1arg = 'c';
constexpr int k_arg_2_4arg = 'd';
constexpr int k_arg_2_narg = 'e';
constexpr int k_arg_nolong_0arg = 'i';
constexpr int k_arg_nolong_1arg = 'j';
constexpr int k_arg_nolong_0_1arg = 'k';
constexpr int k_arg_nolong_2_4arg = 'l';
constexpr int k_arg_nolong_2_narg = 'm';
constexpr int k_arg_just_long_version_0arg = -99;
constexpr int k_arg_just_long_version_1arg = -98;
constexpr int k_arg_just_long_version_2arg = -97;
constexpr int k_arg_just_long_version_2_4arg = -96;
constexpr int k_arg_just_long_version_2_narg = -95;

struct option_kind {
    int m_id;
    unsigned int m_min;
    unsigned int m_max;
    char const *m_constant;
};

option_kind const k_option_kinds[] = {
    {k_arg_0arg, 0, 0, "k_arg_0arg"},
    {k_arg_1arg, 1, 1, "k_arg_1arg"},
    {k_arg_0_1arg, 0, 1, "k_arg_0_1arg"},
    {k_arg_2_4arg, 2, 4, "k_arg_2_4arg"},
    {k_arg_2_narg, 2, 255, "k_arg_2_narg"},
    {k_arg_nolong_0arg, 0, 0, "k_arg_nolong_0arg"},
    {k_arg_nolong_1arg, 1, 1, "k_arg_nolong_1arg"},
    {k_arg_nolong_0_1arg, 0, 1, "k_arg_nolong_0_1arg"},
    {k_arg_nolong_2_4arg, 2, 4, "k_arg_nolong_2_4arg"},
    {k_arg_nolong_2_narg, 2, 255, "k_arg_nolong_2_narg"},
    {k_arg_just_long_version_0arg, 0, 0, "k_arg_just_long_version_0arg"},
    {k_arg_just_long_version_1arg, 1, 1, "k_arg_just_long_version_1arg"},
    {k_arg_just_long_version_2arg, 2, 2, "k_arg_just_long_version_2arg"},
    {k_arg_just_long_version_2_4arg, 2, 4, "k_arg_just_long_version_2_4arg"},
    {k_arg_just_long_version_2_narg, 2, 255, "k_arg_just_long_version_2_narg"},
};

// A word of no option comes alone.
void check_word(int a_id, std::vector<char const *> const &a_args)
{
    if (a_id == 1 && a_args.size() != 1) {
        test::fail::raise(ORDWEL_HERE, "word of no option with other than one element");
    }
}

} // namespace

namespace ordkin {

functor::functor() : arg::opt_functor(), m_count(0)
{
}

functor::functor(functor const &a_other) = default;
functor &functor::operator=(functor const &a_other) = default;
functor::~functor() = default;

int functor::operator()(int a_id, std::vector<char const *> a_args)
{
    ++m_count;
    check_word(a_id, a_args);
    for (option_kind const &l_kind : k_option_kinds) {
        if (l_kind.m_id == a_id && (a_args.size() < l_kind.m_min || a_args.size() > l_kind.m_max)) {
            test::fail::raise(ORDWEL_HERE, l_kind.m_constant);
        }
    }
    return static_cast<int>(a_args.size());
}

functor2::functor2() : arg::opt_functor(), m_result(0), m_count(0)
{
}

functor2::functor2(functor2 const &a_other) = default;
functor2 &functor2::operator=(functor2 const &a_other) = default;
functor2::~functor2() = default;

int functor2::operator()(int a_id, std::vector<char const *> a_args)
{
    ++m_count;
    check_word(a_id, a_args);
    return a_id == k_arg_2_narg ? m_result : static_cast<int>(a_args.size());
}

} // namespace ordkin

namespace test {

// Read by the registry's accessor, so that a static link keeps this file's unit.
extern int const g_anchor_parseopt_tests;
int const g_anchor_parseopt_tests = 1;

namespace {

// The command line of the running case: copies of its words, shared by all cases, so the cases of
// this unit must not run at the same time.
constexpr unsigned int k_max_words = 32;
std::unique_ptr<char[]> g_words[k_max_words];
char *g_argv[k_max_words + 1];
unsigned int g_argc = 0;

// Copies the program name and a_words into the shared command line; the copies go when the
// returned guard does.
struct command_line {
    explicit command_line(std::initializer_list<char const *> a_words)
    {
        g_argc = 0;
        store("parseopt");
        for (char const *const l_word : a_words) {
            store(l_word);
        }
        g_argv[g_argc] = nullptr;
    }
    command_line(command_line const &) = delete;
    command_line &operator=(command_line const &) = delete;
    ~command_line()
    {
        for (unsigned int l_index = 0; l_index < g_argc; ++l_index) {
            g_words[l_index].reset();
            g_argv[l_index] = nullptr;
        }
        g_argc = 0;
    }

private:
    static void store(char const *a_word)
    {
        if (g_argc == k_max_words) {
            fail::raise(ORDWEL_HERE, "command line too long");
        }
        std::size_t const l_size = std::strlen(a_word) + 1;
        g_words[g_argc].reset(new char[l_size]);
        std::memcpy(g_words[g_argc].get(), a_word, l_size);
        g_argv[g_argc] = g_words[g_argc].get();
        ++g_argc;
    }
};

void add_short_and_long(arg::optparser &a_parser)
{
    a_parser.add_opt(k_arg_0arg, "aaa", 0, 0);
    a_parser.add_opt(k_arg_1arg, "bbb", 1, 0);
    a_parser.add_opt(k_arg_0_1arg, "ccc", 0, 1);
    a_parser.add_opt(k_arg_2_4arg, "ddd", 2, 4);
    a_parser.add_opt(k_arg_2_narg, "eee", 2, 255);
    a_parser.add_opt(k_arg_nolong_0arg, nullptr, 0, 0);
    a_parser.add_opt(k_arg_nolong_1arg, nullptr, 1, 0);
    a_parser.add_opt(k_arg_nolong_0_1arg, nullptr, 0, 1);
    a_parser.add_opt(k_arg_nolong_2_4arg, nullptr, 2, 4);
    a_parser.add_opt(k_arg_nolong_2_narg, nullptr, 2, 255);
}

void add_long_only(arg::optparser &a_parser)
{
    a_parser.add_opt(k_arg_just_long_version_0arg, "l0", 0, 0);
    a_parser.add_opt(k_arg_just_long_version_1arg, "l1", 1, 0);
    a_parser.add_opt(k_arg_just_long_version_2arg, "test2", 2, 2);
    a_parser.add_opt(k_arg_just_long_version_2_4arg, "test2_4", 2, 4);
    a_parser.add_opt(k_arg_just_long_version_2_narg, "l2n", 2, 255);
}

void check_outcome(bool a_result, bool a_expected, int a_count, int a_expected_count)
{
    if (a_result != a_expected) {
        fail::raise(ORDWEL_HERE, a_expected ? "failed parse" : nullptr);
    }
    if (a_count != a_expected_count) {
        fail::raise(ORDWEL_HERE, "wrong number fo callbacks");
    }
}

// Parses a_words with every option kind registered and ordkin::functor counting the callbacks.
void parse_case(std::initializer_list<char const *> a_words, bool a_expected, int a_expected_count)
{
    ordkin::functor l_functor;
    arg::optparser l_parser(&l_functor);
    add_short_and_long(l_parser);
    add_long_only(l_parser);
    command_line const l_line(a_words);
    bool const l_result = l_parser.parse(g_argc, g_argv);
    check_outcome(l_result, a_expected, l_functor.m_count, a_expected_count);
}

// The same with ordkin::functor2, which uses a_used words of option "eee".
void parse_case_used(std::initializer_list<char const *> a_words, int a_used, bool a_expected, int a_expected_count)
{
    ordkin::functor2 l_functor;
    l_functor.m_result = a_used;
    arg::optparser l_parser(&l_functor);
    add_short_and_long(l_parser);
    command_line const l_line(a_words);
    bool const l_result = l_parser.parse(g_argc, g_argv);
    check_outcome(l_result, a_expected, l_functor.m_count, a_expected_count);
}

class t__unit__parseopt : public unit {
public:
    t__unit__parseopt() : unit("ordkin", "parseopt")
    {
        testcase("create", create);
        testcase("add_opts", add_opts);
        testcase("add_desc", add_desc);
        testcase("parse1", parse1);
        testcase("parse3", parse3);
        testcase("parse4", parse4);
        testcase("parse5", parse5);
        testcase("parse5_2", parse5_2);
        testcase("parse6", parse6);
        testcase("parse8", parse8);
        testcase("parse9", parse9);
        testcase("parse10", parse10);
        testcase("parse11", parse11);
        testcase("parse12", parse12);
        testcase("parse13", parse13);
        testcase("parse14", parse14);
        testcase("parse15", parse15);
        testcase("parse16", parse16);
        testcase("parse17", parse17);
        testcase("parse18", parse18);
        testcase("parse19", parse19);
        testcase("parse20", parse20);
        testcase("parse21", parse21);
        testcase("parse30", parse30);
        testcase("parse31", parse31);
    }

private:
    static void create()
    {
        ordkin::functor l_functor;
        std::unique_ptr<arg::optparser> const l_parser(new arg::optparser(&l_functor));
        if (!l_parser) {
            fail::raise(ORDWEL_HERE, nullptr);
        }
    }

    static void add_opts()
    {
        ordkin::functor l_functor;
        arg::optparser l_parser(&l_functor);
        l_parser.add_opt(k_arg_just_long_version_0arg, "test0", 0, 0);
        l_parser.add_opt(k_arg_just_long_version_1arg, "test1", 1, 0);
        l_parser.add_opt(k_arg_just_long_version_2arg, "test2", 2, 2);
        l_parser.add_opt(k_arg_just_long_version_2_4arg, "test2_4", 2, 4);
        add_short_and_long(l_parser);
    }

    static void add_desc()
    {
        ordkin::functor l_functor;
        arg::optparser l_parser(&l_functor);
        l_parser.add_opt(k_arg_just_long_version_0arg, "version", 0, 0);
        l_parser.add_opt(k_arg_nolong_0arg, nullptr, 0, 0);
        l_parser.add_opt(k_arg_0arg, "another", 0, 0);
        l_parser.add_opt(k_arg_1arg, "beside", 1, 0);

        l_parser.add_desc_indent1("NAME");
        l_parser.add_desc_indent2(nullptr);
        l_parser.add_desc("parseopt - !S!the option parser!SE! of the library, told by its own help text");
        l_parser.add_desc_paragraph();
        l_parser.add_desc_indent1("DESCRIPTION");
        l_parser.add_desc_indent2(nullptr);
        l_parser.add_desc("The Option parser parses options!");
        l_parser.add_desc_paragraph();
        l_parser.add_desc_indent1("OPTIONS");
        l_parser.add_desc_paragraph();
        l_parser.add_desc(k_arg_just_long_version_0arg,
                          "well you see that this is pretty good formatted output so bla bla bla...");
        l_parser.add_desc_paragraph();
        l_parser.add_desc(
            k_arg_nolong_0arg,
            "do like this if you want to do stuff like that and maybe a little bit of thist and that too.");
        l_parser.add_desc_paragraph();
        l_parser.add_desc(k_arg_0arg, "man those long descriptions are killing me big time, so I will try to make a "
                                      "little shorter one now.");
        l_parser.add_desc_paragraph();
        l_parser.add_desc(k_arg_1arg, "takes !SA!one word!SAE!, as in !Q!--beside x!QE!");
        l_parser.add_desc_paragraph();
        l_parser.add_desc_indent1("SUMMARY");
        l_parser.add_desc_indent2(nullptr);
        l_parser.add_desc("That was it!X!");
        l_parser.add_desc_paragraph();
    }

    static void parse1() { parse_case({"-a"}, true, 1); }
    static void parse3() { parse_case({"-a", "nope"}, true, 2); }
    static void parse4() { parse_case({"-a", "-b"}, false, 1); }
    static void parse5() { parse_case({"-a", "-b", "yes"}, true, 2); }
    static void parse5_2() { parse_case({"-a", "-d", "yes"}, false, 1); }
    static void parse6() { parse_case({"--aaa"}, true, 1); }
    static void parse8() { parse_case({"--aaa", "nope"}, true, 2); }
    static void parse9() { parse_case({"--aaa", "--bbb"}, false, 1); }
    static void parse10() { parse_case({"--aaa", "--bbb", "yes"}, true, 2); }
    static void parse11() { parse_case({"--aaa", "--ddd", "yes"}, false, 1); }
    static void parse12() { parse_case({"--aaa", "--ddd", "yes", "again"}, true, 2); }
    static void parse13() { parse_case({"--aaa", "--ddd", "yes", "again", "and", "again", "and", "again"}, true, 4); }
    static void parse14() { parse_case({"--aaa", "--ddd=yes,again,and,again", "and", "again"}, true, 4); }
    static void parse15() { parse_case({"--aaa", "--ddd=yes,again,and,again,and,again"}, true, 4); }
    static void parse16()
    {
        parse_case({"--aaa", "-c=3", "--ccc", "4", "--l0", "--l1", "hej", "what?", "-ij1", "--l2n", "yes", "again",
                    "and", "again"},
                   true, 9);
    }
    static void parse17() { parse_case({"-aijapa"}, true, 3); }
    static void parse18() { parse_case({"-jiaapa"}, true, 1); }
    static void parse19() { parse_case({"-iak"}, true, 3); }
    static void parse20() { parse_case({"-akiiii"}, true, 2); }
    static void parse21() { parse_case({"-aikii"}, true, 3); }
    static void parse30() { parse_case_used({"-e", "arg1", "arg2", "arg3", "arg4", "arg5"}, 2, true, 4); }
    static void parse31() { parse_case_used({"-e", "arg1", "arg2", "arg3", "arg4", "arg5"}, 4, true, 2); }
};

t__unit__parseopt const g_unit_parseopt;

} // namespace
} // namespace test
} // namespace ordwel
