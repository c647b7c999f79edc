// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CLOCK_H
#define ORDWEL_CLOCK_H

#include <string>

#include <ordwel/export.h>

namespace ordwel {

/// A countdown in whole seconds of the wall clock, polled by its owner. It rings once more than
/// time() seconds have passed since activate(), or at once after ring(), until deactivate().
class ORDWEL_API egg_clock {
public:
    /// An inactive, silent clock of a_time seconds.
    explicit egg_clock(unsigned int a_time);
    /// The same length and state, start second included.
    egg_clock(egg_clock const &a_other) = default;
    /// Takes over length and state.
    egg_clock &operator=(egg_clock const &a_other) = default;

    /// Starts the countdown from the present second; false (and nothing changes) for a length of 0.
    bool activate();
    /// Stops the countdown and silences a forced ring.
    void deactivate();
    /// Whether a countdown runs.
    [[nodiscard]] bool is_active() const { return m_active; }
    /// Whether ring() was called, or a countdown runs and more than time() seconds have passed.
    [[nodiscard]] bool is_ringing() const;
    /// Forces the clock to ring, active or not.
    void ring() { m_ringing = true; }
    /// The length of the countdown in seconds.
    [[nodiscard]] unsigned int time() const { return m_time; }
    /// Sets the length; a running countdown is measured against the new length from then on.
    void set_time(unsigned int a_time) { m_time = a_time; }

private:
    bool m_active;
    bool m_ringing;
    unsigned int m_start;
    unsigned int m_time;
};

/// Always raises es::unsupp "Sleep microseconds not implemented!"; it never sleeps.
[[noreturn]] ORDWEL_API void sleep_microseconds(unsigned int a_microseconds);
/// Blocks the calling thread for at least a_milliseconds.
ORDWEL_API void sleep_milliseconds(unsigned int a_milliseconds);
/// Sleeps a_seconds * 1000 milliseconds, computed in 32 bits (so it wraps past about 49 days).
ORDWEL_API void sleep_seconds(unsigned int a_seconds);
/// Sleeps a_seconds * 1000.0 milliseconds, truncated; negative or NaN sleeps 0, huge values
/// saturate.
ORDWEL_API void sleep_seconds(double a_seconds);

/// The wall clock in seconds since 1 January 1970 UTC, cut to 32 bits.
[[nodiscard]] ORDWEL_API unsigned int time_in_seconds();
/// The same count for "YYYY-MM-DDThh:mm:ss+hh:mm"; fields the text does not reach are 0. The local
/// offset applied is the one in force now, not at the date.
[[nodiscard]] ORDWEL_API unsigned int time_in_seconds(std::string const &a_text);
/// The local time in the C library's 24-character form, "Thu Jan  1 00:00:00 1970".
[[nodiscard]] ORDWEL_API std::string time_string(unsigned int a_seconds);
/// The present local date and time into the six fields; any pointer may be null to skip its field.
ORDWEL_API void time_get_date_variables(unsigned int *a_year, unsigned int *a_month, unsigned int *a_day,
                                        unsigned int *a_hour, unsigned int *a_minute, unsigned int *a_second);
/// The present local time through strftime into a buffer of a_size bytes (terminator included);
/// "" when the text does not fit or the format is null.
[[nodiscard]] ORDWEL_API std::string get_strftime_output(char const *a_format, unsigned long long a_size);
/// "HH:MM:SS.sss" with unwrapped hours: 3725.5 gives "01:02:05.500".
[[nodiscard]] ORDWEL_API std::string seconds_to_HHMMSS_string(double a_seconds);

} // namespace ordwel

#endif
