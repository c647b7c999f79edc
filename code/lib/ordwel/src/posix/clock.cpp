// SPDX-License-Identifier: MIT
#include "platform/clock.h"

#include <cerrno>
#include <cstring>
#include <ctime>

namespace ordwel {
namespace platform {

namespace {

timespec clock_read(clockid_t a_clock)
{
    timespec l_now{};
    clock_gettime(a_clock, &l_now);
    return l_now;
}

} // namespace

unsigned long long clock_counter()
{
    timespec const l_now = clock_read(CLOCK_MONOTONIC);
    return static_cast<unsigned long long>(l_now.tv_sec) * 1000000000ull +
           static_cast<unsigned long long>(l_now.tv_nsec);
}

unsigned long long clock_frequency()
{
    return 1000000000ull;
}

unsigned long long clock_filetime()
{
    // 100-ns units, counted from 1601 like the Windows system time.
    timespec const l_now = clock_read(CLOCK_REALTIME);
    return static_cast<unsigned long long>(l_now.tv_sec) * 10000000ull +
           static_cast<unsigned long long>(l_now.tv_nsec) / 100u + 116444736000000000ull;
}

void clock_sleep_milliseconds(unsigned int a_milliseconds)
{
    timespec l_left{};
    l_left.tv_sec = static_cast<time_t>(a_milliseconds / 1000u);
    l_left.tv_nsec = static_cast<long>(a_milliseconds % 1000u) * 1000000L;
    // A signal handler interrupts nanosleep; the rest of the time is slept after it.
    while (nanosleep(&l_left, &l_left) != 0 && errno == EINTR) {
    }
}

status clock_localtime(std::time_t a_time, std::tm *a_result)
{
    return localtime_r(&a_time, a_result) != nullptr ? status_done() : last_failure();
}

status clock_gmtime(std::time_t a_time, std::tm *a_result)
{
    return gmtime_r(&a_time, a_result) != nullptr ? status_done() : last_failure();
}

status clock_ctime(std::time_t a_time, char (&a_text)[32])
{
    // ctime_r needs 26 bytes for any year up to 9999; an unsigned 32-bit second count ends in 2106.
    std::tm l_tm{};
    if (localtime_r(&a_time, &l_tm) == nullptr || l_tm.tm_year > 9999 - 1900 || l_tm.tm_year < -1900) {
        return status_failed(EOVERFLOW);
    }
    return asctime_r(&l_tm, a_text) != nullptr ? status_done() : last_failure();
}

} // namespace platform
} // namespace ordwel
