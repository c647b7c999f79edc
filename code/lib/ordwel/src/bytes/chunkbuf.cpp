// SPDX-License-Identifier: MIT
#include <ordwel/chunkbuf.h>

namespace ordwel {

chunkbuf::chunkbuf() : object_refcount(), buffer()
{
}

chunkbuf::chunkbuf(uint64 a_count) : object_refcount(), buffer(a_count)
{
}

chunkbuf::chunkbuf(uint64 a_count, unsigned char a_fill) : object_refcount(), buffer(a_count, a_fill)
{
}

chunkbuf::chunkbuf(unsigned char const *a_first, unsigned char const *a_last)
    : object_refcount(), buffer(a_first, a_last)
{
}

chunkbuf::chunkbuf(buffer const &a_other) : object_refcount(), buffer(a_other)
{
}

chunkbuf::chunkbuf(chunkbuf const &a_other) : object_refcount(), buffer(a_other)
{
}

chunkbuf::~chunkbuf() = default;

chunkbuf &chunkbuf::operator=(chunkbuf const &a_other)
{
    buffer::assign(a_other);
    return *this;
}

framebuf::framebuf() : chunkbuf()
{
}

framebuf::framebuf(uint64 a_count) : chunkbuf(a_count)
{
}

framebuf::framebuf(uint64 a_count, unsigned char a_fill) : chunkbuf(a_count, a_fill)
{
}

framebuf::framebuf(unsigned char const *a_first, unsigned char const *a_last) : chunkbuf(a_first, a_last)
{
}

framebuf::framebuf(buffer const &a_other) : chunkbuf(a_other)
{
}

framebuf::framebuf(framebuf const &a_other) : chunkbuf(static_cast<buffer const &>(a_other))
{
}

framebuf::~framebuf() = default;

framebuf &framebuf::operator=(framebuf const &a_other)
{
    buffer::assign(a_other);
    return *this;
}

} // namespace ordwel
