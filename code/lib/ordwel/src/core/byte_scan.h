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

// The starts of the same runs below a_reach, in order, into a_out, at most a_room of them: gives
// their count (the slots of a_out behind them may be written too). One call finds the runs that
// lie close together, such as the start codes of the next few units, without stopping at each.
using triple_collect = std::size_t (*)(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                                       unsigned char a_second, unsigned char a_third, uint64 *a_out, std::size_t a_room,
                                       std::size_t a_reach);
extern dispatch<triple_collect> const k_triple_collect;

// A set of bytes as two tables indexed by a byte's low nibble: bit h of m_low[l] stands for the
// byte 0xhl (h 0 to 7), bit h - 8 of m_high[l] for 0xhl with h 8 to 15. Any number of bytes.
struct byte_set {
    unsigned char m_low[16];
    unsigned char m_high[16];
};

// The set of the a_count bytes at a_bytes (repeats allowed). A constant expression, so that a set
// of fixed bytes is ready before any code runs.
template <typename t_byte> constexpr byte_set byte_set_of(t_byte const *a_bytes, std::size_t a_count)
{
    byte_set l_set{};
    for (std::size_t l_index = 0; l_index < a_count; ++l_index) {
        auto const l_byte = static_cast<unsigned char>(a_bytes[l_index]);
        unsigned char *const l_rows = l_byte < 0x80 ? l_set.m_low : l_set.m_high;
        l_rows[l_byte & 15] = static_cast<unsigned char>(l_rows[l_byte & 15] | (1U << ((l_byte >> 4) & 7)));
    }
    return l_set;
}

// Whether a_byte is in a_set.
inline bool byte_set_has(byte_set const &a_set, unsigned char a_byte)
{
    unsigned char const l_row = a_byte < 0x80 ? a_set.m_low[a_byte & 15] : a_set.m_high[a_byte & 15];
    return ((l_row >> ((a_byte >> 4) & 7)) & 1) != 0;
}

// The index of the lowest, of the highest set bit of a position bitmap, which isn't 0.
inline unsigned lowest_bit(uint64 a_bits)
{
#if defined(__GNUC__)
    return static_cast<unsigned>(__builtin_ctzll(a_bits));
#else
    unsigned l_index = 0;
    for (; (a_bits & 1) == 0; a_bits >>= 1) {
        ++l_index;
    }
    return l_index;
#endif
}

inline unsigned highest_bit(uint64 a_bits)
{
#if defined(__GNUC__)
    return 63 - static_cast<unsigned>(__builtin_clzll(a_bits));
#else
    unsigned l_index = 63;
    for (; (a_bits >> 63) == 0; a_bits <<= 1) {
        --l_index;
    }
    return l_index;
#endif
}

// The offset of the first byte of a_data[0, a_size) that is in a_set; a_size when there is none.
using set_find = std::size_t (*)(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set);
extern dispatch<set_find> const k_set_find;

// The positions of eight bytes at once, each for itself, in 64-byte blocks: bit i of
// a_out[8 b + j] is set where a_data[64 b + i] is a_bytes[j]. a_out has room for eight words for
// each block begun by the a_size bytes; no byte beyond them is read.
using byte_positions = void (*)(unsigned char const *a_data, std::size_t a_size, unsigned char const *a_bytes,
                                uint64 *a_out);
constexpr std::size_t k_byte_positions_count = 8;
extern dispatch<byte_positions> const k_byte_positions;

} // namespace internal
} // namespace ordwel

#endif
