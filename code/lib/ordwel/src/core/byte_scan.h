// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_CORE_BYTE_SCAN_H
#define ORDWEL_SRC_CORE_BYTE_SCAN_H

#include <cstddef>

#include <ordwel/types.h>

#include "core/cpu_dispatch.h"

// Searches over bytes in memory that the vector units speed up: a run of three given bytes (start
// codes 00 00 01 among them), and the first byte of a set. Each comes as a dispatch object whose
// kernels give the same result at every level; get() picks the widest, for_level(level) a given one.

namespace ordwel {
namespace internal {

// The first i with a_data[i], a_data[i + 1], a_data[i + 2] equal to a_first, a_second, a_third
// and i + 3 at most a_size; a_size when there is none. Reads no byte at or beyond a_size.
using triple_find = std::size_t (*)(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                                    unsigned char a_second, unsigned char a_third);
extern dispatch<triple_find> const k_triple_find;

// A set of bytes as two tables indexed by a byte's low nibble: bit h of m_low[l] stands for the
// byte 0xhl (h 0 to 7), bit h - 8 of m_high[l] for 0xhl with h 8 to 15. Any number of bytes.
struct byte_set {
    unsigned char m_low[16];
    unsigned char m_high[16];
};

// The set of the a_count bytes at a_bytes (repeats allowed).
byte_set byte_set_of(unsigned char const *a_bytes, std::size_t a_count);

// Whether a_byte is in a_set.
inline bool byte_set_has(byte_set const &a_set, unsigned char a_byte)
{
    unsigned char const l_row = a_byte < 0x80 ? a_set.m_low[a_byte & 15] : a_set.m_high[a_byte & 15];
    return ((l_row >> ((a_byte >> 4) & 7)) & 1) != 0;
}

// The offset of the first byte of a_data[0, a_size) that is in a_set; a_size when there is none.
using set_find = std::size_t (*)(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set);
extern dispatch<set_find> const k_set_find;

// Bit i set where a_block[i], of the 64 bytes at a_block, is in a_set.
using set_positions = uint64 (*)(unsigned char const *a_block, byte_set const &a_set);
extern dispatch<set_positions> const k_set_positions;

} // namespace internal
} // namespace ordwel

#endif
