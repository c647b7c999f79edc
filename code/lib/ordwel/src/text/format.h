// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_TEXT_FORMAT_H
#define ORDWEL_SRC_TEXT_FORMAT_H

#include <cstdarg>
#include <string>

#include <ordwel/internal/attributes.h>

namespace ordwel {

// string_with_format for a caller that holds its arguments as a va_list, which stays unread.
std::string string_with_format_va(char const *a_format, va_list a_args) ORDWEL_PRINTF_FORMAT(1, 0);

} // namespace ordwel

#endif
