// SPDX-License-Identifier: MIT
#include <ordwel/stream.h>

#include <cstring>

#include <ordwel/es.h>

#include "stream/stream_seek.h"

namespace ordwel {
namespace stream {

mem::mem(void *a_data, uint64 a_size) : m_size(a_size), m_data(static_cast<unsigned char *>(a_data)), m_pos(0)
{
}

mem::~mem() = default;

void mem::set(void *a_data, uint64 a_size)
{
    m_size = a_size;
    m_data = static_cast<unsigned char *>(a_data);
    m_pos = 0;
}

uint64 mem::peek(void *a_destination, uint64 a_size)
{
    return copy_from(a_destination, a_size, m_data, m_size, m_pos);
}

uint64 mem::read(void *a_destination, uint64 a_size)
{
    uint64 const l_count = mem::peek(a_destination, a_size);
    m_pos += l_count;
    return l_count;
}

uint64 mem::tell()
{
    return m_pos;
}

uint64 mem::seek(sint64 a_offset, whence a_whence)
{
    m_pos = seek_checked(m_pos, m_size, a_offset, a_whence, ORDWEL_HERE);
    return m_pos;
}

void mem::write(void const *a_source, uint64 a_size)
{
    if (a_size > m_size - m_pos) {
        es::range::raise(ORDWEL_HERE, nullptr);
    }
    if (a_size != 0) {
        std::memmove(m_data + m_pos, a_source, static_cast<std::size_t>(a_size));
    }
    m_pos += a_size;
}

void mem::flush()
{
}

} // namespace stream
} // namespace ordwel
