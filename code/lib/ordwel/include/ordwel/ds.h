// SPDX-License-Identifier: MIT
#ifndef ORDWEL_DS_H
#define ORDWEL_DS_H

#include <cstdarg>

#include <ordwel/export.h>
#include <ordwel/internal/attributes.h>
#include <ordwel/types.h>

// What the library does when it cannot throw (ds), and numbered debug channels that print to the
// standard error stream (ds_og). Channels 0 to 4 are on at start; channel 0 carries abort lines.

namespace ordwel {

/// What the library does when it cannot throw: end the process with a message.
namespace ds {

/// Prints "Abort [<file>:<line>] '<text>'" to the standard output (no newline; the text, formatted
/// printf-style from a_format and the arguments, is cut at 1023 characters) and ends the process
/// with status 1.
///@{
[[noreturn]] ORDWEL_API void abort(char const *a_file, uint32 a_line, char const *a_format, ...)
    ORDWEL_PRINTF_FORMAT(3, 4);
[[noreturn]] ORDWEL_API void abort_va(char const *a_file, uint32 a_line, char const *a_format, va_list a_args)
    ORDWEL_PRINTF_FORMAT(3, 0);
///@}

} // namespace ds

/// Numbered debug channels that print to the standard error stream. Channels 0 to 4 are on at
/// start; channel 0 carries abort lines.
namespace ds_og {

/// Prints "abort: '<expression>' [ <file>:<line> ]" on channel 0 and ends the process with
/// status 1, whether channel 0 is on or not.
[[noreturn]] ORDWEL_API void abort(char const *a_expression, char const *a_file, uint32 a_line);
/// abort(a_expression, a_file, a_line) when a_condition holds; else nothing.
ORDWEL_API void abort_if(bool a_condition, char const *a_expression, char const *a_file, uint32 a_line);

/// When a_channel is on, prints the printf-style format and arguments to the standard error
/// stream; a null format prints nothing.
ORDWEL_API void print(uint64 a_channel, char const *a_format, ...) ORDWEL_PRINTF_FORMAT(2, 3);
/// Hex dump in lines of 79 bytes: offset, 16 bytes in two groups of 8, the bytes as characters.
/// The dump ends with a line that holds only the total size and the two bars. Prints only when
/// a_channel is on; null bytes or a zero size print nothing.
ORDWEL_API void print_buf(uint64 a_channel, void const *a_bytes, uint64 a_size);
/// When a_channel is on, flushes the standard error stream.
ORDWEL_API void flush(uint64 a_channel);
/// When a_channel is on, writes a_size bytes to the file at a_path, made or emptied first. A file
/// that cannot be opened or written is reported on the standard error stream, not raised; a failed
/// close raises es::file. A null path or bytes, or a zero size, does nothing.
ORDWEL_API void dump_buf(uint64 a_channel, char const *a_path, void const *a_bytes, uint64 a_size);

/// Whether channel a_channel is on.
[[nodiscard]] ORDWEL_API bool mask_bit(uint64 a_channel);
/// Turns one channel on or off.
///@{
ORDWEL_API void mask_set_bit(uint64 a_channel);
ORDWEL_API void mask_clear_bit(uint64 a_channel);
///@}
/// Turns on or off each of the a_count channels listed at a_channels.
///@{
ORDWEL_API void mask_set_bits(uint64 const *a_channels, uint64 a_count);
ORDWEL_API void mask_clear_bits(uint64 const *a_channels, uint64 a_count);
///@}
/// Turns on or off every channel from a_first to a_last, both included; a_first above a_last does
/// nothing.
///@{
ORDWEL_API void mask_set_range(uint64 a_first, uint64 a_last);
ORDWEL_API void mask_clear_range(uint64 a_first, uint64 a_last);
///@}
/// When a_channel is on, prints the channels that are on, e.g. "{ [0..4], 7, 8, 10, }".
ORDWEL_API void mask_print(uint64 a_channel);

} // namespace ds_og

/// The severity of a message, most severe first. Fixed to int, so that any value a caller stores
/// is a valid one (it names "UNKNOWN").
enum severity : int {
    severity_fatal = 0,    ///< "fatal"
    severity_alert = 1,    ///< "alert"
    severity_critical = 2, ///< "critical"
    severity_error = 3,    ///< "error"
    severity_warning = 4,  ///< "warning"
    severity_notice = 5,   ///< "notice"
    severity_info = 6,     ///< "info"
    severity_debug = 7     ///< "debug"
};

/// The severity's name, "fatal" ... "debug"; any other value, negative ones included, gives "UNKNOWN".
[[nodiscard]] ORDWEL_API char const *cstr_with_severity(severity a_severity);

} // namespace ordwel

#endif
