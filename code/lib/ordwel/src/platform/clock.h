// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_PLATFORM_CLOCK_H
#define ORDWEL_SRC_PLATFORM_CLOCK_H

#include <ctime>

#include "platform/error.h"

// The clock and calendar calls of the time families. Each backend makes the system call and
// hands back a plain value; the arithmetic on those values is portable.

namespace ordwel {
namespace platform {

// A monotonic tick count and its ticks per second.
unsigned long long clock_counter();
unsigned long long clock_frequency();
// The UTC time of day in 100-nanosecond units since 1 January 1601.
unsigned long long clock_filetime();
// Blocks the calling thread for about a_milliseconds.
void clock_sleep_milliseconds(unsigned int a_milliseconds);

// Thread-safe calendar conversions; fail when the time cannot be broken up (with a C runtime
// errno on Windows).
status clock_localtime(std::time_t a_time, std::tm *a_result);
status clock_gmtime(std::time_t a_time, std::tm *a_result);
// The C library's 24-character ctime text plus its line end into a_text (32 bytes).
status clock_ctime(std::time_t a_time, char (&a_text)[32]);

} // namespace platform
} // namespace ordwel

#endif
