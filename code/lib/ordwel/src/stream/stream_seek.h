// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_STREAM_SEEK_H
#define ORDWEL_SRC_STREAM_SEEK_H

#include <cstring>

#include <ordwel/es.h>
#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

// The position arithmetic that the memory streams share.

// The target of a seek over a stream of a_size bytes at a_pos: the origin chosen by a_whence
// (every value but begin and current means the end) plus the offset, with wrapping arithmetic.
// A target that, taken as signed, is negative or above a_size is out of bounds: false.
inline bool seek_target(uint64 a_pos, uint64 a_size, sint64 a_offset, whence a_whence, uint64 &a_target)
{
    uint64 const l_origin = a_whence == begin ? 0 : a_whence == current ? a_pos : a_size;
    uint64 const l_target = l_origin + static_cast<uint64>(a_offset);
    if (static_cast<sint64>(l_target) < 0 || l_target > a_size) {
        return false;
    }
    a_target = l_target;
    return true;
}

// The new position of a seek as seek_target finds it; es::range (with no message), raised at the
// caller's a_file and a_line, when it is out of bounds.
inline uint64 seek_checked(uint64 a_pos, uint64 a_size, sint64 a_offset, whence a_whence, char const *a_file,
                           uint32 a_line)
{
    uint64 l_target = 0;
    if (!seek_target(a_pos, a_size, a_offset, a_whence, l_target)) {
        es::range::raise(a_file, a_line, nullptr);
    }
    return l_target;
}

// Copies up to a_count of the a_size bytes at a_data, from a_pos on, to a_destination, and gives
// how many it copied: none from a position at or past the end.
inline uint64 copy_from(void *a_destination, uint64 a_count, unsigned char const *a_data, uint64 a_size, uint64 a_pos)
{
    uint64 const l_left = a_pos < a_size ? a_size - a_pos : 0;
    uint64 const l_count = a_count < l_left ? a_count : l_left;
    if (l_count != 0) {
        std::memcpy(a_destination, a_data + a_pos, static_cast<std::size_t>(l_count));
    }
    return l_count;
}

} // namespace stream
} // namespace ordwel

#endif
