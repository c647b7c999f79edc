// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ordwel/es.h>
#include <ordwel/test.h>
#include <ordwel/version.h>

namespace {

using namespace ordwel;
using testing::HasSubstr;

#if defined(_WIN32)
constexpr int k_binary = O_BINARY;
#else
constexpr int k_binary = 0;
#endif

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
    static void passes() { std::fputs("chatter\n", stderr); }
    static void fails_a_check()
    {
        std::puts("noise");
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

// Runs the tool on "ordwel" and a_words (which it may point into) with what main would get.
int run_words(std::vector<std::string> &a_words)
{
    a_words.insert(a_words.begin(), "ordwel");
    std::vector<char *> l_argv;
    for (std::string &l_word : a_words) {
        l_argv.push_back(&l_word[0]);
    }
    l_argv.push_back(nullptr);
    return ordwel_toolbox::run_tool(static_cast<unsigned int>(a_words.size()), l_argv.data());
}

outcome run_tool(std::vector<std::string> a_words)
{
    return captured([&] { return run_words(a_words); });
}

// What a run of the tool gives: its exit status, standard output and standard error.
struct expected_run {
    std::vector<std::string> words;
    int status;
    std::string out;
    std::string err;
};

// Runs the tool on a_first and each row's words, and compares all it gives with the row.
void expect_runs(std::vector<std::string> const &a_first, std::vector<expected_run> const &a_rows)
{
    for (expected_run const &l_row : a_rows) {
        SCOPED_TRACE(l_row.out + l_row.err);
        std::vector<std::string> l_words = a_first;
        l_words.insert(l_words.end(), l_row.words.begin(), l_row.words.end());
        outcome const l_run = run_tool(l_words);
        EXPECT_EQ(l_run.status, l_row.status);
        EXPECT_EQ(l_run.out, l_row.out);
        EXPECT_EQ(l_run.err, l_row.err);
    }
}

// The tool's standard output written to a file, binary: a capture through text mode would change
// the bytes on Windows.
int run_tool_to_file(std::vector<std::string> a_words, std::string const &a_path)
{
    std::fflush(stdout);
    int const l_saved = dup(1);
    int const l_file = open(a_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | k_binary, 0644);
    dup2(l_file, 1);
    close(l_file);
    int const l_status = run_words(a_words);
    std::fflush(stdout);
    dup2(l_saved, 1);
    close(l_saved);
    return l_status;
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

std::string contents_of(std::string const &a_path)
{
    std::ifstream l_file(a_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(l_file), std::istreambuf_iterator<char>());
}

// A file of the temporary directory with these bytes; gives its path.
std::string temp_file(std::string const &a_name, std::string const &a_bytes)
{
    std::string const l_path = testing::TempDir() + "ordwel_toolbox_" + a_name;
    std::ofstream(l_path, std::ios::binary) << a_bytes;
    return l_path;
}

TEST(toolbox_selftest, reports_every_kind_of_failure_and_counts)
{
    outcome const l_run = run_tool({"selftest", "zz_toolbox"});
    EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_failed);
    std::vector<std::string> const l_expected = {
        std::string("ordwel ") + k_version_string + " self-test: 6 cases",
        "FAILED  zz_toolbox/outcomes/fails a check  toolbox_test.cpp:" + std::to_string(g_fail_line) + ": value was 3",
        "noise",
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
              std::string("ordwel ") + k_version_string + " self-test: 2 cases\n" +
                  "ok      zz_toolbox/outcomes/passes\nchatter\nok      zz_toolbox/outcomes/passes\nchatter\n"
                  "2 passed, 0 failed\n");
    EXPECT_EQ(l_verbose.err, "");

    // The same as JSON, and as JUnit XML beside the report.
    std::string const l_junit = testing::TempDir() + "ordwel_toolbox_junit.xml";
    outcome const l_json = run_tool({"selftest", "--json", "--junit", l_junit, "outcomes"});
    EXPECT_EQ(l_json.status, ordwel_toolbox::k_exit_failed);
    EXPECT_THAT(l_json.out, testing::StartsWith("{\"passed\": 2, \"failed\": 4, \"cases\": [{\"name\": "
                                                "\"zz_toolbox/outcomes/passes\", \"passed\": true}, "));
    EXPECT_THAT(l_json.out, HasSubstr("\"failure\": \"exception: plain failure\"}"));
    std::string const l_xml = contents_of(l_junit);
    std::remove(l_junit.c_str());
    EXPECT_THAT(l_xml, HasSubstr("<testsuite name=\"ordwel selftest\" tests=\"6\" failures=\"4\">"));
    EXPECT_THAT(l_xml, HasSubstr("<testcase classname=\"zz_toolbox.outcomes\" name=\"throws an int\">"
                                 "<failure message=\"unknown exception\"/></testcase>"));
    EXPECT_THAT(l_xml, HasSubstr("<system-out>chatter"));
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
        {"timecode", "11 passed, 0 failed"},
        {"parseopt", "25 passed, 0 failed"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.selector);
        outcome const l_run = run_tool({"selftest", l_row.selector});
        EXPECT_EQ(l_run.status, ordwel_toolbox::k_exit_ok);
        // The units' own output stays out of the report.
        ASSERT_EQ(lines_of(l_run.out).size(), 2u);
        EXPECT_EQ(lines_of(l_run.out).back(), l_row.summary);
        EXPECT_EQ(l_run.err, "");
    }
}

TEST(toolbox_selftest, listing_and_selection_errors)
{
    expect_runs(
        {"selftest"},
        {
            {{"--list", "ordwel/object"}, 0, "ordwel/object/default creation\nordwel/object/copy creation\n", ""},
            {{"nosuch"}, 2, "", "*** no such test suite or unit `nosuch'\n"},
            {{"nosuch/x"}, 2, "", "*** no such test suite `nosuch'\n"},
            {{"ordwel/nosuch"}, 2, "", "*** no such test unit `ordwel/nosuch'\n"},
            {{"ordwel/object/nosuch"}, 2, "", "*** no such test case `ordwel/object/nosuch'\n"},
            {{"a", "b"}, 2, "", "*** selftest takes at most one selection (ordwel --help tells more)\n"},
            {{"-x"}, 2, "", "*** no such option `x'\n"},
        });
}

TEST(toolbox, top_level_options_and_commands)
{
    expect_runs({}, {
                        {{"--version"}, 0, std::string("ordwel ") + k_version_string + "\n", ""},
                        {{}, 2, "", "*** no command (ordwel --help tells more)\n"},
                        {{"--nope"}, 2, "", "*** no such option `nope'\n"},
                        {{"frobnicate"}, 2, "", "*** no such command `frobnicate' (ordwel --help lists them)\n"},
                        {{"--", "frobnicate"}, 2, "", "*** no such command `frobnicate' (ordwel --help lists them)\n"},
                        {{"hexdump"}, 2, "", "*** hexdump takes one file (ordwel --help tells more)\n"},
                    });
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
    EXPECT_THAT(l_html.out, HasSubstr("                <strong>--html  </strong>write the help as HTML"));

    // Every command answers --help with every option it has, and the program's help lists them all.
    outcome const l_completion = run_tool({"--bash-completion"});
    EXPECT_THAT(l_completion.out, HasSubstr("complete -o filenames -F _ordwel ordwel\n"));
    for (ordwel_toolbox::command_info const &l_command : ordwel_toolbox::commands()) {
        SCOPED_TRACE(l_command.m_name);
        outcome const l_help = run_tool({l_command.m_name, "--help"});
        EXPECT_EQ(l_help.status, 0);
        EXPECT_THAT(l_help.out, HasSubstr(std::string("        ordwel ") + l_command.m_name + " - "));
        EXPECT_THAT(l_help.out, HasSubstr("EXIT STATUS"));
        EXPECT_THAT(l_text.out, HasSubstr(std::string("        ") + l_command.m_name + " "));
        EXPECT_THAT(l_completion.out, HasSubstr(std::string(" ") + l_command.m_name));
        for (ordwel_toolbox::option_info const &l_option : l_command.m_options) {
            std::string const l_label = std::string("--") + l_option.m_name + "  ";
            EXPECT_THAT(l_help.out, HasSubstr(l_label));
            EXPECT_THAT(l_text.out, HasSubstr(l_label));
        }
    }
}

TEST(toolbox, hexdump_streams_a_range_of_a_file)
{
    std::string const l_path = temp_file("hexdump.bin", "0123456789abcdef\x7fxyz");
    expect_runs({"hexdump"}, {
                                 {{l_path},
                                  0,
                                  "00000000  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|\n"
                                  "00000010  7f 78 79 7a                                       |.xyz            |\n"
                                  "00000014                                                    |                |\n",
                                  ""},
                                 {{"-s", "0x3", "--length", "14", l_path},
                                  0,
                                  "00000003  33 34 35 36 37 38 39 61  62 63 64 65 66 7f        |3456789abcdef.  |\n"
                                  "00000011                                                    |                |\n",
                                  ""},
                                 {{"-s", "100", l_path}, 0, "", ""},
                                 {{"-n", "0", l_path}, 0, "", ""},
                             });
    std::remove(l_path.c_str());

    expect_runs({"hexdump"},
                {
                    {{l_path}, 1, "", "*** cannot open file `" + l_path + "': No such file or directory\n"},
                    {{}, 2, "", "*** hexdump takes one file (ordwel --help tells more)\n"},
                    {{"-s", "-4", l_path}, 2, "", "*** not an offset `-4'\n"},
                    {{"-n", "0x", l_path}, 2, "", "*** not a length `0x'\n"},
                });
    // A directory opens on some systems and fails at the first read: either way one "*** " line.
    std::string const l_directory = testing::TempDir();
    outcome const l_dir = run_tool({"hexdump", l_directory});
    EXPECT_EQ(l_dir.status, ordwel_toolbox::k_exit_failed);
    EXPECT_EQ(l_dir.out, "");
    EXPECT_THAT(l_dir.err, testing::StartsWith("*** cannot "));
    EXPECT_THAT(l_dir.err, HasSubstr(" file `" + l_directory + "': "));
    EXPECT_EQ(lines_of(l_dir.err).size(), 1u);
}

TEST(toolbox, url_parts_masked_and_edited)
{
    std::string const l_url = "http://dom;joe:se%20cret@[fe80::1]:8080/a/b%20c;p=1?q=2#frag";
    outcome const l_parts = run_tool({"url", "--show-password", l_url});
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
    expect_runs(
        {"url"},
        {
            {{"--host", "example.org", "http://h:80/a"}, 0, "http://example.org:80/a\n", ""},
            {{"--set", "host=example.org", "--set=query=x", "http://h:80/a"}, 0, "http://example.org:80/a?x\n", ""},
            {{"--service", "", "--query=x=1", "http://h:80/a"}, 0, "http://h/a?x=1\n", ""},
            {{"-e", "--set", "path=/a b", "http://h"}, 0, "http://h/a%20b\n", ""},
            {{"--scheme", "ftp", "--fragment", "f", "http://h/"}, 0, "ftp://h/#f\n", ""},
            {{"--set", "user=", "http://u@h/"}, 0, "http://h/\n", ""},
            {{"--set", "password=pw", "http://u@h/"}, 0, "http://u:%2a%2a%2a%2a%2a%2a%2a%2a@h/\n", ""},
            {{"--show-password", "--set", "password=pw", "http://u@h/"}, 0, "http://u:pw@h/\n", ""},
            {{"--json", "--host", "x", "http://h/"}, 0, "{\"url\": \"http://x/\"}\n", ""},
            {{"--json", "http://u:p\"w@h/"},
             0,
             "{\"scheme\": \"http\", \"authority\": \"u:%2a%2a%2a%2a%2a%2a%2a%2a@h\", \"domain\": \"\", \"user\": "
             "\"u\", \"password\": \"********\", \"host\": \"h\", \"service\": \"\", \"path\": \"/\", \"params\": "
             "\"\", \"query\": \"\", \"fragment\": \"\"}\n",
             ""},
        });
    EXPECT_EQ(run_tool({"url", "--json", "--set", "port=1", "http://h/"}).status, ordwel_toolbox::k_exit_usage);
    outcome const l_masked = run_tool({"url", "-d", l_url});
    EXPECT_THAT(l_masked.out, HasSubstr("\npassword    ********\n"));
    EXPECT_THAT(l_masked.out, HasSubstr("\npath        /a/b c\n"));
    EXPECT_THAT(l_masked.out, testing::Not(HasSubstr("cret")));
    EXPECT_THAT(run_tool({"url", "--set", "port=1", "http://h/"}).err,
                testing::StartsWith("*** --set takes part=value, the part one of scheme, authority,"));
    EXPECT_EQ(run_tool({"url"}).err, "*** url takes one URL (ordwel --help tells more)\n");
    EXPECT_EQ(run_tool({"url", "--host"}).err, "*** too few arguments for option `host'\n");
}

TEST(toolbox, path_normalized_and_taken_apart)
{
    expect_runs(
        {"path"},
        {
            {{"/a/b/../c//file.tar.gz"},
             0,
             "normalized  /a/c/file.tar.gz\ndirectory   /a/b/../c//\nfile        file.tar.gz\nname        file.tar\n"
             "suffix      gz\n",
             ""},
            {{"--json", "-s", "\\", "C:\\x\\.\\y.txt"},
             0,
             "{\"normalized\": \"C:\\\\x\\\\y.txt\", \"directory\": \"C:\\\\x\\\\.\\\\\", \"file\": \"y.txt\", "
             "\"name\": \"y\", \"suffix\": \"txt\"}\n",
             ""},
            {{"-s", "ab", "x"}, 2, "", "*** the separator is one character (ordwel --help tells more)\n"},
        });
}

TEST(toolbox, timecode_reading_converting_and_stepping)
{
    expect_runs(
        {"timecode"},
        {
            {{"01:02:03:04@25"}, 0, "01:02:03:04@25\n", ""},
            {{"00:00:59;29@29.97", "--add", "1", "-t"}, 0, "00:01:00;02@29.97\n1800\n", ""},
            {{"00:09:59;29@30000/1001", "-a", "1"}, 0, "00:10:00;00@29.97\n", ""},
            {{"01:00:00:00@25", "--relabel", "30", "--total"}, 0, "01:00:00:00@30\n108000\n", ""},
            {{"01:00:00:00@25", "--add", "-1"}, 0, "00:59:59:24@25\n", ""},
            {{"01:00:00:00@25", "-a", "5", "-m", "50"}, 0, "01:00:00:10@50\n", ""},
            {{"01:00:00:00@25", "-r", "29.97"}, 0, "01:00:00;00@29.97\n", ""},
            {{"00:01:00:00@30", "-r", "59.94"}, 0, "00:01:00;04@59.94\n", ""},
            {{"01:00:00;00@29.97", "-t", "--tmcd"}, 0, "01:00:00;00@29.97\n107892\n0x01000080\n", ""},
            // Converting keeps the real time, to the nearest frame, and comes back to where it started.
            {{"01:00:00:00@25", "--convert", "29.97"}, 0, "01:00:00;00@29.97\n", ""},
            {{"01:00:00;00@29.97", "--convert", "25"}, 0, "01:00:00:00@25\n", ""},
            {{"01:00:00:00@25", "-c", "59.94", "-c", "25"}, 0, "01:00:00:00@25\n", ""},
            {{"01:00:00:00@24", "-c", "24000/1001"}, 0, "00:59:56;10@23.976\n", ""},
            {{"00:00:10:00@60", "-c", "60000/1001", "-t"}, 0, "00:00:09;59@59.94\n599\n", ""},
            {{"--frames", "1800@29.97"}, 0, "00:01:00;02@29.97\n", ""},
            {{"--frames", "0x10@25", "--json"},
             0,
             "{\"timecode\": \"00:00:00:16\", \"rate\": \"25\", \"frames\": 16, \"seconds\": 0.640000, \"tmcd\": "
             "\"0x00000010\"}\n",
             ""},
            {{"--lenient", "25:61:61:99@25"}, 0, "26:02:04:24@25\n", ""},
            {{"00:00:10:00@25", "00:00:09:20@25"}, 0, "-5 frames, -0.200000 s\n", ""},
            {{"--json", "00:00:00;00@29.97", "00:10:00;00@29.97"},
             0,
             "{\"frames\": 17982, \"seconds\": 599.999400}\n",
             ""},
        });

    expect_runs(
        {"timecode"},
        {
            {{"01:02"}, 2, "", "*** timecode `01:02' has no frame rate (hh:mm:ss:ff@rate)\n"},
            {{"01:02@25"}, 2, "", "*** invalid timecode `01:02@25' (hh:mm:ss:ff@rate)\n"},
            {{"01:02:03:x4@25"}, 2, "", "*** invalid timecode `01:02:03:x4@25' (hh:mm:ss:ff@rate)\n"},
            {{"01:02:03:04@31"}, 2, "", "*** no such frame rate `31' (23.976, 24, 25, 29.97, 30, 50, 59.94, 60)\n"},
            {{"25:61:61:99@25"},
             2,
             "",
             "*** timecode `25:61:61:99@25': the hour 25 is beyond 23; --lenient reads it anyway\n"},
            {{"00:60:00:00@25"},
             2,
             "",
             "*** timecode `00:60:00:00@25': the minute 60 is beyond 59; --lenient reads it anyway\n"},
            {{"00:00:60:00@25"},
             2,
             "",
             "*** timecode `00:00:60:00@25': the second 60 is beyond 59; --lenient reads it anyway\n"},
            {{"00:00:00:25@25"},
             2,
             "",
             "*** timecode `00:00:00:25@25': the frame 25 is beyond 24 at 25; --lenient reads it anyway\n"},
            {{"00:01:00;01@29.97"},
             2,
             "",
             "*** timecode `00:01:00;01@29.97': drop-frame skips frames 0 to 1 of this minute at 29.97; --lenient "
             "reads it anyway\n"},
            {{"00:00:00:00@25", "-a", "-1"}, 1, "", "*** stepping -1 frames goes before 00:00:00:00\n"},
            {{"00:00:00:00@25", "-a", "x"}, 2, "", "*** not a number of frames `x'\n"},
            {{"00:00:00:00@25", "-a", "99999999999"}, 2, "", "*** not a number of frames `99999999999'\n"},
            {{"00:00:01:00@25", "-a", "4294967295"},
             1,
             "",
             "*** stepping 4294967295 frames goes beyond the last timecode\n"},
            {{"--frames", "4294967295@24", "-c", "60"}, 1, "", "*** at 60 the timecode is beyond the last one\n"},
            {{"--frames", "1:00@25"}, 2, "", "*** not a count of frames `1:00'\n"},
            {{"00:00:00:00@25", "00:00:00:00@50"},
             2,
             "",
             "*** the difference needs two timecodes at one rate (--convert one of them first) (ordwel --help tells "
             "more)\n"},
        });
}

TEST(toolbox, base64_and_hex_stream_and_come_back)
{
    // Larger than a chunk of either codec, with every byte value, so that chunk edges fall inside groups.
    std::string l_bytes;
    for (unsigned int l_index = 0; l_index < 600001; ++l_index) {
        l_bytes += static_cast<char>((l_index * 7919u) >> 3);
    }
    std::string const l_path = temp_file("codec.bin", l_bytes);
    for (char const *l_command : {"base64", "hex"}) {
        SCOPED_TRACE(l_command);
        outcome const l_encoded = run_tool({l_command, l_path});
        EXPECT_EQ(l_encoded.status, 0);
        ASSERT_FALSE(l_encoded.out.empty());
        EXPECT_EQ(l_encoded.out.find('\n'), l_encoded.out.size() - 1);
        // Line breaks anywhere in the text are dropped.
        std::string l_text = l_encoded.out;
        for (std::size_t l_at = 76; l_at < l_text.size(); l_at += 77) {
            l_text.insert(l_at, l_at % 2 == 0 ? "\n" : "\r");
        }
        std::string const l_text_path = temp_file("codec.txt", l_text);
        std::string const l_out_path = testing::TempDir() + "ordwel_toolbox_codec.out";
        EXPECT_EQ(run_tool_to_file({l_command, "-d", l_text_path}, l_out_path), 0);
        EXPECT_TRUE(contents_of(l_out_path) == l_bytes);
        std::remove(l_text_path.c_str());
        std::remove(l_out_path.c_str());
    }
    std::remove(l_path.c_str());

    struct row {
        std::vector<std::string> words;
        std::string input;
        int status;
        std::string out;
        std::string err;
    } const l_rows[] = {
        {{"base64"}, "", 0, "", ""},
        {{"base64"}, "ab", 0, "YWI=\n", ""},
        {{"base64", "-d"},
         "YWI=\nYWJj\n",
         0,
         "abab"
         "c",
         ""},
        {{"base64", "-d"}, "YWJjZ", 1, "abc", "*** cannot decode `F' as Base64: its length is no multiple of 4\n"},
        {{"hex"}, "\x01\xfe", 0, "01fe\n", ""},
        {{"hex", "-d"}, "01FE\n", 0, "\x01\xfe", ""},
        {{"hex", "-d"}, "01f", 1, "\x01", "*** cannot decode `F' as hex: its length is no multiple of 2\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.input);
        std::string const l_input = temp_file("codec.in", l_row.input);
        std::vector<std::string> l_words = l_row.words;
        l_words.push_back(l_input);
        outcome const l_run = run_tool(l_words);
        std::remove(l_input.c_str());
        EXPECT_EQ(l_run.status, l_row.status);
        EXPECT_EQ(l_run.out, l_row.out);
        std::string l_err = l_run.err;
        std::string::size_type const l_at = l_err.find(l_input);
        EXPECT_EQ(l_at == std::string::npos ? l_err : l_err.replace(l_at, l_input.size(), "F"), l_row.err);
    }
    EXPECT_EQ(run_tool({"hex", "a", "b"}).status, ordwel_toolbox::k_exit_usage);
    EXPECT_EQ(run_tool({"base64", "-d", testing::TempDir() + "ordwel_toolbox_none"}).status,
              ordwel_toolbox::k_exit_failed);
}

TEST(toolbox, startcodes_across_blocks)
{
    // Start codes at the start, after a zero, back to back, across the reader's 64 KiB blocks (the
    // zero before in the block before) and at the very end.
    std::string l_bytes = std::string("\0\0\x01\xb3\x11\0\0\0\x01\x67\0\0\x01\0\0\x01\x42", 17);
    l_bytes.resize(65535, '\x55');
    l_bytes += std::string("\0\0\0\x01\x65", 5);
    l_bytes.resize(131072 - 1, '\x55');
    l_bytes += std::string("\0\0\x01", 3);
    std::string const l_path = temp_file("startcodes.bin", l_bytes);
    outcome const l_run = run_tool({"startcodes", l_path});
    EXPECT_EQ(l_run.status, 0);
    EXPECT_EQ(lines_of(l_run.out), (std::vector<std::string>{
                                       "00000000     00 00 01  b3",
                                       "00000006  00 00 00 01  67",
                                       "0000000a     00 00 01  00",
                                       "0000000d     00 00 01  42",
                                       "00010000  00 00 00 01  65",
                                       "0001ffff     00 00 01  --",
                                   }));
    EXPECT_EQ(run_tool({"startcodes", "--count", l_path}).out, "6\n");
    EXPECT_EQ(run_tool({"startcodes", "-c", "--json", l_path}).out, "{\"count\": 6}\n");
    EXPECT_THAT(run_tool({"startcodes", "--json", l_path}).out,
                testing::StartsWith("{\"startcodes\": [{\"offset\": 0, \"zero_before\": false, \"next\": 179},\n "
                                    "{\"offset\": 6, \"zero_before\": true, \"next\": 103},"));
    std::remove(l_path.c_str());
    EXPECT_EQ(run_tool({"startcodes", l_path}).status, ordwel_toolbox::k_exit_failed);
    EXPECT_EQ(run_tool({"startcodes"}).status, ordwel_toolbox::k_exit_usage);
}

TEST(toolbox, units)
{
    // Garbage, an SPS behind a 4-byte start code, a PPS behind a 3-byte one across the reader's
    // 64 KiB blocks, an IDR slice with zeros behind it; read as H.264 and as HEVC.
    std::string l_bytes = std::string("\x12\0\0\0\x01\x67\x42\0\x0a", 9);
    l_bytes.resize(65535, '\x55');
    l_bytes += std::string("\0\0\x01\x68\xce\0\0\0\x01\x26\x01\x84\0", 13);
    std::string const l_path = temp_file("units.bin", l_bytes);
    expect_runs({"units"}, {
                               {{l_path},
                                0,
                                "00000005       65530   7  SPS\n"
                                "00010002           2   8  PPS\n"
                                "00010008           3   6  SEI\n"
                                "(1 byte before the first start code)\n",
                                ""},
                               {{"--codec", "hevc", l_path},
                                0,
                                "00000005       65530  51  unspecified\n"
                                "00010002           2  52  unspecified\n"
                                "00010008           3  19  IDR_W_RADL\n"
                                "(1 byte before the first start code)\n",
                                ""},
                               {{"--codec", "vp9", l_path}, 2, "", "*** no such codec `vp9' (h264, hevc)\n"},
                               {{}, 2, "", "*** units takes one file (ordwel --help tells more)\n"},
                           });
    EXPECT_EQ(run_tool({"units", "--json", l_path}).out,
              "{\"units\": [{\"start\": 1, \"offset\": 5, \"size\": 65530, \"type\": 7, \"name\": \"SPS\"},\n "
              "{\"start\": 65535, \"offset\": 65538, \"size\": 2, \"type\": 8, \"name\": \"PPS\"},\n "
              "{\"start\": 65540, \"offset\": 65544, \"size\": 3, \"type\": 6, \"name\": \"SEI\"}], "
              "\"count\": 3, \"leading\": 1}\n");
    std::remove(l_path.c_str());
    EXPECT_EQ(run_tool({"units", l_path}).status, ordwel_toolbox::k_exit_failed);
}

} // namespace
