// SPDX-License-Identifier: MIT
#ifndef ORDWEL_BITSTREAM_H
#define ORDWEL_BITSTREAM_H

#include <memory>

#include <ordwel/export.h>
#include <ordwel/internal/byte_order.h>
#include <ordwel/stream.h>
#include <ordwel/types.h>

namespace ordwel {
namespace bitstream {

// Bit cursors over a stream: fields of 0 to 32 bits, most significant bit first. Writing 4 bits of
// 0xa and then 4 bits of 0xb gives the byte 0xab. Both cursors keep a private block and move whole
// blocks through the stream; they neither own the stream nor call its flush.
//
// A field count above 32 counts as 32. Alignments are measured on the count that runs down (the
// unread bits of the reader, the free bits of the writer's block): for alignments up to 8 bits
// that agrees with the position in the byte stream, in the writer up to 32 bits.

namespace detail {

inline uint64 at_most_32(uint64 a_count)
{
    return a_count < 32 ? a_count : 32;
}

} // namespace detail

/// Reads bit fields from a stream::rd. Its reading members are const (the cursor is mutable), so a
/// const reader can be handed to code that only reads.
///
/// Reading past the end of the data is no failure: the missing bits read as zero and the cursor
/// stops at the end. has_bits asks first.
class ORDWEL_API rd {
public:
    /// a_size: the block in bytes, rounded up to a multiple of 4 (at least 4): each refill asks the
    /// source for that many bytes.
    rd(stream::rd &a_stream, uint64 a_size);
    rd(rd const &) = delete;
    rd &operator=(rd const &) = delete;
    ~rd();

    /// A new block of a_size bytes and a new source; nothing buffered.
    void set(stream::rd &a_stream, uint64 a_size);
    /// A new source in the same block; what was buffered is dropped.
    void clear(stream::rd &a_stream);

    /// Whether a_count bits are there, refilling the block when fewer are buffered. Reliable up to
    /// 32 bits; beyond that it tells what a block can hold.
    [[nodiscard]] bool has_bits(uint64 a_count) const
    {
        if (m_bits < a_count && m_bits <= 32) {
            refill(a_count);
        }
        return m_bits >= a_count;
    }

    /// The next a_count bits (0 to 32), right-aligned; the cursor stays.
    [[nodiscard]] uint32 peek(uint64 a_count) const
    {
        uint64 const l_count = detail::at_most_32(a_count);
        if (m_bits < l_count) {
            refill(l_count);
        }
        return field(l_count);
    }

    /// The next a_count bits (0 to 32), right-aligned, and the cursor moves past them.
    uint32 read(uint64 a_count) const
    {
        uint64 const l_count = detail::at_most_32(a_count);
        if (m_bits < l_count) {
            refill(l_count);
        }
        uint32 const l_value = field(l_count);
        m_bits -= l_count < m_bits ? l_count : m_bits;
        return l_value;
    }

    /// Whole bytes: rounds the cursor down to a_align bits (at least 8), copies what the block
    /// holds, then makes one read of the source for the rest. Gives the bytes read, fewer at the
    /// end of the data.
    uint64 read(unsigned char *a_destination, uint64 a_count, uint64 a_align) const;
    /// Moves on by a_count bits; stops at the end of the data.
    void skip(uint64 a_count) const;
    /// Moves to the next multiple of a_align (a power of two) counted from the end of the data.
    void align(uint64 a_align) const { m_bits -= boundary(a_align); }
    /// The bits to the next multiple of a_align; 0 when aligned.
    [[nodiscard]] uint64 boundary(uint64 a_align) const { return a_align == 0 ? 0 : m_bits % a_align; }

    /// Looks for the a_bits (1 to 32) low bits of a_value at positions a_step bits apart, from the
    /// cursor rounded down to a_align. Found: true, the cursor behind the pattern. Not found: all
    /// data consumed, false. The step restarts at each 32-bit word of the data (steps that divide
    /// 32 give an even grid). A step of 0 counts as 1.
    bool find(unsigned int a_value, uint64 a_bits, uint64 a_step, uint64 a_align) const;

    /// The byte position in the source: a byte begun counts as consumed.
    [[nodiscard]] uint64 tell() const { return m_stream->tell() - m_bits / 8; }

private:
    unsigned char *bytes() const { return reinterpret_cast<unsigned char *>(m_buf.get()); }
    /// The a_count bits at the cursor; zeros behind the data.
    uint32 field(uint64 a_count) const
    {
        uint64 const l_position = m_bytes * 8 - m_bits;
        uint64 const l_words = internal::load_be<uint64>(bytes() + (l_position >> 5) * 4);
        uint64 const l_top = (l_words << (l_position & 31)) >> 32;
        return static_cast<uint32>(l_top >> (32 - a_count));
    }
    /// Carries the unfinished bytes to the front of the block and reads behind them until a_want
    /// bits are buffered, the block is full or the source ends. The unfinished bytes must lie in
    /// two words: m_bits up to 32, or up to 63 from the start of a word.
    void refill(uint64 a_want) const;
    /// Reads behind the carried bytes at a_offset; gives the count read.
    uint64 fill_from(uint64 a_offset, uint64 a_want_bits) const;

    uint64 m_size;
    std::unique_ptr<uint32[]> m_buf;
    stream::rd *m_stream;
    mutable uint64 m_bytes;
    mutable uint64 m_bits;
};

/// Writes bit fields to a stream::wr. Bits that have not filled a byte go out with zero low bits
/// when the block is written out (destructor, set, clear).
class ORDWEL_API wr {
public:
    /// a_size: the block in bytes, rounded up to a multiple of 4 (at least 8).
    wr(stream::wr &a_stream, uint64 a_size);
    wr(wr const &) = delete;
    wr &operator=(wr const &) = delete;
    /// Writes out the block. A failure of the sink here is swallowed: call clear first to see it.
    ~wr();

    /// Writes out to the old sink, then a new block of a_size bytes for a_stream.
    void set(stream::wr &a_stream, uint64 a_size);
    /// Writes out to the old sink and attaches a_stream.
    void clear(stream::wr &a_stream);

    /// Appends the low a_count bits (0 to 32) of a_value.
    void write(unsigned int a_value, uint64 a_count)
    {
        uint64 const l_count = detail::at_most_32(a_count);
        if (m_free < l_count) {
            make_room();
        }
        // The field, left-justified, lands in the cursor's word (ORed in: everything behind the
        // cursor is zero) and the word after it (stored whole). Both are 32-bit accesses, so the
        // next field's load of either word is served straight from this store.
        uint64 const l_position = m_size * 8 - m_free;
        unsigned char *const l_at = bytes() + (l_position >> 5) * 4;
        uint64 const l_field = ((static_cast<uint64>(a_value) << 32) << (32 - l_count)) >> (l_position & 31);
        internal::store_be<uint32>(l_at, internal::load_be<uint32>(l_at) | static_cast<uint32>(l_field >> 32));
        internal::store_be<uint32>(l_at + 4, static_cast<uint32>(l_field));
        m_free -= l_count;
    }

    /// Whole bytes at the cursor rounded to a_align bits (8, 16 or 32; at least 8).
    void write(unsigned char const *a_source, uint64 a_count, uint64 a_align);
    /// Moves on by a_count zero bits.
    void skip(uint64 a_count);
    /// Moves to the next multiple of a_align (a power of two) counted from the end of the block;
    /// the bits passed are zero.
    void align(uint64 a_align) { m_free -= boundary(a_align); }
    /// The free bits of the block above the next multiple of a_align; 0 when aligned.
    [[nodiscard]] uint64 boundary(uint64 a_align) const { return a_align == 0 ? 0 : m_free % a_align; }

    /// The byte position in the sink, a partial byte counted.
    [[nodiscard]] uint64 tell() const { return m_stream->tell() + m_size - m_free / 8; }

private:
    unsigned char *bytes() const { return reinterpret_cast<unsigned char *>(m_buf.get()); }
    /// Writes out the whole words in use and moves the cursor's word to the front.
    void make_room();
    /// Writes out a_count bytes of the block and clears it for a fresh start.
    void write_out(uint64 a_count);
    void allocate(uint64 a_size);

    uint64 m_size;
    std::unique_ptr<uint32[]> m_buf;
    stream::wr *m_stream;
    uint64 m_free;
};

} // namespace bitstream
} // namespace ordwel

#endif
