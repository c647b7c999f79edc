// SPDX-License-Identifier: MIT
// ordwel: the library's toolbox. See "ordwel --help".
#include "toolbox.h"

int main(int a_argc, char **a_argv)
{
    return ordwel_toolbox::run_tool(a_argc > 0 ? static_cast<unsigned int>(a_argc) : 0u, a_argv);
}
