// SPDX-License-Identifier: MIT
#include "platform/clock.h"

#include <ctime>

#include <windows.h>

namespace ordwel {
namespace platform {

unsigned long long clock_counter()
{
    LARGE_INTEGER l_count;
    l_count.QuadPart = 0;
    QueryPerformanceCounter(&l_count);
    return static_cast<unsigned long long>(l_count.QuadPart);
}

unsigned long long clock_frequency()
{
    LARGE_INTEGER l_frequency;
    l_frequency.QuadPart = 0;
    QueryPerformanceFrequency(&l_frequency);
    return static_cast<unsigned long long>(l_frequency.QuadPart);
}

unsigned long long clock_filetime()
{
    FILETIME l_time;
    GetSystemTimeAsFileTime(&l_time);
    return (static_cast<unsigned long long>(l_time.dwHighDateTime) << 32) | l_time.dwLowDateTime;
}

void clock_sleep_milliseconds(unsigned int a_milliseconds)
{
    Sleep(a_milliseconds);
}

status clock_localtime(std::time_t a_time, std::tm *a_result)
{
    errno_t const l_error = localtime_s(a_result, &a_time);
    return l_error == 0 ? status_done() : status_failed_runtime(l_error);
}

status clock_gmtime(std::time_t a_time, std::tm *a_result)
{
    errno_t const l_error = gmtime_s(a_result, &a_time);
    return l_error == 0 ? status_done() : status_failed_runtime(l_error);
}

status clock_ctime(std::time_t a_time, char (&a_text)[32])
{
    // ctime_s is asctime_s over localtime_s; the two steps are taken apart because some runtimes'
    // ctime_s refuse the time 0 (the epoch itself), which localtime_s accepts.
    std::tm l_tm{};
    errno_t l_error = localtime_s(&l_tm, &a_time);
    if (l_error == 0) {
        l_error = asctime_s(a_text, sizeof a_text, &l_tm);
    }
    return l_error == 0 ? status_done() : status_failed_runtime(l_error);
}

} // namespace platform
} // namespace ordwel
