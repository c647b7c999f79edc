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

// A command's options, each with the one word it takes, and its words of no option, in order.
struct command_words : public opt_functor {
    command_input m_input;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        if (a_id == k_word) {
            m_input.m_words.push_back(a_args.front());
        } else {
            m_input.m_options.emplace_back(a_id, a_args.empty() ? std::string() : std::string(a_args.front()));
        }
        return a_id == k_word ? 0 : static_cast<int>(a_args.size());
    }
};

int show_help(bool a_html)
{
    top_level l_functor;
    optparser l_parser(&l_functor);
    l_parser.add_opt(k_opt_help, "help", 0, 0);
    l_parser.add_opt(k_opt_html, "html", 0, 0);
    l_parser.add_opt(k_opt_version, "version", 0, 0);
    if (a_html) {
        l_parser.set_html_output();
    } else {
        l_parser.set_max_text_line_width();
    }
    write_help(l_parser);
    std::fflush(stdout);
    return k_exit_ok;
}

struct command {
    char const *m_name;
    void (*m_add_options)(optparser &);
    int (*m_run)(command_input const &);
};

void add_no_options(optparser &)
{
}

void add_selftest_options(optparser &a_parser)
{
    a_parser.add_opt(k_opt_verbose, "verbose", 0, 0);
    a_parser.add_opt(k_opt_list, "list", 0, 0);
}

void add_url_options(optparser &a_parser)
{
    a_parser.add_opt(k_opt_decode, "decode", 0, 0);
    a_parser.add_opt(k_opt_encode, "encode", 0, 0);
    for (std::size_t l_index = 0; l_index < ordwel::k_url_part_count; ++l_index) {
        a_parser.add_opt(k_opt_url_part - static_cast<int>(l_index), ordwel::k_url_parts[l_index].m_name, 1, 1);
    }
}

void add_path_options(optparser &a_parser)
{
    a_parser.add_opt(k_opt_separator, "separator", 1, 1);
}

void add_timecode_options(optparser &a_parser)
{
    a_parser.add_opt(k_opt_mode, "mode", 1, 1);
    a_parser.add_opt(k_opt_add, "add", 1, 1);
    a_parser.add_opt(k_opt_total, "total", 0, 0);
}

int run_selftest_command(command_input const &a_input)
{
    if (a_input.m_words.size() > 1) {
        return usage_error("selftest takes at most one selection");
    }
    std::string const l_selector = a_input.m_words.empty() ? std::string() : a_input.m_words.front();
    return a_input.has(k_opt_list) ? list_selftest(l_selector) : run_selftest(l_selector, a_input.has(k_opt_verbose));
}

int run_hexdump_command(command_input const &a_input)
{
    if (a_input.m_words.size() != 1) {
        return usage_error("hexdump takes one file");
    }
    return run_hexdump(a_input.m_words.front());
}

command const k_commands[] = {
    {"selftest", add_selftest_options, run_selftest_command},
    {"hexdump", add_no_options, run_hexdump_command},
    {"url", add_url_options, run_url},
    {"path", add_path_options, run_path},
    {"timecode", add_timecode_options, run_timecode},
};

int run_command(char const *a_command, unsigned int a_argc, char **a_argv)
{
    for (command const &l_command : k_commands) {
        if (std::strcmp(a_command, l_command.m_name) == 0) {
            command_words l_words;
            optparser l_parser(&l_words);
            l_command.m_add_options(l_parser);
            if (!l_parser.parse(a_argc, a_argv)) {
                return k_exit_usage;
            }
            return l_command.m_run(l_words.m_input);
        }
    }
    std::fprintf(stderr, "*** no such command `%s'\n", a_command);
    return k_exit_usage;
}

} // namespace

int usage_error(char const *a_text)
{
    std::fprintf(stderr, "*** %s (ordwel --help tells more)\n", a_text);
    return k_exit_usage;
}

bool command_input::has(int a_id) const
{
    for (auto const &l_option : m_options) {
        if (l_option.first == a_id) {
            return true;
        }
    }
    return false;
}

int run_tool(unsigned int a_argc, char **a_argv)
{
    top_level l_top;
    optparser l_parser(&l_top);
    l_parser.add_opt(k_opt_help, "help", 0, 0);
    l_parser.add_opt(k_opt_html, "html", 0, 0);
    l_parser.add_opt(k_opt_version, "version", 0, 0);
    if (!l_parser.parse(a_argc, a_argv)) {
        return k_exit_usage;
    }
    if (l_top.m_help || l_top.m_html) {
        return show_help(l_top.m_html);
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
