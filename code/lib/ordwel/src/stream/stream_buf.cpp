#include <ordwel/stream.h>

#include <cstring>

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
    uint64 const l_size = m_buffer->size();
    uint64 const l_left = m_pos < l_size ? l_size - m_pos : 0;
    uint64 const l_count = a_size < l_left ? a_size : l_left;
    if (l_count != 0) {
        std::memcpy(a_destination, m_buffer->begin() + m_pos, static_cast<std::size_t>(l_count));
    }
    return l_count;
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
    uint64 l_target = 0;
    if (!seek_target(m_pos, m_buffer->size(), a_offset, a_whence, l_target)) {
        es::range::raise(ORDWEL_HERE, nullptr);
    }
    m_pos = l_target;
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
