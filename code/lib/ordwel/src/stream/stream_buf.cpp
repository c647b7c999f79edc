// SPDX-License-Identifier: MIT
#include <ordwel/stream.h>

#include <ordwel/es.h>

#include "stream/stream_seek.h"

namespace ordwel {
namespace stream {

buf::buf(buffer &a_buffer) : m_buffer(&a_buffer), m_pos(0)
{
}

buf::~buf() = default;

void buf::set(buffer &a_buffer)
{
    m_buffer = &a_buffer;
    m_pos = 0;
}

void buf::resize(uint64 a_size)
{
    m_buffer->resize(a_size);
}

uint64 buf::peek(void *a_destination, uint64 a_size)
{
    // After a resize below the position nothing is left to read (and nothing wraps).
    return copy_from(a_destination, a_size, m_buffer->begin(), m_buffer->size(), m_pos);
}

uint64 buf::read(void *a_destination, uint64 a_size)
{
    uint64 const l_count = buf::peek(a_destination, a_size);
    m_pos += l_count;
    return l_count;
}

uint64 buf::tell()
{
    return m_pos;
}

uint64 buf::seek(sint64 a_offset, whence a_whence)
{
    m_pos = seek_checked(m_pos, m_buffer->size(), a_offset, a_whence, ORDWEL_HERE);
    return m_pos;
}

void buf::write(void const *a_source, uint64 a_size)
{
    if (a_size == 0) {
        return;
    }
    uint64 const l_old_size = m_buffer->size();
    uint64 const l_end = m_pos + a_size;
    if (l_end > l_old_size) {
        m_buffer->resize(l_end);
        // A position left beyond the size by a shrinking resize: the gap reads as zeros, not as
        // whatever the storage held.
        if (m_pos > l_old_size) {
            std::memset(m_buffer->begin() + l_old_size, 0, static_cast<std::size_t>(m_pos - l_old_size));
        }
    }
    std::memmove(m_buffer->begin() + m_pos, a_source, static_cast<std::size_t>(a_size));
    m_pos = l_end;
}

void buf::flush()
{
}

} // namespace stream
} // namespace ordwel
