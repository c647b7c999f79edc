#include "toolbox.h"

#include <cstring>
#include <vector>

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

// A command's options and words: flags by id, and the words of no option in order.
struct command_words : public opt_functor {
    std::vector<int> m_flags;
    std::vector<char const *> m_words;

    int operator()(int a_id, std::vector<char const *> a_args) override
    {
        if (a_id == k_word) {
            m_words.push_back(a_args.front());
        } else {
            m_flags.push_back(a_id);
        }
        return 0;
    }

    bool has(int a_id) const
    {
        for (int const l_flag : m_flags) {
            if (l_flag == a_id) {
                return true;
            }
        }
        return false;
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

int usage_error(char const *a_text)
{
    std::fprintf(stderr, "*** %s (ordwel --help tells more)\n", a_text);
    return k_exit_usage;
}

int run_command(char const *a_command, unsigned int a_argc, char **a_argv)
{
    command_words l_words;
    optparser l_parser(&l_words);
    bool const l_selftest = std::strcmp(a_command, "selftest") == 0;
    if (l_selftest) {
        l_parser.add_opt(k_opt_verbose, "verbose", 0, 0);
        l_parser.add_opt(k_opt_list, "list", 0, 0);
    }
    if (!l_parser.parse(a_argc, a_argv)) {
        return k_exit_usage;
    }
    if (l_selftest) {
        if (l_words.m_words.size() > 1) {
            return usage_error("selftest takes at most one selection");
        }
        std::string const l_selector = l_words.m_words.empty() ? std::string() : l_words.m_words.front();
        return l_words.has(k_opt_list) ? list_selftest(l_selector)
                                       : run_selftest(l_selector, l_words.has(k_opt_verbose));
    }
    if (std::strcmp(a_command, "hexdump") == 0) {
        if (l_words.m_words.size() != 1) {
            return usage_error("hexdump takes one file");
        }
        return run_hexdump(l_words.m_words.front());
    }
    std::fprintf(stderr, "*** no such command `%s'\n", a_command);
    return k_exit_usage;
}

} // namespace

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
