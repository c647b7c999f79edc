// SPDX-License-Identifier: MIT
#include <ordwel/buffer.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace ordwel {

namespace {

constexpr uint64 k_default_capacity = 1024;
constexpr uint64 k_max = std::numeric_limits<uint64>::max();

// Twice a count, saturated: a capacity that cannot double is left for the allocator to refuse.
uint64 doubled(uint64 a_count)
{
    return a_count > k_max / 2 ? a_count : a_count * 2;
}

unsigned char *allocate(uint64 a_capacity)
{
    if (a_capacity > static_cast<uint64>(std::numeric_limits<std::size_t>::max())) {
        throw std::bad_alloc();
    }
    // A zero-byte block is still a valid, distinct pointer.
    return new unsigned char[static_cast<std::size_t>(a_capacity)];
}

void copy_bytes(unsigned char *a_target, unsigned char const *a_source, uint64 a_count)
{
    if (a_count != 0) {
        std::memmove(a_target, a_source, static_cast<std::size_t>(a_count));
    }
}

} // namespace

uint64 buffer::grown_capacity(uint64 a_capacity, uint64 a_wanted)
{
    if (a_capacity == 0) {
        return doubled(a_wanted);
    }
    if (a_capacity < a_wanted && a_wanted > k_exact_growth_threshold) {
        return a_wanted;
    }
    uint64 l_capacity = a_capacity;
    while (l_capacity <= a_wanted) {
        if (l_capacity > k_max / 2) {
            return a_wanted;
        }
        l_capacity *= 2;
    }
    return l_capacity;
}

buffer::buffer() : m_capacity(k_default_capacity), m_size(0), m_data(allocate(k_default_capacity)), m_aggressive(false)
{
}

buffer::buffer(uint64 a_count)
    : m_capacity(doubled(a_count)), m_size(0), m_data(allocate(m_capacity)), m_aggressive(false)
{
}

buffer::buffer(uint64 a_count, unsigned char a_fill)
    : m_capacity(doubled(a_count)), m_size(a_count), m_data(allocate(m_capacity)), m_aggressive(false)
{
    if (a_count != 0) {
        std::memset(m_data, a_fill, static_cast<std::size_t>(a_count));
    }
}

buffer::buffer(uint64 a_count, unsigned char const *a_bytes)
    : m_capacity(doubled(a_count)), m_size(a_count), m_data(allocate(m_capacity)), m_aggressive(false)
{
    copy_bytes(m_data, a_bytes, a_count);
}

buffer::buffer(unsigned char const *a_first, unsigned char const *a_last)
    : buffer(static_cast<uint64>(a_last - a_first), a_first)
{
}

buffer::buffer(buffer const &a_other) : buffer(a_other.m_size, a_other.m_data)
{
}

buffer::~buffer()
{
    delete[] m_data;
}

buffer &buffer::operator=(buffer const &a_other)
{
    assign(a_other.begin(), a_other.end());
    return *this;
}

void buffer::assign(buffer const &a_other)
{
    assign(a_other.begin(), a_other.end());
}

void buffer::assign(unsigned char const *a_first, unsigned char const *a_last)
{
    auto const l_count = static_cast<uint64>(a_last - a_first);
    if (l_count > m_capacity) {
        // The old content is not kept; the old block goes only after the copy, so a source inside
        // this buffer stays readable.
        uint64 const l_capacity = grown_capacity(m_capacity, l_count);
        unsigned char *const l_data = allocate(l_capacity);
        copy_bytes(l_data, a_first, l_count);
        delete[] m_data;
        m_data = l_data;
        m_capacity = l_capacity;
    } else {
        copy_bytes(m_data, a_first, l_count);
    }
    m_size = l_count;
}

void buffer::append(buffer const &a_other)
{
    append(a_other.m_data, a_other.m_size);
}

void buffer::append(unsigned char const *a_first, unsigned char const *a_last)
{
    append(a_first, static_cast<uint64>(a_last - a_first));
}

void buffer::append_growing(unsigned char const *a_bytes, uint64 a_count)
{
    // Copy the source before the old block is freed, so that a part of this buffer may be
    // appended to itself even when that grows the storage.
    uint64 const l_size = m_size + a_count;
    uint64 const l_capacity = grown_capacity(m_capacity, l_size);
    unsigned char *const l_data = allocate(l_capacity);
    copy_bytes(l_data, m_data, m_size);
    copy_bytes(l_data + m_size, a_bytes, a_count);
    delete[] m_data;
    m_data = l_data;
    m_capacity = l_capacity;
    m_size = l_size;
}

void buffer::append(uint64 a_count, unsigned char a_value)
{
    resize(m_size + a_count, a_value);
}

buffer &buffer::operator+=(buffer const &a_other)
{
    append(a_other);
    return *this;
}

void buffer::grow(uint64 a_wanted)
{
    uint64 const l_capacity = grown_capacity(m_capacity, a_wanted);
    unsigned char *const l_data = allocate(l_capacity);
    copy_bytes(l_data, m_data, m_size);
    delete[] m_data;
    m_data = l_data;
    m_capacity = l_capacity;
}

void buffer::resize_growing(uint64 a_size)
{
    // capacity × 3 / 2 without overflow: C + C / 2 is the same with integer division.
    grow(m_aggressive ? std::max(a_size, m_capacity + m_capacity / 2) : a_size);
    m_size = a_size;
}

void buffer::resize(uint64 a_size, unsigned char a_fill)
{
    if (a_size > m_size) {
        if (a_size > m_capacity) {
            grow(a_size);
        }
        std::memset(m_data + m_size, a_fill, static_cast<std::size_t>(a_size - m_size));
    }
    m_size = a_size;
}

void buffer::reserve(uint64 a_capacity)
{
    if (a_capacity > m_capacity) {
        grow(a_capacity);
    }
}

void buffer::adjust(uint64 a_capacity)
{
    if (a_capacity < m_size) {
        m_size = a_capacity;
    }
    grow(a_capacity);
}

void buffer::swap(buffer &a_other) noexcept
{
    std::swap(m_capacity, a_other.m_capacity);
    std::swap(m_size, a_other.m_size);
    std::swap(m_data, a_other.m_data);
}

namespace {

// Compares the common length as unsigned bytes; <0, 0 or >0, with the shorter buffer less when
// the common part is equal.
int compare(buffer const &a_left, buffer const &a_right)
{
    uint64 const l_common = std::min(a_left.size(), a_right.size());
    if (l_common != 0) {
        int const l_result = std::memcmp(a_left.begin(), a_right.begin(), static_cast<std::size_t>(l_common));
        if (l_result != 0) {
            return l_result;
        }
    }
    return a_left.size() < a_right.size() ? -1 : (a_left.size() > a_right.size() ? 1 : 0);
}

} // namespace

bool operator==(buffer const &a_left, buffer const &a_right)
{
    return a_left.size() == a_right.size() && compare(a_left, a_right) == 0;
}

bool operator!=(buffer const &a_left, buffer const &a_right)
{
    return !(a_left == a_right);
}

bool operator<(buffer const &a_left, buffer const &a_right)
{
    return compare(a_left, a_right) < 0;
}

bool operator<=(buffer const &a_left, buffer const &a_right)
{
    return compare(a_left, a_right) <= 0;
}

bool operator>(buffer const &a_left, buffer const &a_right)
{
    return !(a_left <= a_right);
}

bool operator>=(buffer const &a_left, buffer const &a_right)
{
    return !(a_left < a_right);
}

buffer const &buffer_empty_buffer()
{
    static buffer const l_empty;
    return l_empty;
}

namespace {
// Built at load, before anyone asks for it.
[[maybe_unused]] buffer const &s_empty_buffer_at_load = buffer_empty_buffer();
} // namespace

} // namespace ordwel
