// SPDX-License-Identifier: MIT
#include <ordwel/stream.h>

#include <ordwel/es.h>

#include "stream/stream_read.h"

namespace ordwel {
namespace stream {

namespace {

constexpr uint64 k_multird_capacity = 8;

// A list of a_capacity readers and the null behind them, all null.
std::unique_ptr<rd *[]> new_list(uint64 a_capacity) {
    return std::unique_ptr<rd *[]>(new rd *[static_cast<std::size_t>(a_capacity + 1)]());
}

// A count that a reader gives, never above what was asked, so that a reader that claims more
// cannot make the remaining size wrap around.
uint64 bounded(uint64 a_count, uint64 a_asked)
{
    return a_count < a_asked ? a_count : a_asked;
}

} // namespace

multird::multird()
    : m_capacity(k_multird_capacity), m_list(new_list(k_multird_capacity)), m_count(0), m_current(0), m_position(0)
{
}

multird::~multird() = default;

void multird::add(rd &a_reader)
{
    if (m_count == m_capacity) {
        // Readers already finished are dropped; the ones still to read move to the front.
        uint64 const l_capacity = m_capacity * 2;
        std::unique_ptr<rd *[]> l_list = new_list(l_capacity);
        uint64 l_moved = 0;
        for (uint64 l_index = m_current; l_index < m_count; ++l_index) {
            l_list[l_moved++] = m_list[l_index];
        }
        m_list = std::move(l_list);
        m_capacity = l_capacity;
        m_count = l_moved;
        m_current = 0;
    }
    m_list[m_count] = &a_reader;
    ++m_count;
    m_list[m_count] = nullptr;
}

void multird::clear()
{
    m_count = 0;
    m_current = 0;
    m_position = 0;
    m_list[0] = nullptr;
}

uint64 multird::read(void *a_destination, uint64 a_size)
{
    unsigned char *l_destination = static_cast<unsigned char *>(a_destination);
    uint64 l_left = a_size;
    while (l_left != 0 && m_list[m_current] != nullptr) {
        uint64 const l_count = bounded(m_list[m_current]->read(l_destination, l_left), l_left);
        if (l_count != 0) {
            l_destination += l_count;
            l_left -= l_count;
        } else {
            ++m_current;
        }
    }
    uint64 const l_total = a_size - l_left;
    m_position += l_total;
    return l_total;
}

uint64 multird::tell()
{
    return m_position;
}

void read(rd &a_stream, buffer &a_buffer, uint64 a_size)
{
    a_buffer.resize(a_size);
    uint64 const l_count = bounded(a_stream.read(a_buffer.begin(), a_size), a_size);
    a_buffer.resize(l_count);
}

uint64 read_tracked(rd &a_stream, void *a_destination, uint64 a_size, uint64 a_required, uint64 &a_total)
{
    unsigned char *l_destination = static_cast<unsigned char *>(a_destination);
    uint64 l_size = a_size;
    a_total = 0;
    for (;;) {
        uint64 const l_count = bounded(a_stream.read(l_destination, l_size), l_size);
        if (l_count == 0) {
            es::uflow::raise(ORDWEL_HERE, nullptr);
        }
        a_total += l_count;
        if (a_total >= a_required) {
            return a_total;
        }
        l_destination += l_count;
        l_size -= l_count;
    }
}

uint64 read(rd &a_stream, void *a_destination, uint64 a_size, uint64 a_required)
{
    uint64 l_total = 0;
    return read_tracked(a_stream, a_destination, a_size, a_required, l_total);
}

void write(wr &a_stream, buffer const &a_buffer, uint64 a_size)
{
    if (a_size > a_buffer.size()) {
        es::range::raise(ORDWEL_HERE, nullptr);
    }
    a_stream.write(a_buffer.begin(), a_size);
}

} // namespace stream
} // namespace ordwel
