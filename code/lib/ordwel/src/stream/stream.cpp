// SPDX-License-Identifier: MIT
#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

rd::~rd() = default;
wr::~wr() = default;
rda::~rda() = default;
wra::~wra() = default;
rwa::~rwa() = default;

uint64 rda::tell()
{
    return seek(0, current);
}

uint64 rda::peek(void *a_destination, uint64 a_size)
{
    uint64 const l_count = read(a_destination, a_size);
    seek(-static_cast<sint64>(l_count), current);
    return l_count;
}

uint64 rda::size()
{
    uint64 const l_pos = tell();
    uint64 const l_end = seek(0, end);
    seek(static_cast<sint64>(l_pos), begin);
    return l_end;
}

uint64 wra::tell()
{
    return seek(0, current);
}

uint64 wra::size()
{
    uint64 const l_pos = tell();
    uint64 const l_end = seek(0, end);
    if (l_pos != l_end) {
        seek(static_cast<sint64>(l_pos), begin);
    }
    return l_end;
}

uint64 rwa::tell()
{
    return rda::tell();
}

uint64 rwa::size()
{
    return rda::size();
}

} // namespace stream
} // namespace ordwel
