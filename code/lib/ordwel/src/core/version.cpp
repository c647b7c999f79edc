// SPDX-License-Identifier: MIT
#include <ordwel/version.h>

// Compiled into the library, so these give the version of the library that is loaded, whatever
// headers the caller was compiled with.

namespace ordwel {

char const *library_version_string() noexcept
{
    return ORDWEL_VERSION_STRING;
}

bool library_has_version(int a_major, int a_minor) noexcept
{
    return a_major == ORDWEL_VERSION_MAJOR && a_minor == ORDWEL_VERSION_MINOR;
}

} // namespace ordwel
