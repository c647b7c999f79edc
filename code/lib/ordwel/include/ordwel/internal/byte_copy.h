// SPDX-License-Identifier: MIT
#ifndef ORDWEL_INTERNAL_BYTE_COPY_H
#define ORDWEL_INTERNAL_BYTE_COPY_H

#include <cstddef>
#include <cstring>

#include <ordwel/types.h>

// Copies of short byte ranges as a few loads and stores of a fixed width, without a call: ranges
// of varied lengths then meet a few branches on the length instead of the C library's size
// classes, and code that holds an object's fields in registers keeps them there. Every copy here
// loads all its bytes before it stores any, so the two ranges may overlap, as for memmove. For
// the library's own headers and sources; no part of the public interface.

namespace ordwel {
namespace internal {

// The first and the last a_width bytes of a_count, a_width <= a_count <= 2 a_width: together they
// cover the whole range.
template <unsigned a_width>
inline void move_ends(unsigned char *a_target, unsigned char const *a_source, std::size_t a_count)
{
    unsigned char l_head[a_width];
    unsigned char l_tail[a_width];
    std::memcpy(l_head, a_source, a_width);
    std::memcpy(l_tail, a_source + a_count - a_width, a_width);
    std::memcpy(a_target, l_head, a_width);
    std::memcpy(a_target + a_count - a_width, l_tail, a_width);
}

// 64 < a_count <= 256 bytes as four blocks of 64 at 0, 64, 128 and 192, each moved back so as to
// end at a_count at the latest: they overlap when a_count is below 256. A fixed set of moves for
// the whole range, so that the lengths within it take the same path.
inline void move_quarters(unsigned char *a_target, unsigned char const *a_source, std::size_t a_count)
{
    std::size_t const l_last = a_count - 64;
    std::size_t const l_second = l_last < 64 ? l_last : 64;
    std::size_t const l_third = l_last < 128 ? l_last : 128;
    unsigned char l_blocks[4][64];
    std::memcpy(l_blocks[0], a_source, 64);
    std::memcpy(l_blocks[1], a_source + l_second, 64);
    std::memcpy(l_blocks[2], a_source + l_third, 64);
    std::memcpy(l_blocks[3], a_source + l_last, 64);
    std::memcpy(a_target, l_blocks[0], 64);
    std::memcpy(a_target + l_second, l_blocks[1], 64);
    std::memcpy(a_target + l_third, l_blocks[2], 64);
    std::memcpy(a_target + l_last, l_blocks[3], 64);
}

// Up to 64 bytes: one pair of moves of the widest width that fits, or for 1 to 3 bytes the
// first, middle and last byte.
inline void move_short(unsigned char *a_target, unsigned char const *a_source, std::size_t a_count)
{
    if (a_count > 32) {
        move_ends<32>(a_target, a_source, a_count);
    } else if (a_count >= 16) {
        move_ends<16>(a_target, a_source, a_count);
    } else if (a_count >= 8) {
        move_ends<8>(a_target, a_source, a_count);
    } else if (a_count >= 4) {
        move_ends<4>(a_target, a_source, a_count);
    } else if (a_count != 0) {
        unsigned char const l_first = a_source[0];
        unsigned char const l_middle = a_source[a_count / 2];
        unsigned char const l_last = a_source[a_count - 1];
        a_target[0] = l_first;
        a_target[a_count / 2] = l_middle;
        a_target[a_count - 1] = l_last;
    }
}

// As memmove: up to 64 bytes inline, more through the C library.
inline void move_bytes(unsigned char *a_target, unsigned char const *a_source, std::size_t a_count)
{
    if (a_count <= 64) {
        move_short(a_target, a_source, a_count);
    } else {
        std::memmove(a_target, a_source, a_count);
    }
}

} // namespace internal
} // namespace ordwel

#endif
