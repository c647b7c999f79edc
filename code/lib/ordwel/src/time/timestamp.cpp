// SPDX-License-Identifier: MIT
#include <ordwel/timestamp.h>

#include <ordwel/string_helpers.h>

#include "core/arith.h"
#include "platform/clock.h"

namespace ordwel {

using arith::quotient;
using arith::remainder;

namespace {

using u64 = unsigned long long;

// (a_remainder * a_unit + r/2) / r: a sub-second remainder as a rounded count of 1/a_unit second.
u64 rounded_part(u64 a_remainder, u64 a_unit, u64 a_resolution)
{
    return quotient(u64(a_remainder * a_unit + a_resolution / 2), a_resolution);
}

} // namespace

timestamp::timestamp(unsigned long long a_time, unsigned long long a_resolution)
    : fraction<unsigned long long>(a_time, a_resolution)
{
}

timestamp::timestamp(fraction<unsigned long long> const &a_other) : fraction<unsigned long long>(a_other)
{
}

double timestamp::as_float(double a_scale) const
{
    return static_cast<double>(m_numer) / static_cast<double>(m_denom) * a_scale;
}

unsigned long long timestamp::as_int(unsigned long long a_res) const
{
    return quotient(u64(m_numer * a_res), m_denom);
}

unsigned long long timestamp::as_rounded_int(unsigned long long a_res) const
{
    return quotient(u64(m_numer * a_res + m_denom / 2), m_denom);
}

unsigned long long timestamp::as_ntptime() const
{
    u64 const l_seconds = quotient(m_numer, m_denom);
    u64 const l_rest = remainder(m_numer, m_denom);
    return (l_seconds << 32) | rounded_part(l_rest, u64(1) << 32, m_denom);
}

timeval timestamp::as_timeval() const
{
    timeval l_result{};
    l_result.tv_sec = static_cast<decltype(l_result.tv_sec)>(quotient(m_numer, m_denom));
    l_result.tv_usec =
        static_cast<decltype(l_result.tv_usec)>(rounded_part(remainder(m_numer, m_denom), 1000000u, m_denom));
    return l_result;
}

timespec timestamp::as_timespec() const
{
    timespec l_result{};
    l_result.tv_sec = static_cast<decltype(l_result.tv_sec)>(quotient(m_numer, m_denom));
    l_result.tv_nsec =
        static_cast<decltype(l_result.tv_nsec)>(rounded_part(remainder(m_numer, m_denom), 1000000000u, m_denom));
    return l_result;
}

timestamp timestamp_with_ntptime(unsigned long long a_ntptime)
{
    return timestamp(a_ntptime, u64(1) << 32);
}

timestamp timestamp_with_timeval(timeval a_timeval)
{
    u64 const l_seconds = static_cast<u64>(static_cast<long long>(a_timeval.tv_sec));
    u64 const l_micro = static_cast<u64>(static_cast<long long>(a_timeval.tv_usec));
    return timestamp(l_seconds * 1000000u + l_micro, 1000000u);
}

timestamp timestamp_with_timespec(timespec a_timespec)
{
    u64 const l_seconds = static_cast<u64>(static_cast<long long>(a_timespec.tv_sec));
    u64 const l_nano = static_cast<u64>(static_cast<long long>(a_timespec.tv_nsec));
    return timestamp(l_seconds * 1000000000u + l_nano, 1000000000u);
}

timestamp timestamp_with_utc(unsigned int a_seconds, unsigned int a_microseconds)
{
    // 100-ns units since 1601 to microseconds since 1970.
    u64 const l_micro = platform::clock_filetime() / 10u - 11644473600000000ull;
    // The parts travel through a timeval as the clock call gives them; the microseconds are not
    // carried into the seconds, timestamp_with_timeval takes any excess.
    u64 const l_seconds = l_micro / 1000000u + a_seconds;
    u64 const l_rest = l_micro % 1000000u + a_microseconds;
    return timestamp(l_seconds * 1000000u + l_rest, 1000000u);
}

std::string string_with_timestamp(timestamp const &a_timestamp, unsigned int a_res)
{
    unsigned int l_res = a_res;
    unsigned int l_width = 0;
    if (l_res == 0) {
        l_res = 1;
    } else {
        for (unsigned int l_rest = l_res - 1; l_rest != 0; l_rest /= 10) {
            ++l_width;
        }
    }
    u64 const l_count = a_timestamp.as_rounded_int(l_res);
    u64 const l_seconds = l_count / l_res;
    unsigned int const l_part = static_cast<unsigned int>(l_count % l_res);
    unsigned long long const l_hours = l_seconds / 3600u;
    unsigned int const l_minutes = static_cast<unsigned int>((l_seconds / 60u) % 60u);
    unsigned int const l_secs = static_cast<unsigned int>(l_seconds % 60u);
    if (a_res == 0) {
        return string_with_format("%02llu:%02u:%02u", l_hours, l_minutes, l_secs);
    }
    // The width is a single digit in the format; beyond 9 digits it would no longer be one.
    return string_with_format("%02llu:%02u:%02u:%0*u", l_hours, l_minutes, l_secs, static_cast<int>(l_width % 10u),
                              l_part);
}

unsigned long long time_now()
{
    return platform::clock_counter();
}

unsigned long long time_resolution()
{
    return platform::clock_frequency();
}

} // namespace ordwel
