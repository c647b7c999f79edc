// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include <ordwel/url_parts.h>
#include <ordwel/version.h>

#include "options.h"

namespace ordwel_toolbox {

namespace {

using ordwel::arg::opt_functor;
using ordwel::arg::optparser;

// The options before the command; the command's word stops the scan, so that the command's own
// options are its own.
struct top_level : public opt_functor {
    bool m_help = false;
    bool m_html = false;
    bool m_version = false;
    bool m_bash_completion = false;
    char const *m_command = nullptr;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        switch (a_id) {
        case k_opt_help:
            m_help = true;
            break;
        case k_opt_html:
            m_html = true;
            break;
        case k_opt_version:
            m_version = true;
            break;
        case k_opt_bash_completion:
            m_bash_completion = true;
            break;
        case k_word:
            // Behind "--" every word comes here and no result counts: the first real word is the command.
            if (m_command == nullptr && std::strcmp(a_args.front(), "--") != 0) {
                m_command = a_args.front();
                return -1;
            }
            break;
        default:
            break;
        }
        return 0;
    }
};

// The parser skips a lone "-", which names standard input here: it goes through the parser as
// this word and is known again by its address.
char k_dash_word[] = "(standard input)";

std::string word_of(char const *a_word)
{
    return a_word == k_dash_word ? std::string("-") : std::string(a_word);
}

// A command's options, each with the one word it takes, and its words of no option, in order.
struct command_words : public opt_functor {
    command_input m_input;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        if (a_id == k_word) {
            m_input.m_words.push_back(word_of(a_args.front()));
        } else {
            m_input.m_options.emplace_back(a_id, a_args.empty() ? std::string() : word_of(a_args.front()));
        }
        return a_id == k_word ? 0 : static_cast<int>(a_args.size());
    }
};

option_info const k_help_option = {k_opt_help, "help", 0, 0, "show this command's help and end"};
option_info const k_json_option = {k_opt_json, "json", 0, 0, "print the fields as one JSON object"};

std::vector<option_info> url_options()
{
    std::vector<option_info> l_options = {
        k_help_option,
        {k_opt_decode, "decode", 0, 0, "decode the parts"},
        {k_opt_encode, "encode", 0, 0, "encode the values that the options below set"},
        {k_opt_set, "set", 1, 1, "set a part: !SA!part!SAE!=!SA!value!SAE! (an empty value removes it)"},
        {k_opt_show_password, "show-password", 0, 0, "show the password instead of ********"},
        k_json_option,
    };
    for (std::size_t l_index = 0; l_index < ordwel::k_url_part_count; ++l_index) {
        l_options.push_back({k_opt_url_part - static_cast<int>(l_index), ordwel::k_url_parts[l_index].m_name, 1, 1,
                             "set this part, as --set does"});
    }
    return l_options;
}

std::vector<command_info> make_commands()
{
    return {
        {"selftest",
         "selftest [-v] [-l] [--junit file] [--json] [suite[/unit[/case]] | name]",
         "run the library's self-test",
         "Runs the test cases that the library registered at load: all of them, or those of one suite, one unit or "
         "one case. A bare name picks the suite of that name, or else the one unit of that name. What the cases "
         "write themselves is kept out of the report unless a case fails or -v is given. Each failure is reported "
         "with the place of the failed check and its message; the last line counts the cases that passed and "
         "failed, and the exit status is 1 when one failed.",
         {k_help_option,
          {k_opt_verbose, "verbose", 0, 0, "report every case, with what it wrote"},
          {k_opt_list, "list", 0, 0, "list the cases instead of running them"},
          {k_opt_junit, "junit", 1, 1, "also write the results to !SA!file!SAE! as JUnit XML"},
          k_json_option},
         run_selftest},
        {"hexdump",
         "hexdump [-s offset] [-n length] file",
         "dump bytes in hex",
         "Dumps a file (!Q!-!QE! for standard input) in lines of 16 bytes as it reads it: the offset, the bytes in "
         "hex and the bytes as characters. The last line holds the offset of the end. Numbers are decimal or 0x hex.",
         {k_help_option,
          {k_opt_skip, "skip", 1, 1, "start at byte !SA!offset!SAE!"},
          {k_opt_length, "length", 1, 1, "dump at most !SA!length!SAE! bytes"}},
         run_hexdump},
        {"url", "url [-d] [--set part=value ...] [-e] [--show-password] [--json] url", "take a URL apart or edit it",
         "Prints every part of a URL, one a line: scheme, authority, domain, user, password, host, service, path, "
         "params, query and fragment. The password shows as ******** unless --show-password is given. With --set "
         "(or an option named after a part: --host value ...) it sets those parts in turn instead and prints the "
         "new URL.",
         url_options(), run_url},
        {"path",
         "path [-s separator] [--json] path",
         "normalize a path and take it apart",
         "Prints a path normalized, then its directory, file, name and suffix. The separator is !Q!/!QE! unless -s "
         "gives another.",
         {k_help_option, {k_opt_separator, "separator", 1, 1, "the separator character"}, k_json_option},
         run_path},
        {"timecode",
         "timecode [options] hh:mm:ss:ff@rate [hh:mm:ss:ff@rate]",
         "read, convert and step timecodes",
         "Reads a timecode and prints it after the options in turn. The rate is one of 23.976 (24000/1001), 24, 25, "
         "29.97 (30000/1001, drop-frame), 30, 50, 59.94 (60000/1001, drop-frame) and 60. Fields are checked: hours "
         "0 to 23, minutes and seconds 0 to 59, frames below the rate, no label that drop-frame skips. With two "
         "timecodes of one rate it prints the frames from the first to the second.",
         {k_help_option,
          {k_opt_convert, "convert", 1, 1,
           "convert to another !SA!rate!SAE! keeping the real time (the nearest frame)"},
          {k_opt_relabel, "relabel", 1, 1, "give the label to another !SA!rate!SAE!: same hh:mm:ss, frame scaled"},
          {k_opt_mode, "mode", 1, 1, "the same as --relabel"},
          {k_opt_add, "add", 1, 1, "step by a number of !SA!frames!SAE! (negative to go back)"},
          {k_opt_frames, "frames", 0, 0, "read a count of frames (count@rate) instead of a label"},
          {k_opt_total, "total", 0, 0, "also print the count of frames up to the timecode"},
          {k_opt_tmcd, "tmcd", 0, 0, "also print the QuickTime tmcd word"},
          {k_opt_lenient, "lenient", 0, 0, "take fields out of range, running over into the next"},
          k_json_option},
         run_timecode},
        {"base64",
         "base64 [-d] [file]",
         "encode or decode Base64",
         "Encodes a file (or standard input, also as !Q!-!QE!) as Base64 in one line, or decodes Base64 with -d, "
         "line breaks allowed; to standard output, as it reads.",
         {k_help_option, {k_opt_decode, "decode", 0, 0, "decode instead of encoding"}},
         run_base64},
        {"hex",
         "hex [-d] [file]",
         "encode or decode hex",
         "Encodes a file (or standard input, also as !Q!-!QE!) as hex digits in one line, or decodes hex with -d, "
         "line breaks allowed; to standard output, as it reads.",
         {k_help_option, {k_opt_decode, "decode", 0, 0, "decode instead of encoding"}},
         run_hex},
        {"startcodes",
         "startcodes [-c] [--json] file",
         "find the start codes of a video stream",
         "Lists every start code 00 00 01 of an MPEG or H.264/HEVC elementary stream as it reads it: its offset "
         "in hex, the start code shown with the zero byte before it when there is one, and the byte that follows "
         "(!Q!--!QE! at the end of the data).",
         {k_help_option, {k_opt_count, "count", 0, 0, "print only the number of start codes"}, k_json_option},
         run_startcodes},
        {"units",
         "units [--codec h264|hevc] [--json] file",
         "list the units of an H.264 or HEVC byte stream",
         "Lists the units (NAL units) of an H.264 or HEVC byte stream (!Q!-!QE! for standard input) as it reads "
         "it: the offset of each unit's payload in hex, behind its start code, the payload's size without the "
         "zero bytes at its end, its type and the type's name. A last line tells how many bytes stood before the "
         "first start code, when some did.",
         {k_help_option,
          {k_opt_codec, "codec", 1, 1, "read the headers as !SA!h264!SAE! (the default) or !SA!hevc!SAE!"},
          k_json_option},
         run_units},
    };
}

int run_command(char const *a_command, unsigned int a_argc, char **a_argv)
{
    for (command_info const &l_command : commands()) {
        if (std::strcmp(a_command, l_command.m_name) == 0) {
            command_words l_words;
            optparser l_parser(&l_words);
            for (option_info const &l_option : l_command.m_options) {
                l_parser.add_opt(l_option.m_id, l_option.m_name, l_option.m_min, l_option.m_max);
            }
            std::vector<char *> l_line(a_argv, a_argv + a_argc);
            for (char *&l_word : l_line) {
                l_word = std::strcmp(l_word, "-") == 0 ? k_dash_word : l_word;
            }
            if (!l_parser.parse(a_argc, l_line.data())) {
                return k_exit_usage;
            }
            if (l_words.m_input.has(k_opt_help)) {
                write_help(&l_command, false);
                std::fflush(stdout);
                return k_exit_ok;
            }
            int const l_status = l_command.m_run(l_words.m_input);
            std::fflush(stdout);
            return l_status;
        }
    }
    std::fprintf(stderr, "*** no such command `%s' (ordwel --help lists them)\n", a_command);
    return k_exit_usage;
}

} // namespace

std::vector<command_info> const &commands()
{
    static std::vector<command_info> const s_commands = make_commands();
    return s_commands;
}

int usage_error(std::string const &a_text)
{
    std::fprintf(stderr, "*** %s (ordwel --help tells more)\n", a_text.c_str());
    return k_exit_usage;
}

int bad_value(std::string const &a_text)
{
    std::fprintf(stderr, "*** %s\n", a_text.c_str());
    return k_exit_usage;
}

int failure(std::string const &a_text)
{
    std::fprintf(stderr, "*** %s\n", a_text.c_str());
    return k_exit_failed;
}

bool command_input::has(int a_id) const
{
    return last(a_id) != nullptr;
}

std::string const *command_input::last(int a_id) const
{
    std::string const *l_value = nullptr;
    for (auto const &l_option : m_options) {
        if (l_option.first == a_id) {
            l_value = &l_option.second;
        }
    }
    return l_value;
}

int run_tool(unsigned int a_argc, char **a_argv)
{
    top_level l_top;
    optparser l_parser(&l_top);
    l_parser.add_opt(k_opt_help, "help", 0, 0);
    l_parser.add_opt(k_opt_html, "html", 0, 0);
    l_parser.add_opt(k_opt_version, "version", 0, 0);
    l_parser.add_opt(k_opt_bash_completion, "bash-completion", 0, 0);
    if (!l_parser.parse(a_argc, a_argv)) {
        return k_exit_usage;
    }
    if (l_top.m_help || l_top.m_html) {
        write_help(nullptr, l_top.m_html);
        std::fflush(stdout);
        return k_exit_ok;
    }
    if (l_top.m_bash_completion) {
        write_bash_completion();
        return k_exit_ok;
    }
    if (l_top.m_version) {
        std::printf("ordwel %s\n", ordwel::k_version_string);
        return k_exit_ok;
    }
    if (l_top.m_command == nullptr) {
        return usage_error("no command");
    }
    // The command's word stands for the program's name of its own command line.
    unsigned int l_index = 1;
    while (l_index < a_argc && a_argv[l_index] != l_top.m_command) {
        ++l_index;
    }
    return run_command(l_top.m_command, a_argc - l_index, a_argv + l_index);
}

} // namespace ordwel_toolbox
