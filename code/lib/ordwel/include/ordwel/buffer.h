#ifndef ORDWEL_BUFFER_H
#define ORDWEL_BUFFER_H

#include <cstddef>
#include <cstring>

#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {

// A growable byte array. Small buffers double their capacity (always strictly above the wanted
// size); above 10,000,000 bytes a buffer grows to exactly what is wanted, unless set_aggressive
// makes resize(n) climb by half the capacity. No operation checks an index: at() is operator[].
// Iterators are byte pointers, invalidated by any growth.
class ORDWEL_API buffer {
public:
    using value_type = unsigned char;
    using size_type = uint64;
    using iterator = unsigned char *;
    using const_iterator = unsigned char const *;

    // Above this wanted capacity, growth is exact instead of doubling.
    static constexpr uint64 k_exact_growth_threshold = 10000000;

    buffer();
    // An empty buffer with room for 2 × a_count bytes (not a buffer of that size).
    explicit buffer(uint64 a_count);
    buffer(uint64 a_count, unsigned char a_fill);
    buffer(uint64 a_count, unsigned char const *a_bytes);
    buffer(unsigned char const *a_first, unsigned char const *a_last);
    buffer(buffer const &a_other);
    virtual ~buffer();

    buffer &operator=(buffer const &a_other);
    void assign(buffer const &a_other);
    void assign(unsigned char const *a_first, unsigned char const *a_last);

    void append(buffer const &a_other);
    void append(unsigned char const *a_first, unsigned char const *a_last);
    // The common case, room enough, is inline: small appends cost a copy, not a call.
    void append(unsigned char const *a_bytes, uint64 a_count)
    {
        if (a_count <= m_capacity - m_size) {
            if (a_count != 0) {
                std::memmove(m_data + m_size, a_bytes, static_cast<std::size_t>(a_count));
            }
            m_size += a_count;
        } else {
            append_growing(a_bytes, a_count);
        }
    }
    void append(uint64 a_count, unsigned char a_value);
    buffer &operator+=(buffer const &a_other);

    void clear() { m_size = 0; }
    void resize(uint64 a_size);
    void resize(uint64 a_size, unsigned char a_fill);
    void reserve(uint64 a_capacity);
    // Moves the bytes into a new block sized by the growth rule for a_capacity, cutting the size
    // to a_capacity first when it is larger. Never lowers the capacity.
    void adjust(uint64 a_capacity);
    void set_aggressive(bool a_aggressive) { m_aggressive = a_aggressive; }
    void swap(buffer &a_other) noexcept;

    uint64 size() const { return m_size; }
    uint64 capacity() const { return m_capacity; }
    static constexpr uint64 max_size() { return ~uint64(0); }
    bool empty() const { return m_size == 0; }

    unsigned char *begin() { return m_data; }
    unsigned char const *begin() const { return m_data; }
    unsigned char *end() { return m_data + m_size; }
    unsigned char const *end() const { return m_data + m_size; }
    unsigned char &front() { return m_data[0]; }
    unsigned char const &front() const { return m_data[0]; }
    unsigned char &back() { return m_data[m_size - 1]; }
    unsigned char const &back() const { return m_data[m_size - 1]; }
    unsigned char &operator[](uint64 a_index) { return m_data[a_index]; }
    unsigned char const &operator[](uint64 a_index) const { return m_data[a_index]; }
    unsigned char &at(uint64 a_index) { return m_data[a_index]; }
    unsigned char const &at(uint64 a_index) const { return m_data[a_index]; }

    // The capacity that the growth rule gives for a wanted capacity from a current one.
    static uint64 grown_capacity(uint64 a_capacity, uint64 a_wanted);

private:
    void append_growing(unsigned char const *a_bytes, uint64 a_count);
    // Moves the bytes in use into a new block of grown_capacity(capacity, a_wanted).
    void grow(uint64 a_wanted);

    uint64 m_capacity;
    uint64 m_size;
    unsigned char *m_data;
    bool m_aggressive;
};

ORDWEL_API bool operator==(buffer const &a_left, buffer const &a_right);
ORDWEL_API bool operator!=(buffer const &a_left, buffer const &a_right);
ORDWEL_API bool operator<(buffer const &a_left, buffer const &a_right);
ORDWEL_API bool operator<=(buffer const &a_left, buffer const &a_right);
ORDWEL_API bool operator>(buffer const &a_left, buffer const &a_right);
ORDWEL_API bool operator>=(buffer const &a_left, buffer const &a_right);

// The one shared empty buffer: size 0, capacity 1024, never written to.
ORDWEL_API buffer const &buffer_empty_buffer();

} // namespace ordwel

#endif
