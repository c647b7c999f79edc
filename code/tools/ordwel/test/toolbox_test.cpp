#include "toolbox.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ordwel/es.h>
#include <ordwel/test.h>
#include <ordwel/version.h>

namespace {

using namespace ordwel;
using testing::HasSubstr;

// A unit of this program's own, with one case of each outcome the runner has to tell apart.
unsigned int g_fail_line = 0;

class t__unit__toolbox_fixture : public test::unit {
public:
    t__unit__toolbox_fixture() : test::unit("zz_toolbox", "outcomes")
    {
        testcase("passes", passes);
        testcase("fails a check", fails_a_check);
        testcase("raises es::arg", raises_arg);
        testcase("raises std::exception", raises_std);
        testcase("throws an int", throws_int);
        testcase("passes", passes);
    }

private:
    static void passes() {}
    static void fails_a_check()
    {
        g_fail_line = __LINE__ + 1;
        test::fail::raise(ORDWEL_HERE, "value was 3");
    }
    static void raises_arg() { es::arg::raise("where.cpp", 12, "bad argument"); }
    static void raises_std() { throw std::runtime_error("plain failure"); }
    static void throws_int() { throw 7; }
};

t__unit__toolbox_fixture const g_fixture;

struct outcome {
    int status;
    std::string out;
    std::string err;
};

template <class F> outcome captured(F a_run)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int const l_status = a_run();
    std::fflush(stdout);
    std::string const l_out = testing::internal::GetCapturedStdout();
    return {l_status, l_out, testing::internal::GetCapturedStderr()};
}

outcome run_tool(std::vector<std::string> a_words)
{
    a_words.insert(a_words.begin(), "ordwel");
    std::vector<char *> l_argv;
    for (std::string &l_word : a_words) {
        l_argv.push_back(&l_word[0]);
    }
    l_argv.push_back(nullptr);
    return captured([&] { return ordwel_toolbox::run_tool(static_cast<unsigned int>(a_words.size()), l_argv.data()); });
}

std::vector<std::string> lines_of(std::string const &a_text)
{
    std::vector<std::string> l_lines;
    std::string::size_type l_start = 0;
    for (auto l_end = a_text.find('\n'); l_end != std::string::npos; l_end = a_text.find('\n', l_start)) {
        l_lines.push_back(a_text.substr(l_start, l_end - l_start));
        l_start = l_end + 1;
    }
    return l_lines;
}

TEST(toolbox_selftest, reports_every_kind_of_failure_and_counts)
{
    outcome const l_run = run_tool({"selftest", "zz_toolbox"});
    EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_failed);
    std::vector<std::string> const l_expected = {
        "FAILED  zz_toolbox/outcomes/fails a check  toolbox_test.cpp:" + std::to_string(g_fail_line) + ": value was 3",
        "FAILED  zz_toolbox/outcomes/raises es::arg  where.cpp:12: exception: bad argument",
        "FAILED  zz_toolbox/outcomes/raises std::exception  exception: plain failure",
        "FAILED  zz_toolbox/outcomes/throws an int  unknown exception",
        "2 passed, 4 failed",
    };
    EXPECT_EQ(lines_of(l_run.out), l_expected);
    EXPECT_EQ(l_run.err, "");

    outcome const l_verbose = run_tool({"selftest", "-v", "zz_toolbox/outcomes/passes"});
    EXPECT_EQ(l_verbose.status, ordwel_toolbox::k_exit_ok);
    EXPECT_EQ(l_verbose.out,
              "ok      zz_toolbox/outcomes/passes\nok      zz_toolbox/outcomes/passes\n2 passed, 0 failed\n");
}

TEST(toolbox_selftest, built_in_cases_pass_and_selection_narrows)
{
    struct row {
        char const *selector;
        std::string summary;
    } const l_rows[] = {
        {"ordkin", "25 passed, 0 failed"},
        {"ordkin/parseopt/parse14", "1 passed, 0 failed"},
        {"ordwel/object_refcount", "4 passed, 0 failed"},
        {"ordwel/types", "10 passed, 0 failed"},
        {"ordwel/timecode", "11 passed, 0 failed"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.selector);
        outcome const l_run = run_tool({"selftest", l_row.selector});
        EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_ok);
        ASSERT_FALSE(lines_of(l_run.out).empty());
        EXPECT_EQ(lines_of(l_run.out).back(), l_row.summary);
        EXPECT_THAT(l_run.out, testing::Not(HasSubstr("FAILED")));
    }
}

TEST(toolbox_selftest, listing_and_selection_errors)
{
    outcome const l_list = run_tool({"selftest", "--list", "ordwel/object"});
    EXPECT_EQ(l_list.status, ordwel_toolbox::k_exit_ok);
    EXPECT_EQ(l_list.out, "ordwel/object/default creation\nordwel/object/copy creation\n");

    struct row {
        std::vector<std::string> words;
        std::string error;
    } const l_rows[] = {
        {{"selftest", "nosuch"}, "*** no such test suite `nosuch'\n"},
        {{"selftest", "ordwel/nosuch"}, "*** no such test unit `ordwel/nosuch'\n"},
        {{"selftest", "ordwel/object/nosuch"}, "*** no such test case `ordwel/object/nosuch'\n"},
        {{"selftest", "a", "b"}, "*** selftest takes at most one selection (ordwel --help tells more)\n"},
        {{"selftest", "-x"}, "*** no such option `x'\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.error);
        outcome const l_run = run_tool(l_row.words);
        EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_usage);
        EXPECT_EQ(l_run.err, l_row.error);
        EXPECT_EQ(l_run.out, "");
    }
}

TEST(toolbox, top_level_options_and_commands)
{
    outcome const l_version = run_tool({"--version"});
    EXPECT_EQ(l_version.status, 0);
    EXPECT_EQ(l_version.out, std::string("ordwel ") + k_version_string + "\n");

    struct row {
        std::vector<std::string> words;
        std::string error;
    } const l_rows[] = {
        {{}, "*** no command (ordwel --help tells more)\n"},
        {{"--nope"}, "*** no such option `nope'\n"},
        {{"frobnicate"}, "*** no such command `frobnicate'\n"},
        {{"--", "frobnicate"}, "*** no such command `frobnicate'\n"},
        {{"hexdump"}, "*** hexdump takes one file (ordwel --help tells more)\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.error);
        outcome const l_run = run_tool(l_row.words);
        EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_usage);
        EXPECT_EQ(l_run.err, l_row.error);
    }
}

TEST(toolbox, help_in_text_and_html)
{
    outcome const l_text = run_tool({"--help"});
    EXPECT_EQ(l_text.status, 0);
    std::vector<std::string> const l_lines = lines_of(l_text.out);
    ASSERT_GE(l_lines.size(), 8u);
    EXPECT_EQ(l_lines[0], "NAME");
    EXPECT_EQ(l_lines[1], "        ordwel - the toolbox of the ordwel library");
    EXPECT_EQ(l_lines[4], "        ordwel [<options>] <command> [<arguments>]");
    EXPECT_THAT(l_text.out, HasSubstr("\n                    -h\n                --help  show this help and end\n"));
    for (std::string const &l_line : l_lines) {
        EXPECT_LE(l_line.size(), 80u) << l_line;
    }

    outcome const l_html = run_tool({"--help", "--html"});
    EXPECT_EQ(l_html.status, 0);
    EXPECT_THAT(l_html.out, testing::StartsWith("<h3>NAME</h3>\n"));
    EXPECT_THAT(l_html.out, HasSubstr("        <strong>ordwel</strong> [<u>options</u>] <u>command</u>"));
    EXPECT_THAT(l_html.out, HasSubstr("                <strong>--html  </strong>write the help as HTML"));
    EXPECT_THAT(l_html.out, HasSubstr("        <strong>selftest [-v] [-l] [suite[/unit[/case]]]\n</strong>"));
}

TEST(toolbox, hexdump_of_a_file)
{
    std::string const l_path = testing::TempDir() + "ordwel_toolbox_hexdump.bin";
    {
        std::ofstream l_file(l_path, std::ios::binary);
        l_file << "0123456789abcdef\x7f";
    }
    outcome const l_run = run_tool({"hexdump", l_path});
    std::remove(l_path.c_str());
    EXPECT_EQ(l_run.status, 0);
    std::vector<std::string> const l_expected = {
        "00000000  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|",
        "00000010  7f                                                |.               |",
        "00000011                                                    |                |",
    };
    EXPECT_EQ(lines_of(l_run.out), l_expected);
    EXPECT_EQ(l_run.err, "");

    outcome const l_missing = run_tool({"hexdump", l_path});
    EXPECT_EQ(l_missing.status, ordwel_toolbox::k_exit_failed);
    EXPECT_EQ(l_missing.err, "*** cannot open file `" + l_path + "'\n");

    // A directory opens on some systems and fails at the first read: either way one "*** " line.
    std::string const l_directory = testing::TempDir();
    outcome const l_dir = run_tool({"hexdump", l_directory});
    EXPECT_EQ(l_dir.status, ordwel_toolbox::k_exit_failed);
    EXPECT_EQ(l_dir.out, "");
    EXPECT_THAT(l_dir.err, testing::AnyOf("*** cannot open file `" + l_directory + "'\n",
                                          "*** cannot read file `" + l_directory + "'\n"));
}

TEST(toolbox, url_parts_and_editing)
{
    std::string const l_url = "http://dom;joe:se%20cret@[fe80::1]:8080/a/b%20c;p=1?q=2#frag";
    outcome const l_parts = run_tool({"url", l_url});
    EXPECT_EQ(l_parts.status, 0);
    EXPECT_EQ(lines_of(l_parts.out), (std::vector<std::string>{
                                         "scheme      http",
                                         "authority   dom;joe:se%20cret@[fe80::1]:8080",
                                         "domain      dom",
                                         "user        joe",
                                         "password    se%20cret",
                                         "host        fe80::1",
                                         "service     8080",
                                         "path        /a/b%20c",
                                         "params      p=1",
                                         "query       q=2",
                                         "fragment    frag",
                                     }));
    outcome const l_decoded = run_tool({"url", "--decode", l_url});
    EXPECT_THAT(l_decoded.out, HasSubstr("\npassword    se cret\n"));
    EXPECT_THAT(l_decoded.out, HasSubstr("\npath        /a/b c\n"));

    struct row {
        std::vector<std::string> words;
        std::string expected;
    } const l_rows[] = {
        {{"url", "--host", "example.org", "http://h:80/a"}, "http://example.org:80/a\n"},
        {{"url", "--service", "", "--query=x=1", "http://h:80/a"}, "http://h/a?x=1\n"},
        {{"url", "-e", "--path", "/a b", "http://h"}, "http://h/a%20b\n"},
        {{"url", "--scheme", "ftp", "--fragment", "f", "http://h/"}, "ftp://h/#f\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.expected);
        outcome const l_run = run_tool(l_row.words);
        EXPECT_EQ(l_run.status, 0);
        EXPECT_EQ(l_run.out, l_row.expected);
    }
    EXPECT_EQ(run_tool({"url"}).err, "*** url takes one URL (ordwel --help tells more)\n");
    EXPECT_EQ(run_tool({"url", "--host"}).err, "*** too few arguments for option `host'\n");
}

TEST(toolbox, path_normalized_and_taken_apart)
{
    outcome const l_run = run_tool({"path", "/a/b/../c//file.tar.gz"});
    EXPECT_EQ(l_run.status, 0);
    EXPECT_EQ(lines_of(l_run.out), (std::vector<std::string>{
                                       "normalized  /a/c/file.tar.gz",
                                       "directory   /a/b/../c//",
                                       "file        file.tar.gz",
                                       "name        file.tar",
                                       "suffix      gz",
                                   }));
    outcome const l_windows = run_tool({"path", "-s", "\\", "C:\\x\\.\\y.txt"});
    EXPECT_EQ(lines_of(l_windows.out).front(), "normalized  C:\\x\\y.txt");
    EXPECT_EQ(lines_of(l_windows.out).back(), "suffix      txt");
    EXPECT_EQ(run_tool({"path", "-s", "ab", "x"}).err,
              "*** the separator is one character (ordwel --help tells more)\n");
}

TEST(toolbox, timecode_conversion_stepping_and_counting)
{
    struct row {
        std::vector<std::string> words;
        std::string expected;
    } const l_rows[] = {
        {{"timecode", "01:02:03:04@25"}, "01:02:03:04@25\n"},
        {{"timecode", "00:00:59;29@29.97", "--add", "1", "-t"}, "00:01:00;02@29.97\n1800\n"},
        {{"timecode", "00:09:59;29@29.97", "-a", "1"}, "00:10:00;00@29.97\n"},
        {{"timecode", "01:00:00:00@25", "--mode", "30", "--total"}, "01:00:00:00@30\n108000\n"},
        {{"timecode", "01:00:00:00@25", "--add", "-1"}, "00:59:59:24@25\n"},
        {{"timecode", "01:00:00:00@25", "-a", "5", "-m", "50"}, "01:00:00:10@50\n"},
        {{"timecode", "01:00:00;00@29.97", "-t"}, "01:00:00;00@29.97\n107892\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.expected);
        outcome const l_run = run_tool(l_row.words);
        EXPECT_EQ(l_run.status, 0);
        EXPECT_EQ(l_run.out, l_row.expected);
        EXPECT_EQ(l_run.err, "");
    }

    struct error_row {
        std::vector<std::string> words;
        int status;
        std::string error;
    } const l_errors[] = {
        {{"timecode", "01:02"}, ordwel_toolbox::k_exit_failed, "*** Invalid timecode '01:02'\n"},
        {{"timecode", "01:02:03:04"},
         ordwel_toolbox::k_exit_failed,
         "*** timecode `01:02:03:04' has no frame mode (hh:mm:ss:ff@mode)\n"},
        {{"timecode", "01:02:03:04@25", "-m", "31"}, ordwel_toolbox::k_exit_usage, "*** no such frame mode `31'\n"},
        {{"timecode", "01:02:03:04@25", "-a", "x"}, ordwel_toolbox::k_exit_usage, "*** not a number of frames `x'\n"},
        {{"timecode", "01:02:03:04@25", "-a", "99999999999"},
         ordwel_toolbox::k_exit_usage,
         "*** not a number of frames `99999999999'\n"},
    };
    for (error_row const &l_row : l_errors) {
        SCOPED_TRACE(l_row.error);
        outcome const l_run = run_tool(l_row.words);
        EXPECT_EQ(l_run.status, l_row.status);
        EXPECT_EQ(l_run.err, l_row.error);
        EXPECT_EQ(l_run.out, "");
    }
}

} // namespace
