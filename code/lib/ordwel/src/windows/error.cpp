// SPDX-License-Identifier: MIT
#include "platform/error.h"

#include <cstring>

#include <windows.h>

// The error numbers of Win32 and their texts in the user's language; the C runtime's errno texts
// for the calls that go through it.
namespace ordwel {
namespace platform {

unsigned long last_error()
{
    return GetLastError();
}

std::string error_text(unsigned long a_error)
{
    char *l_text = nullptr;
    DWORD const l_size =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, static_cast<DWORD>(a_error), 0x400, reinterpret_cast<LPSTR>(&l_text), 0, nullptr);
    std::string l_result;
    if (l_size != 0 && l_text != nullptr) {
        l_result.assign(l_text, l_size);
    }
    if (l_text != nullptr) {
        LocalFree(l_text);
    }
    return l_result;
}

std::string errno_text(int a_errno)
{
    char l_text[256] = {};
    if (strerror_s(l_text, sizeof l_text, a_errno) != 0) {
        return std::string();
    }
    return std::string(l_text);
}

} // namespace platform
} // namespace ordwel
