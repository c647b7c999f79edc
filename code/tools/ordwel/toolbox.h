// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TOOLBOX_H
#define ORDWEL_TOOLBOX_H

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <ordwel/optparser.h>

// The pieces of the ordwel toolbox, each a function of its arguments that writes to standard
// output (errors as "*** " lines on the standard error stream) and gives the program's exit status.
namespace ordwel_toolbox {

// Exit statuses, one rule for every command: done; the operation failed (a file that cannot be
// read, data that cannot be decoded, a result out of range, a failed self-test); a command line
// that makes no sense (an unknown option or command, a malformed or out-of-range value).
constexpr int k_exit_ok = 0;
constexpr int k_exit_failed = 1;
constexpr int k_exit_usage = 2;

// Writes "*** <a_text> (ordwel --help tells more)" to the standard error stream; gives k_exit_usage.
int usage_error(std::string const &a_text);
// Writes "*** <a_text>" to the standard error stream; gives k_exit_usage, for a value on the command
// line that is malformed or out of range.
int bad_value(std::string const &a_text);
// Writes "*** <a_text>" to the standard error stream; gives k_exit_failed.
int failure(std::string const &a_text);

// The whole program: options, then a command and its own words.
int run_tool(unsigned int a_argc, char **a_argv);

// A command's line after parsing: its options in command-line order, each with its one value (empty
// for a flag), and its other words.
struct command_input {
    std::vector<std::pair<int, std::string>> m_options;
    std::vector<std::string> m_words;

    bool has(int a_id) const;
    // The value of the last a_id option, or nullptr without one.
    std::string const *last(int a_id) const;
};

// One option of a command, as registered with the parser and described in the help.
struct option_info {
    int m_id;
    char const *m_name;
    unsigned int m_min;
    unsigned int m_max;
    char const *m_help;
};

// A command: its name, its synopsis and description for the help, its options and its work.
struct command_info {
    char const *m_name;
    char const *m_synopsis;
    char const *m_summary;
    char const *m_text;
    std::vector<option_info> m_options;
    int (*m_run)(command_input const &);
};

// Every command, in the order of the help.
std::vector<command_info> const &commands();

// The help screen of the program (a_command nullptr) or of one command, as text or HTML.
void write_help(command_info const *a_command, bool a_html);
// The bash completion script for every command and its options.
void write_bash_completion();

int run_selftest(command_input const &a_input);
int run_hexdump(command_input const &a_input);
int run_url(command_input const &a_input);
int run_path(command_input const &a_input);
int run_timecode(command_input const &a_input);
int run_base64(command_input const &a_input);
int run_hex(command_input const &a_input);
int run_startcodes(command_input const &a_input);
int run_units(command_input const &a_input);

} // namespace ordwel_toolbox

#endif
