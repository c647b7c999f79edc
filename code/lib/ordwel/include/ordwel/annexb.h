// SPDX-License-Identifier: MIT
#ifndef ORDWEL_ANNEXB_H
#define ORDWEL_ANNEXB_H

#include <memory>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/stream.h>
#include <ordwel/types.h>

namespace ordwel {
namespace annexb {

// The units (NAL units) of an H.264 or HEVC byte stream, each behind a start code 00 00 01 or
// 00 00 00 01.
//
// The split:
// - Every 00 00 01 at any byte position is a start code and begins a unit, even one at the very
//   end of the data (an empty unit).
// - A start code is 4 bytes long when a zero byte stands before its 00 00 01, else 3.
// - A unit's payload runs from behind its start code to the next start code or the end of the
//   data, less the zero bytes at its end: those are the trailing zeros of the stream and belong
//   to no unit (a unit of a conforming stream never ends in a zero byte). So a payload may be
//   empty, and none ends in a zero byte.
// - The bytes before the first start code belong to no unit: the iterators skip them and tell
//   how many they were (leading()). Data without a start code has no unit at all.

/// One unit. Offsets count from the start of the data: the memory, or where the stream reader
/// began reading.
struct unit {
    /// Where its start code begins: its 00 00 01, or the zero byte before it.
    uint64 m_start = 0;
    /// Where its payload begins, right behind the start code.
    uint64 m_offset = 0;
    /// The payload's bytes, trailing zeros not counted.
    uint64 m_size = 0;
    /// Where the payload lies: in the memory that units runs over, in the buffer that
    /// unit_reader::next filled; null in what a unit_handler is handed.
    unsigned char const *m_data = nullptr;
    /// The first two bytes of the payload, zero beyond its size: the header, one byte of it for
    /// H.264 and two for HEVC.
    unsigned char m_header[2] = {0, 0};

    /// The length of the start code, 3 or 4.
    [[nodiscard]] uint64 start_code_size() const { return m_offset - m_start; }
};

/// The units of a byte stream in memory, one after the other, as views of the memory (which the
/// caller keeps alive and unchanged). The start codes are found by the library's vector scan.
class ORDWEL_API units {
public:
    /// Over the a_size bytes at a_data; the first unit comes with the first next().
    units(void const *a_data, uint64 a_size);

    /// The next unit; false after the last.
    bool next(unit &a_unit);
    /// The bytes before the first start code; all of them when there is none.
    [[nodiscard]] uint64 leading() const { return m_leading; }

private:
    unsigned char const *m_data;
    uint64 m_size;
    // The 00 00 01 of the next unit; m_size when there is none.
    uint64 m_code;
    uint64 m_leading;
};

/// What a unit_reader hands out as it goes: a unit's start, its payload in pieces, its end.
class unit_handler {
public:
    /// A handler that ignores everything; derived classes override what they want.
    unit_handler() = default;
    /// Handlers hold no state of their own: copies are plain.
    unit_handler(unit_handler const &) = default;
    /// As the copy constructor.
    unit_handler &operator=(unit_handler const &) = default;
    /// Derived handlers are destroyed through this class.
    virtual ~unit_handler() = default;

    /// A unit begins. a_unit has its offsets; m_size is 0 and m_header holds the two bytes behind
    /// the start code (zero beyond the data), which are the header unless the unit is shorter.
    virtual void begin(unit const &a_unit) { static_cast<void>(a_unit); }
    /// The next a_count bytes of the payload, valid during the call.
    virtual void data(unsigned char const *a_bytes, uint64 a_count)
    {
        static_cast<void>(a_bytes);
        static_cast<void>(a_count);
    }
    /// The unit is complete: a_unit as units gives it, m_data null.
    virtual void end(unit const &a_unit) { static_cast<void>(a_unit); }
};

/// The units of a byte stream read from a stream::rd through a block of its own. Its memory is the
/// block, whatever the data: a run of zeros is counted, not kept. for_each hands out the payload
/// in pieces; next collects a whole unit into a buffer. A stream::mem or stream::buf is scanned in
/// place instead: its position moves to its end at the first call, and its memory must stay put
/// while the reader runs.
class ORDWEL_API unit_reader {
public:
    /// a_block: the bytes asked of the source at a time (at least 16). Offsets count from the
    /// first byte that the reader reads.
    explicit unit_reader(stream::rd &a_stream, uint64 a_block = 65536);
    unit_reader(unit_reader const &) = delete;
    unit_reader &operator=(unit_reader const &) = delete;
    ~unit_reader();

    /// Reads to the end of the data, handing every unit to a_handler. Gives the number of units.
    uint64 for_each(unit_handler &a_handler);
    /// The next unit, its payload in a_payload (resized; a_unit.m_data points into it); false
    /// after the last.
    bool next(unit &a_unit, buffer &a_payload);
    /// The bytes before the first start code, as units::leading; known once the first unit has
    /// begun or the data has ended.
    [[nodiscard]] uint64 leading() const { return m_leading; }

private:
    enum class event { begin, data, end, done };
    /// Moves on to the next event; for data, a_bytes and a_count are set.
    event step(unsigned char const *&a_bytes, uint64 &a_count);
    /// Keeps at least 3 bytes (or all that are left) in the window, moving it to the block's start.
    void fill();
    /// Gives a_count bytes of the payload out: counted in the unit, its header taken from them.
    void take(unsigned char const *a_bytes, uint64 a_count);

    stream::rd *m_stream;
    uint64 m_capacity;
    std::unique_ptr<unsigned char[]> m_block;
    // The bytes read and not yet passed: m_window[m_begin, m_end), the first at stream offset
    // m_position. The window lies in the block, or in the memory of a memory stream.
    unsigned char const *m_window;
    uint64 m_begin = 0;
    uint64 m_end = 0;
    uint64 m_position = 0;
    bool m_ended = false;
    // Zero bytes passed but not yet handed out, just before m_position: they go to the payload
    // when data follows them, else they were trailing zeros.
    uint64 m_zeros = 0;
    // Before the first start code; a start code passed, its unit not yet begun (its start and
    // offset in m_next); in a unit; at the end.
    enum class state { leading, begin, unit, done } m_state = state::leading;
    unit m_unit;
    unit m_next;
    // The two bytes behind the start code of the unit that begins.
    unsigned char m_peek[2] = {0, 0};
    uint64 m_leading = 0;
};

// Decoding the header bytes (unit::m_header). H.264 has one byte: forbidden bit, nal_ref_idc (2
// bits), nal_unit_type (5 bits). HEVC has two: forbidden bit, nal_unit_type (6 bits),
// nuh_layer_id (6 bits), nuh_temporal_id_plus1 (3 bits).

/// The H.264 nal_unit_type, 0 to 31.
constexpr unsigned int h264_type(unsigned char const *a_header)
{
    return a_header[0] & 0x1fu;
}
/// The H.264 nal_ref_idc, 0 to 3.
constexpr unsigned int h264_ref_idc(unsigned char const *a_header)
{
    return (a_header[0] >> 5) & 3u;
}
/// The HEVC nal_unit_type, 0 to 63.
constexpr unsigned int hevc_type(unsigned char const *a_header)
{
    return (a_header[0] >> 1) & 0x3fu;
}
/// The HEVC nuh_layer_id, 0 to 63.
constexpr unsigned int hevc_layer_id(unsigned char const *a_header)
{
    return ((a_header[0] & 1u) << 5) | (a_header[1] >> 3);
}
/// The HEVC TemporalId: nuh_temporal_id_plus1 less one; -1 for the forbidden value 0.
constexpr int hevc_temporal_id(unsigned char const *a_header)
{
    return static_cast<int>(a_header[1] & 7u) - 1;
}

/// A short name of an H.264 unit type ("SPS", "IDR slice", "reserved", "unspecified"...); a_type
/// is taken modulo 32.
ORDWEL_API char const *h264_type_name(unsigned int a_type);
/// A short name of an HEVC unit type ("VPS", "IDR_W_RADL", "reserved"...); a_type is taken
/// modulo 64.
ORDWEL_API char const *hevc_type_name(unsigned int a_type);

} // namespace annexb
} // namespace ordwel

#endif
