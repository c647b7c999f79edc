// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_DIAG_RAISE_H
#define ORDWEL_SRC_DIAG_RAISE_H

#include <cstdarg>
#include <string>

#include <ordwel/internal/attributes.h>
#include <ordwel/types.h>

#include "text/format.h"

namespace ordwel {
namespace diag {

// Raises t_error (an es class with a static raise(file, line, message)) at a_file and a_line with
// a printf-formatted message: diag::raise_format<es::call>(ORDWEL_HERE, "no '%s'", a_name).
template <typename t_error>
[[noreturn]] void raise_format(char const *a_file, uint32 a_line, char const *a_format, ...) ORDWEL_PRINTF_FORMAT(3, 4);

template <typename t_error> void raise_format(char const *a_file, uint32 a_line, char const *a_format, ...)
{
    va_list l_args;
    va_start(l_args, a_format);
    std::string const l_message = string_with_format_va(a_format, l_args);
    va_end(l_args);
    t_error::raise(a_file, a_line, l_message.c_str());
}

} // namespace diag
} // namespace ordwel

#endif
