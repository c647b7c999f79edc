#ifndef ORDWEL_SRC_STREAM_SEEK_H
#define ORDWEL_SRC_STREAM_SEEK_H

#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

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

} // namespace stream
} // namespace ordwel

#endif
