// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CODING_H
#define ORDWEL_CODING_H

#include <cstddef>
#include <cstring>
#include <string>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/internal/byte_copy.h>
#include <ordwel/internal/byte_order.h>
#include <ordwel/types.h>

namespace ordwel {

// The library's wire format: integers in network byte order (most significant byte first), and
// buffers and strings as a 32-bit length followed by their bytes. No padding, alignment, tag or
// version. A length is the low 32 bits of the item's size.
//
// encoder_network and decoder_network are light handles on a buffer that the caller owns and keeps
// alive. The sizes they report are 32 bits wide: the low 32 bits of the buffer's size, and left(),
// the difference of the low 32 bits of the size and of the read position, computed in 32 bits.

/// Builds a message at the end of its buffer; the buffer's size is the write position.
class ORDWEL_API encoder_network {
public:
    /// Attaches, empties the buffer (its capacity stays) and turns on its aggressive growth, so a
    /// message made of many small items does not copy itself at each append.
    explicit encoder_network(buffer &a_buffer);
    /// Leaves the buffer as it is, message and all.
    ~encoder_network();

    /// As the constructor, for another buffer.
    void set(buffer &a_buffer);
    /// Empties the buffer; its capacity stays.
    void clear() { m_buffer->clear(); }
    /// Room for a_size bytes more than the present size.
    void reserve(uint64 a_size);

    /// Appends a_size bytes (which may lie in the buffer itself).
    void write(void const *a_source, uint64 a_size)
    {
        if (a_size <= m_buffer->capacity() - m_buffer->size()) {
            m_buffer->append(static_cast<unsigned char const *>(a_source), a_size);
        } else {
            write_growing(a_source, a_size);
        }
    }
    /// Grows the buffer by a_size bytes, unwritten, and points at the first of them for the caller to
    /// fill. The pointer holds until the buffer grows again.
    unsigned char *advance(uint64 a_size);

    /// The byte at a_index, unchecked: a way to mend bytes written earlier.
    unsigned char &at(uint64 a_index) { return m_buffer->at(a_index); }
    /// The buffer's start and end: the message written so far.
    ///@{
    [[nodiscard]] unsigned char const *begin() const { return m_buffer->begin(); }
    [[nodiscard]] unsigned char const *end() const { return m_buffer->end(); }
    ///@}
    /// The low 32 bits of the buffer's size.
    [[nodiscard]] uint32 size() const { return static_cast<uint32>(m_buffer->size()); }

    /// Shortens the buffer to a_new_size. Raises es::arg "cutting buffer past end" (changing nothing)
    /// when a_new_size is above the buffer's size.
    void cut(uint64 a_new_size) const;
    /// Drops the first a_count bytes, moving the rest to the front; a count beyond the size empties
    /// the buffer.
    void normalize(uint64 a_count);

private:
    void write_growing(void const *a_source, uint64 a_size);

    buffer *m_buffer;
};

/// Takes a message apart from a read position in its buffer. Bytes may be appended at the end
/// (fill) while decoding goes on, and what has been read dropped from the front (normalize).
///
/// Every taking operation checks first and changes nothing when it raises: es::arg "buffer offset
/// out of range" when fewer bytes are left than it needs, es::arg "skipping buffer past end" for a
/// skip beyond the end.
class ORDWEL_API decoder_network {
public:
    /// Attaches at offset 0; the content stays.
    explicit decoder_network(buffer &a_buffer) : m_buffer(&a_buffer), m_offset(0) {}
    /// Leaves the buffer as it is. Inline, so that a decoder on the stack never has its address
    /// taken and its offset can stay in a register across the copies of a decode loop.
    ~decoder_network() = default;

    /// Attaches another buffer at offset 0.
    void set(buffer &a_buffer)
    {
        m_buffer = &a_buffer;
        m_offset = 0;
    }
    /// Back to offset 0: the same data can be decoded afresh.
    void clear() { m_offset = 0; }

    /// The buffer's start and end, not the read position.
    ///@{
    [[nodiscard]] unsigned char const *begin() const { return m_buffer->begin(); }
    [[nodiscard]] unsigned char const *end() const { return m_buffer->end(); }
    ///@}
    /// The low 32 bits of the buffer's size.
    [[nodiscard]] uint32 size() const { return static_cast<uint32>(m_buffer->size()); }
    /// The bytes behind the read position, in 32 bits. A buffer shortened under the read position
    /// by someone else has nothing left.
    [[nodiscard]] uint32 left() const { return left_of(m_buffer->size(), m_offset); }
    /// Whether a_count bytes are left behind the read position.
    [[nodiscard]] bool have(uint32 a_count) const { return left() >= a_count; }

    /// Copies a_size bytes from the read position and moves on.
    void read(void *a_destination, uint64 a_size)
    {
        if (a_size > left()) {
            raise_offset_out_of_range();
        }
        if (a_size != 0) {
            std::memcpy(a_destination, m_buffer->begin() + m_offset, static_cast<std::size_t>(a_size));
        }
        m_offset += a_size;
    }
    /// Copies a_size bytes from a_offset bytes behind the read position; the position stays.
    void peek(void *a_destination, uint64 a_size, uint64 a_offset) const
    {
        unsigned char const *const l_bytes = here(a_size, a_offset);
        if (a_size != 0) {
            std::memcpy(a_destination, l_bytes, static_cast<std::size_t>(a_size));
        }
    }
    /// Checks that a_size + a_offset bytes are left and points a_offset bytes behind the read
    /// position, which stays.
    [[nodiscard]] unsigned char const *here(uint64 a_size, uint64 a_offset) const
    {
        buffer const &l_buffer = *m_buffer;
        uint64 const l_offset = m_offset;
        uint32 const l_left = left_of(l_buffer.size(), l_offset);
        if (a_offset > l_left || a_size > l_left - a_offset) {
            raise_offset_out_of_range();
        }
        return l_buffer.begin() + l_offset + a_offset;
    }
    /// As here, and the read position moves to the end of that range.
    unsigned char const *advance(uint64 a_size, uint64 a_offset)
    {
        unsigned char const *const l_bytes = here(a_size, a_offset);
        m_offset += a_offset + a_size;
        return l_bytes;
    }
    /// Moves on by a_count and points at the new read position.
    unsigned char const *skip(uint64 a_count)
    {
        if (a_count > left()) {
            raise_skip_past_end();
        }
        m_offset += a_count;
        return m_buffer->begin() + m_offset;
    }

    /// Takes a 32-bit length, most significant byte first, and that many bytes behind it; points
    /// at those bytes. One look at what is left covers both. Raises as advance() does: with fewer
    /// than 4 bytes left nothing moves; with too few bytes behind the length it has been consumed.
    unsigned char const *advance_sized(uint32 &a_length)
    {
        // The buffer's size, start and the offset are loaded once for the whole item.
        buffer const &l_buffer = *m_buffer;
        uint64 const l_offset = m_offset;
        uint32 const l_left = left_of(l_buffer.size(), l_offset);
        if (l_left < 4) {
            raise_offset_out_of_range();
        }
        unsigned char const *const l_length_bytes = l_buffer.begin() + l_offset;
        uint32 const l_length = internal::load_be<uint32>(l_length_bytes);
        if (l_length > l_left - 4) {
            m_offset = l_offset + 4;
            raise_offset_out_of_range();
        }
        m_offset = l_offset + 4 + l_length;
        a_length = l_length;
        return l_length_bytes + 4;
    }

    /// Appends a_size bytes at the buffer's end, copied from a_source unless it is null, and points
    /// at the first of them. The read position stays.
    unsigned char *fill(uint64 a_size, void const *a_source);
    /// Room for a_size bytes behind the read position's offset.
    void reserve(uint64 a_size);
    /// Drops what has been read: moves the bytes left to the front and sets the offset to 0.
    void normalize();

private:
    // left() of a size and an offset: their difference in 32 bits (the low 32 bits of the 64-bit
    // difference), or 0 for an offset beyond the size.
    static uint32 left_of(uint64 a_size, uint64 a_offset)
    {
        return a_offset <= a_size ? static_cast<uint32>(a_size - a_offset) : 0;
    }

    [[noreturn]] static void raise_offset_out_of_range();
    [[noreturn]] static void raise_skip_past_end();

    buffer *m_buffer;
    uint64 m_offset;
};

// Integers of every width, most significant byte first, and IEEE 754 numbers as the integers of
// their bits. Signed values travel as their two's complement.
namespace coding_detail {

template <typename T> inline void encode_network(T a_value, encoder_network &a_encoder)
{
    unsigned char l_bytes[sizeof(T)];
    internal::store_be<T>(l_bytes, a_value);
    a_encoder.write(l_bytes, sizeof(T));
}

template <typename T> inline T decode_network(decoder_network &a_decoder)
{
    return internal::load_be<T>(a_decoder.advance(sizeof(T), 0));
}

template <typename T> inline T peek_network(decoder_network const &a_decoder, uint64 a_offset)
{
    return internal::load_be<T>(a_decoder.here(sizeof(T), a_offset));
}

// Copies a_count bytes between blocks that don't overlap. Up to 256 bytes, the usual size of names,
// short texts and small blobs, the copy is overlapping loads and stores of a fixed width, without
// a call: a string of varied lengths then meets a few branches on the length instead of the C
// library's many size classes.
inline void copy_item(void *a_target, void const *a_source, uint32 a_count)
{
    auto *const l_target = static_cast<unsigned char *>(a_target);
    auto const *const l_source = static_cast<unsigned char const *>(a_source);
    if (a_count > 256) {
        std::memcpy(l_target, l_source, a_count);
    } else if (a_count > 64) {
        internal::move_quarters(l_target, l_source, a_count);
    } else {
        internal::move_short(l_target, l_source, a_count);
    }
}

} // namespace coding_detail

#define ORDWEL_CODING_INTEGER(a_type, a_wire)                                                                          \
    inline void a_type##_encode_network(a_type a_value, encoder_network &a_encoder)                                    \
    {                                                                                                                  \
        coding_detail::encode_network<a_wire>(static_cast<a_wire>(a_value), a_encoder);                                \
    }                                                                                                                  \
    inline void a_type##_decode_network(a_type &a_value, decoder_network &a_decoder)                                   \
    {                                                                                                                  \
        a_value = static_cast<a_type>(coding_detail::decode_network<a_wire>(a_decoder));                               \
    }                                                                                                                  \
    inline void a_type##_peek_network(a_type &a_value, decoder_network const &a_decoder, uint64 a_offset)              \
    {                                                                                                                  \
        a_value = static_cast<a_type>(coding_detail::peek_network<a_wire>(a_decoder, a_offset));                       \
    }

/// Integers of every width, most significant byte first; signed values as their two's complement.
/// x_encode_network appends a_value. x_decode_network takes the value at the read position into
/// a_value and moves on; x_peek_network takes it from a_offset bytes behind the read position,
/// which stays. Both raise es::arg "buffer offset out of range", changing nothing, when too few
/// bytes are left.
///@{
ORDWEL_CODING_INTEGER(uint8, uint8)
ORDWEL_CODING_INTEGER(uint16, uint16)
ORDWEL_CODING_INTEGER(uint32, uint32)
ORDWEL_CODING_INTEGER(uint64, uint64)
ORDWEL_CODING_INTEGER(sint8, uint8)
ORDWEL_CODING_INTEGER(sint16, uint16)
ORDWEL_CODING_INTEGER(sint32, uint32)
ORDWEL_CODING_INTEGER(sint64, uint64)
///@}

#undef ORDWEL_CODING_INTEGER

/// IEEE 754 numbers as the integers of their bits, in the manner of the integer functions above.
///@{
inline void float32_encode_network(float32 a_value, encoder_network &a_encoder)
{
    uint32 l_bits;
    std::memcpy(&l_bits, &a_value, sizeof l_bits);
    uint32_encode_network(l_bits, a_encoder);
}

inline void float32_decode_network(float32 &a_value, decoder_network &a_decoder)
{
    uint32 const l_bits = coding_detail::decode_network<uint32>(a_decoder);
    std::memcpy(&a_value, &l_bits, sizeof a_value);
}

inline void float32_peek_network(float32 &a_value, decoder_network const &a_decoder, uint64 a_offset)
{
    uint32 const l_bits = coding_detail::peek_network<uint32>(a_decoder, a_offset);
    std::memcpy(&a_value, &l_bits, sizeof a_value);
}

inline void float64_encode_network(float64 a_value, encoder_network &a_encoder)
{
    uint64 l_bits;
    std::memcpy(&l_bits, &a_value, sizeof l_bits);
    uint64_encode_network(l_bits, a_encoder);
}

inline void float64_decode_network(float64 &a_value, decoder_network &a_decoder)
{
    uint64 const l_bits = coding_detail::decode_network<uint64>(a_decoder);
    std::memcpy(&a_value, &l_bits, sizeof a_value);
}

inline void float64_peek_network(float64 &a_value, decoder_network const &a_decoder, uint64 a_offset)
{
    uint64 const l_bits = coding_detail::peek_network<uint64>(a_decoder, a_offset);
    std::memcpy(&a_value, &l_bits, sizeof a_value);
}
///@}

/// A buffer or a string as its 32-bit length and its bytes.
///@{
inline void buffer_encode_network(buffer const &a_bytes, encoder_network &a_encoder)
{
    uint64 const l_size = a_bytes.size();
    uint32_encode_network(static_cast<uint32>(l_size), a_encoder);
    // The bytes are looked up only now: when they are the encoder's own, the length may have
    // moved them.
    a_encoder.write(a_bytes.begin(), l_size);
}

inline void string_encode_network(std::string const &a_text, encoder_network &a_encoder)
{
    uint32_encode_network(static_cast<uint32>(a_text.size()), a_encoder);
    a_encoder.write(a_text.data(), a_text.size());
}
///@}

/// Takes a length (es::arg "buffer offset out of range" when fewer than 4 bytes are left), then that
/// many bytes, which replace the destination's content. A length of 0 leaves the destination as it
/// was. When the bytes behind the length are too few, the call raises with the length consumed.
///@{
inline void buffer_decode_network(buffer &a_bytes, decoder_network &a_decoder)
{
    uint32 l_length = 0;
    unsigned char const *const l_bytes = a_decoder.advance_sized(l_length);
    if (l_length == 0) {
        return;
    }
    // A destination whose block holds the item is sized and takes the bytes without a call. When
    // it is the decoder's own buffer the bytes come from its own block: emptied, then appended to,
    // a move. A larger item goes through assign, which grows the block; it can't be the decoder's
    // own, whose block holds the item. Either way the result is assign's.
    if (l_length > a_bytes.capacity()) {
        a_bytes.assign(l_bytes, l_bytes + l_length);
    } else if (a_bytes.begin() == a_decoder.begin()) {
        a_bytes.clear();
        a_bytes.append(l_bytes, l_length);
    } else {
        a_bytes.resize(l_length);
        coding_detail::copy_item(a_bytes.begin(), l_bytes, l_length);
    }
}

inline void string_decode_network(std::string &a_text, decoder_network &a_decoder)
{
    uint32 l_length = 0;
    unsigned char const *const l_bytes = a_decoder.advance_sized(l_length);
    if (l_length == 0) {
        return;
    }
    // A string that is no shorter than the item is cut in place (erase to the end, which is
    // inline) and takes the bytes straight. A longer item that fits the string's capacity is
    // appended to the emptied string, a cheaper call than assign; only a larger one needs assign,
    // which grows the string.
    auto const *const l_chars = reinterpret_cast<char const *>(l_bytes);
    if (l_length <= a_text.size()) {
        a_text.erase(l_length);
        coding_detail::copy_item(&a_text[0], l_chars, l_length);
    } else if (l_length <= a_text.capacity()) {
        a_text.clear();
        a_text.append(l_chars, l_length);
    } else {
        a_text.assign(l_chars, l_length);
    }
}
///@}

} // namespace ordwel

#endif
