#ifndef ORDWEL_SRC_STREAM_MEMORY_H
#define ORDWEL_SRC_STREAM_MEMORY_H

#include <typeinfo>

#include <ordwel/buffer.h>
#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

// The unread bytes of a library memory stream, for code that scans them where they lie instead
// of reading them through a copy.
struct memory_span {
    unsigned char const *m_data; // the first unread byte
    uint64 m_size;               // the unread bytes
    uint64 m_position;           // the stream's position
};

// Reaches into stream::mem and stream::buf. Only objects of exactly these classes qualify: a class
// derived from them may read differently, and is read through its read.
class memory_access {
public:
    // The unread bytes of a_stream when it is a mem or a buf; false for any other stream.
    static bool span_of(rd &a_stream, memory_span &a_out)
    {
        if (typeid(a_stream) == typeid(mem)) {
            mem const &l_mem = static_cast<mem const &>(a_stream);
            a_out = {l_mem.m_data + l_mem.m_pos, l_mem.m_size - l_mem.m_pos, l_mem.m_pos};
            return true;
        }
        if (typeid(a_stream) == typeid(buf)) {
            buf const &l_buf = static_cast<buf const &>(a_stream);
            uint64 const l_size = l_buf.m_buffer->size();
            // A buffer cut below the position has nothing left to read.
            uint64 const l_pos = l_buf.m_pos < l_size ? l_buf.m_pos : l_size;
            a_out = {l_buf.m_buffer->begin() + l_pos, l_size - l_pos, l_buf.m_pos};
            return true;
        }
        return false;
    }

    // Moves a stream that span_of accepted on by a_count of its unread bytes.
    static void consume(rd &a_stream, uint64 a_count)
    {
        if (typeid(a_stream) == typeid(mem)) {
            static_cast<mem &>(a_stream).m_pos += a_count;
        } else {
            static_cast<buf &>(a_stream).m_pos += a_count;
        }
    }
};

} // namespace stream
} // namespace ordwel

#endif
