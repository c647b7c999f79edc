// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PLATFORM_TEXT_H
#define ORDWEL_PLATFORM_TEXT_H

#include <cstddef>
#include <string>

#include <ordwel/types.h>

// Text conversions and number parsing that each platform does its own way. The callers have cut
// every text at its first NUL already: a_length counts the bytes or wide characters in front of it,
// and a_text[a_length] is that NUL.

namespace ordwel {
namespace platform {

std::wstring wide_with_utf8(char const *a_text, std::size_t a_length);
std::string utf8_with_wide(wchar_t const *a_text, std::size_t a_length);
// UTF-8 into the process's narrow code page.
std::string ansi_with_utf8(char const *a_text, std::size_t a_length);

// The C library's number parsers with Windows' widths: 32-bit long, saturated as there. The base is
// 0 or 2 to 36; the text is never null.
sint32 parse_long(char const *a_text, int a_base);
uint32 parse_ulong(char const *a_text, int a_base);
sint64 parse_int64(char const *a_text, int a_base);
uint64 parse_uint64(char const *a_text, int a_base);

} // namespace platform
} // namespace ordwel

#endif
