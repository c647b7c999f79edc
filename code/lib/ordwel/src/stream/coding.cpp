// SPDX-License-Identifier: MIT
#include <ordwel/coding.h>

#include <algorithm>
#include <functional>
#include <limits>

#include <ordwel/es.h>

namespace ordwel {

namespace {

// Grows a_buffer by a_size bytes and copies a_source into them, unless it is null. A source inside
// the buffer's own block is found again after the growth has moved the block.
unsigned char *grow_by(buffer &a_buffer, uint64 a_size, void const *a_source)
{
    auto const *l_source = static_cast<unsigned char const *>(a_source);
    uint64 const l_old_size = a_buffer.size();
    std::less_equal<unsigned char const *> const l_at_or_before;
    bool const l_inside = l_source != nullptr && l_at_or_before(a_buffer.begin(), l_source) &&
                          std::less<unsigned char const *>()(l_source, a_buffer.begin() + a_buffer.capacity());
    uint64 const l_source_offset = l_inside ? static_cast<uint64>(l_source - a_buffer.begin()) : 0;
    a_buffer.resize(l_old_size + a_size);
    unsigned char *const l_target = a_buffer.begin() + l_old_size;
    if (l_source != nullptr && a_size != 0) {
        if (l_inside) {
            l_source = a_buffer.begin() + l_source_offset;
        }
        std::memmove(l_target, l_source, static_cast<std::size_t>(a_size));
    }
    return l_target;
}

uint64 saturated_sum(uint64 a_left, uint64 a_right)
{
    return a_right > std::numeric_limits<uint64>::max() - a_left ? std::numeric_limits<uint64>::max()
                                                                 : a_left + a_right;
}

// Drops the first a_count bytes of a_buffer.
void drop_front(buffer &a_buffer, uint64 a_count)
{
    uint64 const l_count = std::min(a_count, a_buffer.size());
    uint64 const l_rest = a_buffer.size() - l_count;
    if (l_rest != 0) {
        std::memmove(a_buffer.begin(), a_buffer.begin() + l_count, static_cast<std::size_t>(l_rest));
    }
    a_buffer.resize(l_rest);
}

} // namespace

encoder_network::encoder_network(buffer &a_buffer) : m_buffer(&a_buffer)
{
    set(a_buffer);
}

encoder_network::~encoder_network() = default;

void encoder_network::set(buffer &a_buffer)
{
    m_buffer = &a_buffer;
    m_buffer->clear();
    m_buffer->set_aggressive(true);
}

void encoder_network::reserve(uint64 a_size)
{
    m_buffer->reserve(saturated_sum(m_buffer->size(), a_size));
}

void encoder_network::write_growing(void const *a_source, uint64 a_size)
{
    grow_by(*m_buffer, a_size, a_source);
}

unsigned char *encoder_network::advance(uint64 a_size)
{
    return grow_by(*m_buffer, a_size, nullptr);
}

void encoder_network::cut(uint64 a_new_size) const
{
    if (a_new_size > m_buffer->size()) {
        es::arg::raise(ORDWEL_HERE, "cutting buffer past end");
    }
    m_buffer->resize(a_new_size);
}

void encoder_network::normalize(uint64 a_count)
{
    if (a_count != 0) {
        drop_front(*m_buffer, a_count);
    }
}

unsigned char *decoder_network::fill(uint64 a_size, void const *a_source)
{
    return grow_by(*m_buffer, a_size, a_source);
}

void decoder_network::reserve(uint64 a_size)
{
    m_buffer->reserve(saturated_sum(a_size, m_offset));
}

void decoder_network::normalize()
{
    if (m_offset != 0) {
        drop_front(*m_buffer, m_offset);
        m_offset = 0;
    }
}

void decoder_network::raise_offset_out_of_range()
{
    es::arg::raise(ORDWEL_HERE, "buffer offset out of range");
}

void decoder_network::raise_skip_past_end()
{
    es::arg::raise(ORDWEL_HERE, "skipping buffer past end");
}

} // namespace ordwel
