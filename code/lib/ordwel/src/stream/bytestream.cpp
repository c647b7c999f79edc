// SPDX-License-Identifier: MIT
#include <ordwel/bytestream.h>

#include <cstring>
#include <exception>
#include <limits>
#include <new>

#include "stream/stream_read.h"

namespace ordwel {
namespace bytestream {

namespace {

// Room behind the block: the carried words of a refill and the cleared words behind the data.
constexpr uint64 k_slack = 24;

// The block size for a requested size: a multiple of 8, at least 8.
uint64 block_size(uint64 a_size)
{
    if (a_size > std::numeric_limits<std::size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    return a_size == 0 ? 8 : (a_size + 7) & ~uint64(7);
}

// A cleared, 64-bit aligned block of a_size + k_slack bytes.
std::unique_ptr<uint64[]> new_block(uint64 a_size)
{
    return std::unique_ptr<uint64[]>(new uint64[static_cast<std::size_t>((a_size + k_slack) / 8)]());
}

uint64 floor8(uint64 a_value)
{
    return a_value & ~uint64(7);
}

// a_value modulo an alignment; an alignment of 0 counts as 1.
uint64 modulo(uint64 a_value, uint64 a_align)
{
    return a_align > 1 ? a_value % a_align : 0;
}

} // namespace

// ---- rd ----

rd::rd(stream::rd &a_stream, uint64 a_size) : m_size(0), m_stream(&a_stream), m_bytes(0), m_left(0)
{
    allocate(a_size);
}

rd::~rd() = default;

void rd::allocate(uint64 a_size)
{
    uint64 const l_size = block_size(a_size);
    m_buf = new_block(l_size);
    m_size = l_size;
}

void rd::set(stream::rd &a_stream, uint64 a_size)
{
    allocate(a_size);
    m_stream = &a_stream;
    m_bytes = 0;
    m_left = 0;
}

void rd::clear(stream::rd &a_stream)
{
    m_stream = &a_stream;
    m_bytes = 0;
    m_left = 0;
    std::memset(block(), 0, 16);
}

void rd::refill(uint64 a_want) const
{
    unsigned char *const l_block = block();
    uint64 const l_cursor = m_bytes - m_left;
    uint64 const l_start = floor8(l_cursor);
    // The unread bytes move to the front, keeping their offset modulo 8. Items of up to 8 bytes
    // leave at most 15 of them, which the two words carry; a has_bytes for more carries them all.
    uint64 const l_carried = m_bytes - l_start;
    if (l_carried <= 16) {
        std::memmove(l_block, l_block + l_start, 16);
    } else {
        std::memmove(l_block, l_block + l_start, static_cast<std::size_t>(floor8(l_carried + 7)));
    }
    // A block is read behind them; the data must end before m_size + 16, so that the two words
    // cleared behind it stay in the block.
    uint64 const l_room = m_size + 15 - l_carried;
    uint64 const l_size = l_room < m_size ? l_room : m_size;
    if (l_size == 0) {
        m_bytes = l_carried;
        return;
    }
    // Whatever arrives stays readable, also when the source ends before a_want bytes are in.
    m_bytes = l_carried;
    uint64 l_count = 0;
    try {
        stream::read_tracked(*m_stream, l_block + l_carried, l_size, a_want, l_count);
    } catch (...) {
        settle(l_count);
        throw;
    }
    settle(l_count);
}

void rd::settle(uint64 a_count) const
{
    unsigned char *const l_block = block();
    m_bytes += a_count;
    std::memset(l_block + m_bytes, 0, static_cast<std::size_t>(floor8(m_bytes) + 16 - m_bytes));
    m_left += a_count;
}

bool rd::has_bytes(uint64 a_count) const
{
    if (m_left >= a_count) {
        return true;
    }
    refill(0);
    return m_left >= a_count;
}

uint64 rd::read(unsigned char *a_destination, uint64 a_count, uint64 a_align) const
{
    m_left -= modulo(m_left, a_align);
    uint64 const l_taken = a_count < m_left ? a_count : m_left;
    if (l_taken != 0) {
        std::memcpy(a_destination, block() + (m_bytes - m_left), static_cast<std::size_t>(l_taken));
        m_left -= l_taken;
    }
    if (l_taken == a_count) {
        return a_count;
    }
    uint64 const l_rest = a_count - l_taken;
    return l_taken + stream::read(*m_stream, a_destination + l_taken, l_rest, l_rest);
}

void rd::skip(uint64 a_count) const
{
    if (a_count <= m_left) {
        m_left -= a_count;
        return;
    }
    unsigned char *const l_block = block();
    uint64 l_count = a_count - m_left;
    m_left = 0;
    for (;;) {
        uint64 const l_start = floor8(m_bytes);
        uint64 const l_offset = m_bytes - l_start;
        std::memmove(l_block, l_block + l_start, 16);
        // A source that ends midway leaves everything consumed: the skip went as far as it could.
        m_bytes = l_offset;
        m_left = 0;
        uint64 const l_read = stream::read(*m_stream, l_block + l_offset, m_size, l_count < m_size ? l_count : m_size);
        settle(l_read);
        if (l_count <= l_read) {
            break;
        }
        l_count -= l_read;
    }
    m_left -= l_count;
}

void rd::align(uint64 a_align) const
{
    m_left -= modulo(m_left, a_align);
}

uint64 rd::boundary(uint64 a_align) const
{
    return modulo(m_left, a_align);
}

uint64 rd::tell() const
{
    return m_stream->tell() - m_left;
}

// ---- wr ----

wr::wr(stream::wr &a_stream, uint64 a_size) : m_size(0), m_stream(&a_stream), m_free(0)
{
    allocate(a_size);
}

wr::~wr() noexcept(false)
{
    // A failing sink is reported, except while another exception unwinds the stack, where a
    // second one would end the process.
    bool const l_unwinding = std::uncaught_exceptions() != 0;
    try {
        write_out();
    } catch (...) {
        if (!l_unwinding) {
            throw;
        }
    }
}

void wr::allocate(uint64 a_size)
{
    uint64 const l_size = block_size(a_size);
    m_buf = new_block(l_size);
    m_size = l_size;
    m_free = l_size;
}

void wr::write_out()
{
    uint64 const l_used = m_size - m_free;
    if (l_used != 0) {
        m_stream->write(block(), l_used);
        std::memmove(block(), block() + l_used, 8);
        m_free = m_size;
    }
}

void wr::set(stream::wr &a_stream, uint64 a_size)
{
    write_out();
    allocate(a_size);
    m_stream = &a_stream;
}

void wr::clear(stream::wr &a_stream)
{
    write_out();
    m_stream = &a_stream;
    m_free = m_size;
}

void wr::make_room(uint64 a_count)
{
    unsigned char *const l_block = block();
    uint64 const l_used = m_size - m_free;
    if (l_used > 7) {
        // Whole words go out; the partial word behind them moves to the front, keeping the
        // block's offsets modulo 8.
        uint64 const l_whole = floor8(l_used);
        m_stream->write(l_block, l_whole);
        std::memmove(l_block, l_block + l_whole, 8);
        m_free += l_whole;
    }
    if (m_free < a_count) {
        // Only an 8-byte block gets here, with no whole word in it: its bytes go out as they are.
        m_stream->write(l_block, m_size - m_free);
        m_free = m_size;
    }
}

void wr::write(unsigned char const *a_source, uint64 a_count, uint64 a_align)
{
    unsigned char *const l_block = block();
    uint64 const l_pad = modulo(m_free, a_align);
    std::memset(l_block + (m_size - m_free), 0, static_cast<std::size_t>(l_pad));
    uint64 const l_free = m_free - l_pad;
    uint64 const l_used = m_size - l_free;
    if (a_count <= l_free) {
        if (a_count != 0) {
            std::memcpy(l_block + l_used, a_source, static_cast<std::size_t>(a_count));
        }
        m_free = l_free - a_count;
        return;
    }
    // The block goes out first, whole (with any alignment up to 8 it ends on the boundary), then
    // the bytes straight from the source.
    m_free = l_free;
    if (l_used != 0) {
        m_stream->write(l_block, l_used);
        std::memmove(l_block, l_block + l_used, 8);
        m_free = m_size;
    }
    m_stream->write(a_source, a_count);
}

void wr::skip(uint64 a_count)
{
    unsigned char *const l_block = block();
    std::memset(l_block + (m_size - m_free), 0, static_cast<std::size_t>(m_free));
    if (a_count < m_free) {
        m_free -= a_count;
        return;
    }
    m_stream->write(l_block, m_size);
    uint64 l_count = a_count - m_free;
    m_free = m_size;
    std::memset(l_block, 0, static_cast<std::size_t>(m_size));
    while (l_count >= m_size) {
        m_stream->write(l_block, m_size);
        l_count -= m_size;
    }
    m_free = m_size - l_count;
}

void wr::align(uint64 a_align)
{
    uint64 const l_pad = modulo(m_free, a_align);
    std::memset(block() + (m_size - m_free), 0, static_cast<std::size_t>(l_pad));
    m_free -= l_pad;
}

uint64 wr::boundary(uint64 a_align) const
{
    return modulo(m_free, a_align);
}

uint64 wr::tell() const
{
    return m_stream->tell() + (m_size - m_free);
}

} // namespace bytestream
} // namespace ordwel
