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
                      "is 1 when a case failed. -v reports every case, -l lists the cases "
                      "instead of running them.");
    a_parser.add_desc_paragraph();
    a_parser.add_desc_indent2("hexdump file");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Dumps a file in lines of 16 bytes: the offset, the bytes in hex and the bytes as "
                      "characters. The last line holds the file's size.");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent2("url [-d] [-e] [--part value ...] url");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Prints every part of a URL, one a line: scheme, authority, domain, user, password, host, "
                      "service, path, params, query and fragment; -d decodes them. With options named after "
                      "the parts (--host value, --path value ...) it sets those "
                      "parts in turn instead and prints the new URL; an empty value removes a part, and "
                      "-e encodes the values.");
    a_parser.add_desc_paragraph();
    a_parser.add_desc_indent2("path [-s separator] path");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Prints a path normalized, then its directory, file, name and suffix. The separator is "
                      "!Q!/!QE! unless -s gives another.");
    a_parser.add_desc_paragraph();
    a_parser.add_desc_indent2("timecode [-m mode] [-a frames] [-t] hh:mm:ss:ff@mode");
    a_parser.add_desc_indent3(nullptr);
    a_parser.add_desc("Reads a timecode at one of the modes 24, 25, 30, 50, 60, 23.976, 29.97 and 59.54 (which "
                      "is 59.94), and prints it after the options in turn: -m converts it to another mode, "
                      "-a steps it by a number of frames (negative to go back), drop-frame labels skipped. "
                      "-t also prints the count of frames up to it.");
    a_parser.add_desc_paragraph();

    a_parser.add_desc_indent1("EXIT STATUS");
    a_parser.add_desc_indent2(nullptr);
    a_parser.add_desc("0 on success, 1 when a test or an operation failed, 2 for a command line that makes no "
                      "sense.");
}

} // namespace ordwel_toolbox
