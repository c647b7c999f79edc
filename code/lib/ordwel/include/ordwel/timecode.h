// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TIMECODE_H
#define ORDWEL_TIMECODE_H

#include <string>

#include <ordwel/export.h>
#include <ordwel/fraction.h>
#include <ordwel/timestamp.h>

namespace ordwel {

/// A frame-accurate video time code. It holds one position (the nominal frame number of the label,
/// counted at base frames a second from 00:00:00:00) over the base, and derives hour, minute,
/// second and frame from it by division. Drop-frame modes do not change that representation: they
/// skip labels as they step, and total_frames() converts between a label and the true frame count.
///
/// Arithmetic is 32-bit unsigned and wraps; nothing wraps at 24 hours.
class ORDWEL_API timecode : public fraction<unsigned int> {
public:
    /// The frame rates. The low 8 bits are the base; 0x7000 marks the drop-frame family.
    enum mode_type {
        mode_invalid = 1,     ///< No rate; base 1.
        mode_24 = 24,         ///< 24 frames a second.
        mode_25 = 25,         ///< 25 frames a second.
        mode_30 = 30,         ///< 30 frames a second.
        mode_50 = 50,         ///< 50 frames a second.
        mode_60 = 60,         ///< 60 frames a second.
        mode_23_976 = 0x7018, ///< 24000/1001, base 24; no labels are dropped.
        mode_29_97 = 0x701E,  ///< 30000/1001, base 30; minutes not divisible by 10 skip labels ff 00 and 01.
        mode_59_94 = 0x703C   ///< 60000/1001, base 60; minutes not divisible by 10 skip labels ff 00 to 03.
    };

    /// 00:00:00:00 in a_mode, factor 1.
    timecode(mode_type a_mode = mode_invalid);
    /// The label hh:mm:ss:ff in a_mode, stepping by a_factor frames; the fields are not validated.
    timecode(mode_type a_mode, unsigned int a_hour, unsigned int a_minute, unsigned int a_second, unsigned int a_frame,
             unsigned int a_factor);
    /// "hh:mm:ss:ff@mode" (any one separator before the frame); without "@mode" the mode stays
    /// mode_invalid at base 1. Raises es::arg "Invalid timecode '<text>'" unless four or five fields
    /// are found.
    explicit timecode(std::string const &a_text);
    /// The mode from the rate formatted as "%-9.3f", the fields from "hh:mm:ss:ff"; never raises.
    timecode(float a_rate, std::string const &a_text);
    /// Mode, position and factor of the other.
    timecode(timecode const &a_other) = default;
    /// Takes over mode, position and factor.
    timecode &operator=(timecode const &a_other) = default;
    ~timecode() = default;

    /// The nominal frames a second: the low 8 bits of the mode (1 for mode_invalid).
    [[nodiscard]] unsigned int base() const { return m_denom; }
    /// The mode given at construction.
    [[nodiscard]] mode_type mode() const { return m_mode; }
    /// The number of frames that one step moves.
    [[nodiscard]] unsigned int factor() const { return m_factor; }
    /// Sets the number of frames that one step moves.
    void factor(unsigned int a_factor) { m_factor = a_factor; }

    /// The display fields; each is 0 at a base of 0. Hours do not wrap.
    ///@{
    [[nodiscard]] unsigned int hour() const;
    [[nodiscard]] unsigned int minute() const;
    [[nodiscard]] unsigned int second() const;
    [[nodiscard]] unsigned int frame() const;
    ///@}
    /// Each moves the position by the difference to the present field; nothing is validated, so
    /// frame(99) at base 25 runs over into the seconds.
    ///@{
    void hour(unsigned int a_hour);
    void minute(unsigned int a_minute);
    void second(unsigned int a_second);
    void frame(unsigned int a_frame);
    ///@}
    /// Sets the label to hh:mm:ss:ff; nothing is validated.
    void set(unsigned int a_hour, unsigned int a_minute, unsigned int a_second, unsigned int a_frame);
    /// Fixed columns: numbers at 0, 3, 6 and 9 (at most 2, 5, 8 and 11 characters, read like atoi).
    /// Raises std::out_of_range("invalid string position") for a text shorter than 9 characters.
    void set(std::string const &a_text);

    /// The true count of frames up to the label (drop-frame labels at 29.97 and 59.94 counted as
    /// such).
    [[nodiscard]] unsigned int total_frames() const;
    /// Sets the label that a true count of frames reaches.
    void total_frames(unsigned int a_frames);

    /// == and != compare mode and position; the order compares position alone. The factor takes no
    /// part.
    ///@{
    [[nodiscard]] bool operator==(timecode const &a_other) const;
    [[nodiscard]] bool operator!=(timecode const &a_other) const;
    [[nodiscard]] bool operator<(timecode const &a_other) const;
    [[nodiscard]] bool operator<=(timecode const &a_other) const;
    [[nodiscard]] bool operator>(timecode const &a_other) const;
    [[nodiscard]] bool operator>=(timecode const &a_other) const;
    ///@}
    /// Whether the earlier of the two, stepped once by its own factor, equals the later.
    [[nodiscard]] bool is_consecutive(timecode const &a_other) const;

    /// One step is factor frames, with the drop-frame rules of the mode. The prefix forms give
    /// *this, the postfix forms the value before the step.
    ///@{
    timecode &operator++();
    timecode operator++(int);
    timecode &operator--();
    timecode operator--(int);
    ///@}
    /// A copy moved on by a_steps steps.
    [[nodiscard]] timecode operator+(unsigned int a_steps) const;
    /// Moves on or back by a_steps steps; gives *this.
    ///@{
    timecode &operator+=(unsigned int a_steps);
    timecode &operator-=(unsigned int a_steps);
    ///@}

    /// The nominal time of the label: position over base.
    [[nodiscard]] timestamp as_timestamp() const;
    /// The nominal time in units of 1/a_res second, (position * a_res) / base truncated or rounded
    /// to nearest, in 32 bits; 0 at a base of 0.
    ///@{
    [[nodiscard]] unsigned int as_int(unsigned int a_res = 1) const;
    [[nodiscard]] unsigned int as_rounded_int(unsigned int a_res = 1) const;
    ///@}
    /// The nominal time in seconds times a_scale.
    [[nodiscard]] float as_float(float a_scale = 1) const;
    /// Hour, minute, second and frame in bytes 3 to 0, bit 7 set in the drop-frame modes.
    [[nodiscard]] unsigned int as_quicktime_tmcd() const;
    /// Whether the mode is one of 23.976, 29.97 and 59.94.
    [[nodiscard]] bool is_dropframe() const;
    /// Whether the mode is other than mode_invalid.
    [[nodiscard]] bool is_valid() const;

    /// The mode's rate as text: "24", "25", "30", "50", "60", "23.976", "29.97", and "59.54" for
    /// mode_59_94 (the spelling mode_from_string reads back); "invalid" for any other value.
    [[nodiscard]] static char const *mode_c_str(mode_type a_mode);
    /// The mode of a rate's text: "24" or a text beginning "24.0" (and so on for 25, 30, 50 and 60),
    /// or a text beginning "23.976", "29.97" or "59.54". Anything else gives mode_invalid.
    [[nodiscard]] static mode_type mode_from_string(std::string const &a_text);

private:
    void increment(unsigned int a_frames);
    void decrement(unsigned int a_frames);

    mode_type m_mode;
    unsigned int m_factor;
};

/// The label that a time reaches in a_mode: its true frame count, truncated, at the mode's base.
[[nodiscard]] ORDWEL_API timecode timecode_with_timestamp(timecode::mode_type a_mode, timestamp const &a_timestamp,
                                                          unsigned int a_factor);
/// timecode_with_timestamp in the mode of a rate. The rate's hundredths pick the mode (29.97 is
/// found, 29.98 is mode_invalid).
[[nodiscard]] ORDWEL_API timecode timecode_with_framerate(double a_rate, timestamp const &a_timestamp,
                                                          unsigned int a_factor);
/// The label of a QuickTime "tmcd" word (hour, minute, second, frame in bytes 3 to 0). Bit 7 of
/// the word is ignored: the drop-frame nature comes from a_mode.
[[nodiscard]] ORDWEL_API timecode timecode_with_quicktime_tmcd(timecode::mode_type a_mode, unsigned int a_word,
                                                               unsigned int a_factor);

/// "hh:mm:ss:ff"; the separator before the frame is ':' (a_flag true) or '.' in the plain modes and
/// ';' or ',' in the drop-frame modes. mode_invalid gives "".
[[nodiscard]] ORDWEL_API std::string string_with_timecode(timecode const &a_timecode, bool a_flag);

} // namespace ordwel

#endif
