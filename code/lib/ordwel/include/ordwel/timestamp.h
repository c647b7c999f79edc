// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TIMESTAMP_H
#define ORDWEL_TIMESTAMP_H

#include <ctime>
#include <string>

#include <sys/time.h>

#include <ordwel/export.h>
#include <ordwel/fraction.h>

namespace ordwel {

/// An exact time value: a count of ticks over the number of ticks in one second. It is both a
/// point in time and a duration; what its zero means belongs to whoever made it. All fraction
/// operators work across resolutions and give a fraction<unsigned long long>, which converts back
/// through the converting constructor.
///
/// Arithmetic is 64-bit unsigned and wraps, as in fraction. A resolution of zero never traps: the
/// integer conversions then give 0 for the whole and sub-second parts.
class ORDWEL_API timestamp : public fraction<unsigned long long> {
public:
    /// a_time ticks of 1/a_resolution second each, kept as given.
    timestamp(unsigned long long a_time = 0, unsigned long long a_resolution = 1);
    /// The same time and resolution.
    timestamp(timestamp const &a_other) = default;
    /// The fraction's numerator as the time, its denominator as the resolution.
    timestamp(fraction<unsigned long long> const &a_other);
    /// Takes over time and resolution.
    timestamp &operator=(timestamp const &a_other) = default;
    ~timestamp() = default;

    /// The count of ticks.
    [[nodiscard]] unsigned long long time() const { return m_numer; }
    /// Sets the count of ticks; the resolution stays.
    void time(unsigned long long a_time) { m_numer = a_time; }
    /// The number of ticks in one second.
    [[nodiscard]] unsigned long long resolution() const { return m_denom; }
    /// Sets the ticks a second; the count stays, so the value changes.
    void resolution(unsigned long long a_resolution) { m_denom = a_resolution; }

    /// time / resolution in double, times a_scale (as_float(1000.0) is milliseconds).
    [[nodiscard]] double as_float(double a_scale = 1.0) const;
    /// The time in units of 1/a_res second: (time * a_res) / resolution, truncated or rounded to
    /// nearest. The product is taken first and wraps past 2^64.
    ///@{
    [[nodiscard]] unsigned long long as_int(unsigned long long a_res) const;
    [[nodiscard]] unsigned long long as_rounded_int(unsigned long long a_res) const;
    ///@}
    /// 32.32 fixed point: whole seconds above, the rounded fraction of 2^32 below; no epoch shift.
    [[nodiscard]] unsigned long long as_ntptime() const;
    /// Whole seconds and the rounded sub-second part (microseconds in a timeval, nanoseconds in a
    /// timespec); the rounding is not carried into the seconds, so the sub-second field can read
    /// exactly 1,000,000 (or 1,000,000,000).
    ///@{
    [[nodiscard]] timeval as_timeval() const;
    [[nodiscard]] timespec as_timespec() const;
    ///@}
};

/// A 32.32 fixed-point time (whole seconds above, the fraction of 2^32 below) at resolution 2^32.
[[nodiscard]] ORDWEL_API timestamp timestamp_with_ntptime(unsigned long long a_ntptime);
/// Seconds and microseconds, in microseconds.
[[nodiscard]] ORDWEL_API timestamp timestamp_with_timeval(timeval a_timeval);
/// Seconds and nanoseconds, in nanoseconds.
[[nodiscard]] ORDWEL_API timestamp timestamp_with_timespec(timespec a_timespec);
/// The current UTC time in microseconds since 1 January 1970, plus the two arguments (excess
/// microseconds are valid and count on into the seconds).
[[nodiscard]] ORDWEL_API timestamp timestamp_with_utc(unsigned int a_seconds, unsigned int a_microseconds);

/// "hh:mm:ss:f" with f in units of 1/a_res second, its width the digit count of a_res - 1; the
/// value is rounded once as a whole before it is split. a_res 0 gives "hh:mm:ss". Hours do not
/// wrap. a_res is meaningful up to 1,000,000,000 (a single width digit).
[[nodiscard]] ORDWEL_API std::string string_with_timestamp(timestamp const &a_timestamp, unsigned int a_res);

/// The raw high-resolution monotonic counter and its ticks per second:
/// timestamp(time_now(), time_resolution()) is a monotonic time unrelated to the time of day.
///@{
[[nodiscard]] ORDWEL_API unsigned long long time_now();
[[nodiscard]] ORDWEL_API unsigned long long time_resolution();
///@}

} // namespace ordwel

#endif
