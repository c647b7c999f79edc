// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_STREAM_MEMORY_H
#define ORDWEL_SRC_STREAM_MEMORY_H

#include <typeinfo>

#include <ordwel/buffer.h>
#include <ordwel/stream.h>

namespace ordwel {
namespace stream {

// The memory under a library memory stream, for code that scans it where it lies instead of
// reading it through a copy.
struct memory_span {
    unsigned char const *m_data; // the memory from its start
    uint64 m_size;
    uint64 m_position; // the stream's position, beyond m_size where a buffer was cut below it
};

// The class of a memory stream: none for any other stream.
enum class memory_kind : unsigned char { none, mem, buf };

// Reaches into stream::mem and stream::buf. Only objects of exactly these classes qualify: a class
// derived from them may read differently, and is read through its read.
class memory_access {
public:
    // The memory of a_stream when it is a mem or a buf; false for any other stream.
    static bool span_of(rd &a_stream, memory_span &a_out)
    {
        if (typeid(a_stream) == typeid(mem)) {
            mem const &l_mem = static_cast<mem const &>(a_stream);
            a_out = {l_mem.m_data, l_mem.m_size, l_mem.m_pos};
            return true;
        }
        if (typeid(a_stream) == typeid(buf)) {
            buf const &l_buf = static_cast<buf const &>(a_stream);
            a_out = {l_buf.m_buffer->begin(), l_buf.m_buffer->size(), l_buf.m_pos};
            return true;
        }
        return false;
    }

    // Sets the position of a stream that span_of accepted, within its memory.
    static void set_position(rd &a_stream, uint64 a_position)
    {
        set_position_as(a_stream, typeid(a_stream) == typeid(mem) ? memory_kind::mem : memory_kind::buf, a_position);
    }

    // The class of a_stream. An object keeps its class for its lifetime: code that holds on to a
    // stream can ask once and use the two below, which skip the check of the class.
    static memory_kind kind_of(rd &a_stream)
    {
        return typeid(a_stream) == typeid(mem)   ? memory_kind::mem
               : typeid(a_stream) == typeid(buf) ? memory_kind::buf
                                                 : memory_kind::none;
    }

    // span_of for a stream of the kind a_kind (mem or buf).
    static memory_span span_as(rd &a_stream, memory_kind a_kind)
    {
        if (a_kind == memory_kind::mem) {
            mem const &l_mem = static_cast<mem const &>(a_stream);
            return {l_mem.m_data, l_mem.m_size, l_mem.m_pos};
        }
        buf const &l_buf = static_cast<buf const &>(a_stream);
        return {l_buf.m_buffer->begin(), l_buf.m_buffer->size(), l_buf.m_pos};
    }

    // set_position for a stream of the kind a_kind (mem or buf).
    static void set_position_as(rd &a_stream, memory_kind a_kind, uint64 a_position)
    {
        if (a_kind == memory_kind::mem) {
            static_cast<mem &>(a_stream).m_pos = a_position;
        } else {
            static_cast<buf &>(a_stream).m_pos = a_position;
        }
    }
};

} // namespace stream
} // namespace ordwel

#endif
