// SPDX-License-Identifier: MIT
#ifndef ORDWEL_BUFFER_H
#define ORDWEL_BUFFER_H

#include <cstddef>

#include <ordwel/export.h>
#include <ordwel/internal/byte_copy.h>
#include <ordwel/types.h>

namespace ordwel {

/// A growable byte array. Small buffers double their capacity (always strictly above the wanted
/// size); above 10,000,000 bytes a buffer grows to exactly what is wanted, unless set_aggressive
/// makes resize(n) climb by half the capacity. No operation checks an index: at() is operator[].
/// Iterators are byte pointers, invalidated by any growth. A block that cannot be had raises
/// std::bad_alloc.
class ORDWEL_API buffer {
public:
    using value_type = unsigned char;             ///< The element: one byte.
    using size_type = uint64;                     ///< Sizes and indexes.
    using iterator = unsigned char *;             ///< A byte pointer.
    using const_iterator = unsigned char const *; ///< A pointer to a constant byte.

    /// Above this wanted capacity, growth is exact instead of doubling.
    static constexpr uint64 k_exact_growth_threshold = 10000000;

    /// An empty buffer with a capacity of 1024 bytes.
    buffer();
    /// An empty buffer with room for 2 × a_count bytes (not a buffer of that size).
    explicit buffer(uint64 a_count);
    /// a_count bytes of a_fill, in a capacity of 2 × a_count.
    buffer(uint64 a_count, unsigned char a_fill);
    /// A copy of a_count bytes from a_bytes, in a capacity of 2 × a_count.
    buffer(uint64 a_count, unsigned char const *a_bytes);
    /// A copy of the bytes from a_first up to a_last, in a capacity of twice their count.
    buffer(unsigned char const *a_first, unsigned char const *a_last);
    /// A copy of the other's bytes, in a capacity of twice their count.
    buffer(buffer const &a_other);
    virtual ~buffer();

    /// Replaces the bytes by a copy of the other's; the capacity grows when it must.
    buffer &operator=(buffer const &a_other);
    /// Replaces the bytes by a copy of the other's (or of the range from a_first up to a_last); the
    /// capacity grows when it must.
    ///@{
    void assign(buffer const &a_other);
    void assign(unsigned char const *a_first, unsigned char const *a_last);
    ///@}

    /// Adds bytes at the end: the other's, a range, a_count bytes from a_bytes, or a_count copies
    /// of a_value. The source may lie within this buffer.
    ///@{
    void append(buffer const &a_other);
    void append(unsigned char const *a_first, unsigned char const *a_last);
    // The common case, room enough, is inline: small appends cost a few moves, not a call.
    void append(unsigned char const *a_bytes, uint64 a_count)
    {
        if (a_count <= m_capacity - m_size) {
            internal::move_bytes(m_data + m_size, a_bytes, static_cast<std::size_t>(a_count));
            m_size += a_count;
        } else {
            append_growing(a_bytes, a_count);
        }
    }
    void append(uint64 a_count, unsigned char a_value);
    ///@}
    /// append(a_other); gives *this.
    buffer &operator+=(buffer const &a_other);

    /// Sets the size to 0; the capacity stays.
    void clear() { m_size = 0; }
    /// Sets the size; bytes that a growth adds are not initialised. With set_aggressive a growth
    /// takes at least half the capacity more.
    void resize(uint64 a_size)
    {
        // Within the capacity only the size changes, inline: a decoder sizes its target per item.
        if (a_size > m_capacity) {
            resize_growing(a_size);
            return;
        }
        m_size = a_size;
    }
    /// Sets the size; bytes beyond the old size are a_fill.
    void resize(uint64 a_size, unsigned char a_fill);
    /// Grows the capacity by the growth rule when it is below a_capacity; never lowers it.
    void reserve(uint64 a_capacity);
    /// Moves the bytes into a new block sized by the growth rule for a_capacity, cutting the size
    /// to a_capacity first when it is larger. Never lowers the capacity.
    void adjust(uint64 a_capacity);
    /// Whether resize(n) grows by at least half the capacity at a time (off at construction).
    void set_aggressive(bool a_aggressive) { m_aggressive = a_aggressive; }
    /// Exchanges the bytes, size and capacity of the two buffers (not the aggressive flag).
    void swap(buffer &a_other) noexcept;

    /// The number of bytes in use.
    [[nodiscard]] uint64 size() const { return m_size; }
    /// The number of bytes the block holds.
    [[nodiscard]] uint64 capacity() const { return m_capacity; }
    /// The largest size a buffer can name: 2^64 - 1.
    [[nodiscard]] static constexpr uint64 max_size() { return ~uint64(0); }
    /// Whether the size is 0.
    [[nodiscard]] bool empty() const { return m_size == 0; }

    /// Pointers to the first byte and behind the last; growth invalidates them.
    ///@{
    [[nodiscard]] unsigned char *begin() { return m_data; }
    [[nodiscard]] unsigned char const *begin() const { return m_data; }
    [[nodiscard]] unsigned char *end() { return m_data + m_size; }
    [[nodiscard]] unsigned char const *end() const { return m_data + m_size; }
    ///@}
    /// The first and the last byte; unchecked, so not for an empty buffer.
    ///@{
    [[nodiscard]] unsigned char &front() { return m_data[0]; }
    [[nodiscard]] unsigned char const &front() const { return m_data[0]; }
    [[nodiscard]] unsigned char &back() { return m_data[m_size - 1]; }
    [[nodiscard]] unsigned char const &back() const { return m_data[m_size - 1]; }
    ///@}
    /// The byte at a_index; the index is not checked.
    ///@{
    [[nodiscard]] unsigned char &operator[](uint64 a_index) { return m_data[a_index]; }
    [[nodiscard]] unsigned char const &operator[](uint64 a_index) const { return m_data[a_index]; }
    [[nodiscard]] unsigned char &at(uint64 a_index) { return m_data[a_index]; }
    [[nodiscard]] unsigned char const &at(uint64 a_index) const { return m_data[a_index]; }
    ///@}

    /// The capacity that the growth rule gives for a wanted capacity from a current one.
    [[nodiscard]] static uint64 grown_capacity(uint64 a_capacity, uint64 a_wanted);

private:
    void append_growing(unsigned char const *a_bytes, uint64 a_count);
    void resize_growing(uint64 a_size);
    // Moves the bytes in use into a new block of grown_capacity(capacity, a_wanted).
    void grow(uint64 a_wanted);

    uint64 m_capacity;
    uint64 m_size;
    unsigned char *m_data;
    bool m_aggressive;
};

/// Byte-wise comparisons as unsigned values; when one buffer is a prefix of the other, the shorter
/// is less. The capacity takes no part.
///@{
[[nodiscard]] ORDWEL_API bool operator==(buffer const &a_left, buffer const &a_right);
[[nodiscard]] ORDWEL_API bool operator!=(buffer const &a_left, buffer const &a_right);
[[nodiscard]] ORDWEL_API bool operator<(buffer const &a_left, buffer const &a_right);
[[nodiscard]] ORDWEL_API bool operator<=(buffer const &a_left, buffer const &a_right);
[[nodiscard]] ORDWEL_API bool operator>(buffer const &a_left, buffer const &a_right);
[[nodiscard]] ORDWEL_API bool operator>=(buffer const &a_left, buffer const &a_right);
///@}

/// The one shared empty buffer: size 0, capacity 1024, never written to.
[[nodiscard]] ORDWEL_API buffer const &buffer_empty_buffer();

} // namespace ordwel

#endif
