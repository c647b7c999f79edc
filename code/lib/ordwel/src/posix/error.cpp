// SPDX-License-Identifier: MIT
#include "platform/error.h"

#include <cerrno>
#include <cstring>

// The error numbers of POSIX are errno values, and their texts the C library's.
namespace ordwel {
namespace platform {

unsigned long last_error()
{
    return static_cast<unsigned long>(errno);
}

std::string error_text(unsigned long a_error)
{
    return errno_text(static_cast<int>(a_error));
}

std::string errno_text(int a_errno)
{
    char l_text[256] = {};
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
    return std::string(strerror_r(a_errno, l_text, sizeof l_text));
#else
    return strerror_r(a_errno, l_text, sizeof l_text) == 0 ? std::string(l_text) : std::string();
#endif
}

} // namespace platform
} // namespace ordwel
