// SPDX-License-Identifier: MIT
#ifndef ORDWEL_EXPGOLOMB_H
#define ORDWEL_EXPGOLOMB_H

#include <ordwel/bitstream.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {
namespace bitstream {

// Exp-Golomb codes of order 0, as H.264 and HEVC write their ue(v) and se(v) fields: a value v is
// v + 1 in binary, behind as many zero bits as that binary number has bits after its leading 1.
// 0 is "1", 1 is "010", 2 is "011", 3 is "00100". A signed value k stands for the unsigned code
// 2k - 1 when k is positive and -2k otherwise: 1 is "010", -1 is "011", 2 is "00100".
//
// The codes read here have at most 32 leading zeros, which is what an unsigned 32-bit value or the
// whole signed 32-bit range needs. Reading raises:
// - es::uflow (null message) when the data end inside a code: in its zeros, or in the bits behind
//   its 1;
// - es::oflow (null message) when the data hold a 33rd leading zero, or when the value of a code
//   with 32 leading zeros lies beyond the type.
// After an exception the reader stands somewhere inside the code, or at the end of the data; it is
// no use for reading on in the same stream, only for asking where it failed.

namespace detail {

/// A code of at most 15 leading zeros whose bits are all in a_reader, as most codes are: its code
/// number in a_code, read from one look at the next 32 bits. false, with the reader unmoved, for
/// any other code.
inline bool read_short_code(rd const &a_reader, uint32 &a_code)
{
#if defined(__GNUC__)
    uint32 const l_word = a_reader.peek(32);
    if (l_word < 0x10000 || !a_reader.has_bits(32)) {
        return false;
    }
    auto const l_length = static_cast<unsigned>(2 * __builtin_clz(l_word) + 1);
    a_reader.read(l_length);
    a_code = (l_word >> (32 - l_length)) - 1;
    return true;
#else
    static_cast<void>(a_reader);
    static_cast<void>(a_code);
    return false;
#endif
}

/// read_ue and read_se for every code, with the checks.
///@{
[[nodiscard]] ORDWEL_API uint32 read_ue_checked(rd const &a_reader);
[[nodiscard]] ORDWEL_API sint32 read_se_checked(rd const &a_reader);
///@}

} // namespace detail

/// The next ue(v) code of a_reader, as an unsigned 32-bit value (0 to 2^32 - 1).
[[nodiscard]] inline uint32 read_ue(rd const &a_reader)
{
    uint32 l_code = 0;
    return detail::read_short_code(a_reader, l_code) ? l_code : detail::read_ue_checked(a_reader);
}

/// The next se(v) code of a_reader, as a signed 32-bit value (-2^31 to 2^31 - 1).
[[nodiscard]] inline sint32 read_se(rd const &a_reader)
{
    uint32 l_code = 0;
    if (!detail::read_short_code(a_reader, l_code)) {
        return detail::read_se_checked(a_reader);
    }
    // Odd code numbers are the positive values, even ones zero and the negative values.
    auto const l_half = static_cast<sint32>((l_code + 1) / 2);
    return (l_code & 1) != 0 ? l_half : -l_half;
}

/// Appends the ue(v) code of a_value: 1 to 65 bits.
ORDWEL_API void write_ue(wr &a_writer, uint32 a_value);
/// Appends the se(v) code of a_value: 1 to 65 bits.
ORDWEL_API void write_se(wr &a_writer, sint32 a_value);

} // namespace bitstream
} // namespace ordwel

#endif
