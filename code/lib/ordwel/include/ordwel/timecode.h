#ifndef ORDWEL_TIMECODE_H
#define ORDWEL_TIMECODE_H

#include <string>

#include <ordwel/export.h>
#include <ordwel/fraction.h>
#include <ordwel/timestamp.h>

namespace ordwel {

// A frame-accurate video time code. It holds one position (the nominal frame number of the label,
// counted at base frames a second from 00:00:00:00) over the base, and derives hour, minute,
// second and frame from it by division. Drop-frame modes do not change that representation: they
// skip labels as they step, and total_frames() converts between a label and the true frame count.
//
// Arithmetic is 32-bit unsigned and wraps; nothing wraps at 24 hours.
class ORDWEL_API timecode : public fraction<unsigned int> {
public:
    // The low 8 bits are the base; 0x7000 marks the drop-frame family.
    enum mode_type {
        mode_invalid = 1,
        mode_24 = 24,
        mode_25 = 25,
        mode_30 = 30,
        mode_50 = 50,
        mode_60 = 60,
        mode_23_976 = 0x7018,
        mode_29_97 = 0x701E,
        mode_59_94 = 0x703C
    };

    timecode(mode_type a_mode = mode_invalid);
    timecode(mode_type a_mode, unsigned int a_hour, unsigned int a_minute, unsigned int a_second, unsigned int a_frame,
             unsigned int a_factor);
    // "hh:mm:ss:ff@mode" (any one separator before the frame); without "@mode" the mode stays
    // mode_invalid at base 1. Raises es::arg "Invalid timecode '<text>'" unless four or five fields
    // are found.
    explicit timecode(std::string const &a_text);
    // The mode from the rate formatted as "%-9.3f", the fields from "hh:mm:ss:ff"; never raises.
    timecode(float a_rate, std::string const &a_text);
    timecode(timecode const &a_other) = default;
    timecode &operator=(timecode const &a_other) = default;
    ~timecode() = default;

    unsigned int base() const { return m_denom; }
    mode_type mode() const { return m_mode; }
    unsigned int factor() const { return m_factor; }
    void factor(unsigned int a_factor) { m_factor = a_factor; }

    // The display fields; each is 0 at a base of 0. Hours do not wrap.
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int frame() const;
    // Each moves the position by the difference to the present field; nothing is validated, so
    // frame(99) at base 25 runs over into the seconds.
    void hour(unsigned int a_hour);
    void minute(unsigned int a_minute);
    void second(unsigned int a_second);
    void frame(unsigned int a_frame);
    void set(unsigned int a_hour, unsigned int a_minute, unsigned int a_second, unsigned int a_frame);
    // Fixed columns: numbers at 0, 3, 6 and 9 (at most 2, 5, 8 and 11 characters, read like atoi).
    // Raises std::out_of_range("invalid string position") for a text shorter than 9 characters.
    void set(std::string const &a_text);

    // The true count of frames up to the label (drop-frame labels at 29.97 and 59.94 counted as
    // such), and the position of the label for a count.
    unsigned int total_frames() const;
    void total_frames(unsigned int a_frames);

    // == and != compare mode and position; the order compares position alone. The factor takes no
    // part.
    bool operator==(timecode const &a_other) const;
    bool operator!=(timecode const &a_other) const;
    bool operator<(timecode const &a_other) const;
    bool operator<=(timecode const &a_other) const;
    bool operator>(timecode const &a_other) const;
    bool operator>=(timecode const &a_other) const;
    // Whether the earlier of the two, stepped once by its own factor, equals the later.
    bool is_consecutive(timecode const &a_other) const;

    // One step is factor frames, with the drop-frame rules of the mode.
    timecode &operator++();
    timecode operator++(int);
    timecode &operator--();
    timecode operator--(int);
    timecode operator+(unsigned int a_steps) const;
    timecode &operator+=(unsigned int a_steps);
    timecode &operator-=(unsigned int a_steps);

    // The nominal time of the label: position over base.
    timestamp as_timestamp() const;
    unsigned int as_int(unsigned int a_res = 1) const;
    unsigned int as_rounded_int(unsigned int a_res = 1) const;
    float as_float(float a_scale = 1) const;
    // Hour, minute, second and frame in bytes 3 to 0, bit 7 set in the drop-frame modes.
    unsigned int as_quicktime_tmcd() const;
    bool is_dropframe() const;
    bool is_valid() const;

    static char const *mode_c_str(mode_type a_mode);
    static mode_type mode_from_string(std::string const &a_text);

private:
    void increment(unsigned int a_frames);
    void decrement(unsigned int a_frames);

    mode_type m_mode;
    unsigned int m_factor;
};

ORDWEL_API timecode timecode_with_timestamp(timecode::mode_type a_mode, timestamp const &a_timestamp,
                                            unsigned int a_factor);
// The rate's hundredths pick the mode (29.97 is found, 29.98 is mode_invalid).
ORDWEL_API timecode timecode_with_framerate(double a_rate, timestamp const &a_timestamp, unsigned int a_factor);
// Bit 7 of the word is ignored: the drop-frame nature comes from a_mode.
ORDWEL_API timecode timecode_with_quicktime_tmcd(timecode::mode_type a_mode, unsigned int a_word,
                                                 unsigned int a_factor);

// "hh:mm:ss:ff"; the separator before the frame is ':' (a_flag true) or '.' in the plain modes and
// ';' or ',' in the drop-frame modes. mode_invalid gives "".
ORDWEL_API std::string string_with_timecode(timecode const &a_timecode, bool a_flag);

} // namespace ordwel

#endif
