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

/// The next ue(v) code of a_reader, as an unsigned 32-bit value (0 to 2^32 - 1).
[[nodiscard]] ORDWEL_API uint32 read_ue(rd const &a_reader);
/// The next se(v) code of a_reader, as a signed 32-bit value (-2^31 to 2^31 - 1).
[[nodiscard]] ORDWEL_API sint32 read_se(rd const &a_reader);

/// Appends the ue(v) code of a_value: 1 to 65 bits.
ORDWEL_API void write_ue(wr &a_writer, uint32 a_value);
/// Appends the se(v) code of a_value: 1 to 65 bits.
ORDWEL_API void write_se(wr &a_writer, sint32 a_value);

} // namespace bitstream
} // namespace ordwel

#endif
