#include "toolbox.h"

#include <ordwel/version.h>

#include "options.h"

namespace ordwel_toolbox {

void write_help(ordwel::arg::optparser &a_parser)
{
    a_parser.add_desc_indent1("NAME");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("ordwel - the toolbox of the ordwel library");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("SYNOPSIS");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("!S!ordwel!SE! [!SA!options!SAE!] !SA!command!SAE! [!SA!arguments!SAE!]");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("DESCRIPTION");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("Runs the library's own self-test and puts some of its families to work on the command "
                      "line. Options of a command follow its name; a word of the form !Q!--name=a,b!QE! gives the "
                      "option --name the words a and b.");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("OPTIONS");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(k_opt_help, "show this help and end");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(k_opt_html, "write the help as HTML (with !S!--help!SE!)");
    a_parser.add_desc_paragraph();
    a_parser.add_desc(k_opt_version, "print the library's version and end");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("COMMANDS");
    a_parser.add_desc_paragraph();
    a_parser.add_desc_indent2("selftest [-v] [-l] [suite[/unit[/case]]]");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Runs the test cases that the library registered at load: all of them, or those of one "
                      "suite, one unit or one case. Each failure is reported with the place of the failed check "
                      "and its message; the last line counts the cases that passed and failed. The exit status "
                      "is 1 when a case failed. !S!-v!SE! reports every case, !S!-l!SE! lists the cases "
                      "instead of running them.");
    a_parser.add_desc_paragraph();
    a_parser.add_desc_indent2("hexdump file");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Dumps a file in lines of 16 bytes: the offset, the bytes in hex and the bytes as "
                      "characters. The last line holds the file's size.");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("EXIT STATUS");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("0 on success, 1 when a test or an operation failed, 2 for a command line that makes no "
                      "sense.");
}

} // namespace ordwel_toolbox
