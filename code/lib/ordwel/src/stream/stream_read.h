// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_STREAM_READ_H
#define ORDWEL_SRC_STREAM_READ_H

#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

// stream::read with a required size, keeping the count read so far in a_total (set to 0 first)
// at every step, so that a caller who catches its es::uflow knows how much has arrived.
uint64 read_tracked(rd &a_stream, void *a_destination, uint64 a_size, uint64 a_required, uint64 &a_total);

} // namespace stream
} // namespace ordwel

#endif
