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

// Exit statuses: success, a failed self-test or operation, a command line that makes no sense.
constexpr int k_exit_ok = 0;
constexpr int k_exit_failed = 1;
constexpr int k_exit_usage = 2;

// Writes "*** <a_text> (ordwel --help tells more)" to the standard error stream; gives k_exit_usage.
int usage_error(char const *a_text);

// The whole program: options, then a command and its own words.
int run_tool(unsigned int a_argc, char **a_argv);

// Writes the help screen through a_parser, in whatever form the parser is set to.
void write_help(ordwel::arg::optparser &a_parser);

// Runs the registered self-test cases that a_selector ("", "suite", "suite/unit" or
// "suite/unit/case") names. Reports each failure with its place and message, and ends with the
// line "N passed, M failed". With a_verbose every case is reported.
int run_selftest(std::string const &a_selector, bool a_verbose);
// Lists the suites, units and cases that a_selector names, one per line.
int list_selftest(std::string const &a_selector);

// The hex dump of a file, 16 bytes a line.
int run_hexdump(std::string const &a_path);

// A command's line after parsing: its options in command-line order, each with its one value (empty
// for a flag), and its other words.
struct command_input {
    std::vector<std::pair<int, std::string>> m_options;
    std::vector<std::string> m_words;

    bool has(int a_id) const;
};

// Every part of a URL, or the URL with parts set by the options in order.
int run_url(command_input const &a_input);
// A path normalized and taken apart.
int run_path(command_input const &a_input);
// A timecode ("hh:mm:ss:ff@mode") converted, stepped and counted by the options in order.
int run_timecode(command_input const &a_input);

} // namespace ordwel_toolbox

#endif
