// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <ordwel/version.h>

#include "options.h"

namespace ordwel_toolbox {

namespace {

using ordwel::arg::opt_functor;
using ordwel::arg::optparser;

// The help needs a parser for its option labels, never its callbacks.
struct no_callbacks : public opt_functor {
    int operator()(int, std::vector<char const *>) override { return 0; }
};

void set_form(optparser &a_parser, bool a_html)
{
    if (a_html) {
        a_parser.set_html_output();
    } else {
        a_parser.set_max_text_line_width();
    }
}

void write_options(optparser &a_parser, std::vector<option_info> const &a_options)
{
    for (option_info const &l_option : a_options) {
        a_parser.add_opt(l_option.m_id, l_option.m_name, l_option.m_min, l_option.m_max);
    }
    for (option_info const &l_option : a_options) {
        a_parser.add_desc(l_option.m_id, l_option.m_help);
    }
}

void write_exit_status(optparser &a_parser)
{
    a_parser.add_desc_indent1("EXIT STATUS");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("The same for every command: 0 when the work is done; 1 when it failed (a file that cannot be "
                      "opened or read, data that cannot be decoded, a result out of range, a failed self-test); 2 "
                      "for a command line that makes no sense (an unknown command or option, a missing word, a "
                      "value that is malformed or out of range).");
    a_parser.add_desc_paragraph();
}

void write_program_help(bool a_html)
{
    no_callbacks l_functor;
    optparser l_parser(&l_functor);
    set_form(l_parser, a_html);
    l_parser.add_desc_indent1("NAME");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc("ordwel - the toolbox of the ordwel library");
    l_parser.add_desc_paragraph();

    l_parser.add_desc_indent1("SYNOPSIS");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc("!S!ordwel!SE! [!SA!options!SAE!] !SA!command!SAE! [!SA!arguments!SAE!]");
    l_parser.add_desc_paragraph();

    l_parser.add_desc_indent1("DESCRIPTION");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc("Runs the library's own self-test and puts some of its families to work on the command "
                      "line. Options of a command follow its name; a word of the form !Q!--name=a,b!QE! gives the "
                      "option --name the words a and b. Each command's own --help shows its options.");
    l_parser.add_desc_paragraph();

    l_parser.add_desc_indent1("OPTIONS");
    l_parser.add_desc_paragraph();
    write_options(l_parser, {{k_opt_help, "help", 0, 0, "show this help and end"},
                             {k_opt_html, "html", 0, 0, "write the help as HTML (with !S!--help!SE!)"},
                             {k_opt_version, "version", 0, 0, "print the library's version and end"}});
    l_parser.add_desc_paragraph();

    l_parser.add_desc_indent1("COMMANDS");
    l_parser.add_desc_paragraph();
    for (command_info const &l_command : commands()) {
        l_parser.add_desc_indent2(l_command.m_synopsis);
        l_parser.add_desc_indent3(nullptr);
        l_parser.add_desc(l_command.m_text);
        l_parser.add_desc_paragraph();
        // Each command's options in a parser of their own: one letter may mean different options.
        no_callbacks l_command_functor;
        optparser l_command_parser(&l_command_functor);
        set_form(l_command_parser, a_html);
        write_options(l_command_parser, l_command.m_options);
        l_command_parser.add_desc_paragraph();
    }
    write_exit_status(l_parser);
}

void write_command_help(command_info const &a_command, bool a_html)
{
    no_callbacks l_functor;
    optparser l_parser(&l_functor);
    set_form(l_parser, a_html);
    l_parser.add_desc_indent1("NAME");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc((std::string("ordwel ") + a_command.m_name + " - " + a_command.m_summary).c_str());
    l_parser.add_desc_paragraph();
    l_parser.add_desc_indent1("SYNOPSIS");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc((std::string("ordwel ") + a_command.m_synopsis).c_str());
    l_parser.add_desc_paragraph();
    l_parser.add_desc_indent1("DESCRIPTION");
    l_parser.add_desc_indent2(nullptr);
    l_parser.add_desc(a_command.m_text);
    l_parser.add_desc_paragraph();
    l_parser.add_desc_indent1("OPTIONS");
    l_parser.add_desc_paragraph();
    write_options(l_parser, a_command.m_options);
    l_parser.add_desc_paragraph();
    write_exit_status(l_parser);
}

} // namespace

void write_help(command_info const *a_command, bool a_html)
{
    if (a_command == nullptr) {
        write_program_help(a_html);
    } else {
        write_command_help(*a_command, a_html);
    }
}

void write_bash_completion()
{
    std::string l_names;
    std::string l_cases;
    for (command_info const &l_command : commands()) {
        l_names += std::string(l_names.empty() ? "" : " ") + l_command.m_name;
        std::string l_options;
        for (option_info const &l_option : l_command.m_options) {
            l_options += std::string(l_options.empty() ? "" : " ") + "--" + l_option.m_name;
        }
        l_cases += std::string("        ") + l_command.m_name + ") l_words=\"" + l_options + "\" ;;\n";
    }
    std::printf("# bash completion for ordwel\n"
                "_ordwel()\n"
                "{\n"
                "    local l_current=${COMP_WORDS[COMP_CWORD]} l_command= l_index l_words\n"
                "    for ((l_index = 1; l_index < COMP_CWORD; ++l_index)); do\n"
                "        case ${COMP_WORDS[l_index]} in -*) ;; *) l_command=${COMP_WORDS[l_index]}; break ;; esac\n"
                "    done\n"
                "    case $l_command in\n"
                "        '') l_words=\"--help --html --version %s\" ;;\n"
                "%s"
                "        *) l_words= ;;\n"
                "    esac\n"
                "    if [[ -n $l_command && $l_current != -* ]]; then\n"
                "        COMPREPLY=($(compgen -f -- \"$l_current\"))\n"
                "    else\n"
                "        COMPREPLY=($(compgen -W \"$l_words\" -- \"$l_current\"))\n"
                "    fi\n"
                "}\n"
                "complete -o filenames -F _ordwel ordwel\n",
                l_names.c_str(), l_cases.c_str());
}

} // namespace ordwel_toolbox
