// SPDX-License-Identifier: MIT
#ifndef ORDWEL_BYTESTREAM_H
#define ORDWEL_BYTESTREAM_H

#include <cstring>
#include <memory>
#include <type_traits>

#include <ordwel/export.h>
#include <ordwel/internal/byte_order.h>
#include <ordwel/stream.h>
#include <ordwel/types.h>

namespace ordwel {
namespace bytestream {

/// Byte order of the typed accessors' numbers. Integers and floating-point numbers of 1, 2, 4 and
/// 8 bytes are read and written in either order, whatever the machine's own.
class order {
public:
    /// Numbers of type T at a_at in big-endian (be) or little-endian (le) order. load gives the
    /// number whose bytes start at a_at; store puts a_value's bytes there. T is an integer or
    /// floating-point type of 1, 2, 4 or 8 bytes (not bool); a_at needs no alignment.
    ///@{
    template <class T> [[nodiscard]] static T load_be(unsigned char const *a_at)
    {
        return from_bits<T>(internal::load_be<word_of<T>>(a_at));
    }
    template <class T> [[nodiscard]] static T load_le(unsigned char const *a_at)
    {
        return from_bits<T>(internal::load_le<word_of<T>>(a_at));
    }
    template <class T> static void store_be(unsigned char *a_at, T a_value)
    {
        internal::store_be(a_at, bits_of<T>(a_value));
    }
    template <class T> static void store_le(unsigned char *a_at, T a_value)
    {
        internal::store_le(a_at, bits_of<T>(a_value));
    }
    ///@}

private:
    template <std::size_t N> struct word;

    template <class T> using word_of = typename word<sizeof(T)>::type;

    template <class T> static word_of<T> bits_of(T a_value)
    {
        static_assert(std::is_arithmetic<T>::value && !std::is_same<T, bool>::value, "only numbers have a byte order");
        word_of<T> l_bits;
        std::memcpy(&l_bits, &a_value, sizeof l_bits);
        return l_bits;
    }
    template <class T> static T from_bits(word_of<T> a_bits)
    {
        static_assert(std::is_arithmetic<T>::value && !std::is_same<T, bool>::value, "only numbers have a byte order");
        T l_value;
        std::memcpy(&l_value, &a_bits, sizeof l_value);
        return l_value;
    }
};

/// \cond
template <> struct order::word<1> {
    using type = uint8;
};
template <> struct order::word<2> {
    using type = uint16;
};
template <> struct order::word<4> {
    using type = uint32;
};
template <> struct order::word<8> {
    using type = uint64;
};
/// \endcond

/// A reading cursor over a stream::rd. It reads the source a block at a time and hands out small
/// items from the block, so that one virtual call serves many items. Nothing is read before the
/// first demand. Its reading members are const. The source must outlive the cursor.
///
/// Running out of data raises es::uflow (from stream::read). Alignments are powers of two, reckoned
/// on the unread bytes in the block; up to 8 they agree with the source's positions.
class ORDWEL_API rd {
public:
    /// A block of a_size bytes rounded up to a multiple of 8 (0 counts as 1).
    rd(stream::rd &a_stream, uint64 a_size);
    rd(rd const &) = delete;
    rd &operator=(rd const &) = delete;
    ~rd();

    /// Attaches a new source with a new block.
    void set(stream::rd &a_stream, uint64 a_size);
    /// Attaches a new source and keeps the block; unread bytes are dropped.
    void clear(stream::rd &a_stream);

    /// Whether a_count bytes can be read. Refills when fewer are in the block: false means the
    /// source had something left but not enough; at the very end of the source it raises es::uflow.
    [[nodiscard]] bool has_bytes(uint64 a_count) const;
    /// Moves to the a_align boundary, then reads a_count bytes: from the block first, the rest
    /// straight from the source. Gives a_count.
    uint64 read(unsigned char *a_destination, uint64 a_count, uint64 a_align = 1) const;
    /// Reads through and drops a_count bytes.
    void skip(uint64 a_count) const;
    /// Drops the unread bytes up to the a_align boundary.
    void align(uint64 a_align) const;
    /// The unread bytes above the a_align boundary; 0 means aligned.
    [[nodiscard]] uint64 boundary(uint64 a_align) const;
    /// The logical position: the source's position minus the bytes not yet consumed.
    [[nodiscard]] uint64 tell() const;

    /// Typed items of 1, 2, 4 or 8 bytes (unsigned char, integers, floating-point numbers) in
    /// big-endian (be) or little-endian (le) order. read gives the item at the cursor and moves past
    /// it; peek gives it and leaves the cursor. No alignment is applied. Raise es::uflow when the
    /// source ends before the item.
    ///@{
    uint8 read_u8() const { return *read_at(1); }
    [[nodiscard]] uint8 peek_u8() const { return *peek_at(1); }
    template <class T> T read_be() const { return order::load_be<T>(read_at(item_size<T>())); }
    template <class T> T read_le() const { return order::load_le<T>(read_at(item_size<T>())); }
    template <class T> [[nodiscard]] T peek_be() const { return order::load_be<T>(peek_at(item_size<T>())); }
    template <class T> [[nodiscard]] T peek_le() const { return order::load_le<T>(peek_at(item_size<T>())); }
    ///@}

private:
    template <class T> static constexpr uint64 item_size()
    {
        static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8,
                      "items are of 1, 2, 4 or 8 bytes");
        return sizeof(T);
    }

    unsigned char *block() const { return reinterpret_cast<unsigned char *>(m_buf.get()); }

    /// peek_at and read_at (and the writer's write_at) are inline: while the block has room an
    /// item costs no call; only a refill (or a write-out) leaves for the library.
    ///
    /// a_count (at most 8) bytes at the cursor; the cursor stays. Valid until the next refill.
    unsigned char const *peek_at(uint64 a_count) const
    {
        if (m_left < a_count) {
            refill(a_count - m_left);
        }
        return block() + (m_bytes - m_left);
    }
    /// a_count (at most 8) bytes at the cursor; the cursor moves past them.
    unsigned char const *read_at(uint64 a_count) const
    {
        if (m_left < a_count) {
            refill(a_count - m_left);
        }
        unsigned char const *const l_at = block() + (m_bytes - m_left);
        m_left -= a_count;
        return l_at;
    }
    /// Carries the unread bytes to the front of the block and reads a block behind them, at least
    /// a_want bytes.
    void refill(uint64 a_want) const;
    /// Takes a_count bytes read behind m_bytes into the data and clears the two words behind it.
    void settle(uint64 a_count) const;
    void allocate(uint64 a_size);

    uint64 m_size;
    std::unique_ptr<uint64[]> m_buf;
    stream::rd *m_stream;
    mutable uint64 m_bytes;
    mutable uint64 m_left;
};

/// A writing cursor over a stream::wr. Small items gather in a block that goes to the sink when
/// full; large writes go to the sink directly. What is in the block is written out by clear, set
/// and the destructor; the sink's flush is left to the caller. The sink must outlive the cursor.
class ORDWEL_API wr {
public:
    /// A block of a_size bytes rounded up to a multiple of 8 (0 counts as 1).
    wr(stream::wr &a_stream, uint64 a_size);
    wr(wr const &) = delete;
    wr &operator=(wr const &) = delete;
    /// Writes out what is in the block. A failure of the sink's write passes through, unless the
    /// destructor runs during the unwinding of another exception: then it is dropped.
    ~wr() noexcept(false);

    /// Writes out to the old sink, then attaches a new sink with a new block.
    void set(stream::wr &a_stream, uint64 a_size);
    /// Writes out to the old sink and attaches a new one, keeping the block.
    void clear(stream::wr &a_stream);

    /// Pads with zeros to the a_align boundary, then writes a_count bytes: into the block when
    /// they fit, else the block and then the bytes go to the sink.
    void write(unsigned char const *a_source, uint64 a_count, uint64 a_align = 1);
    /// Writes a_count zero bytes.
    void skip(uint64 a_count);
    /// Pads with zeros to the a_align boundary.
    void align(uint64 a_align);
    /// The free bytes in the block above the a_align boundary; 0 means aligned.
    [[nodiscard]] uint64 boundary(uint64 a_align) const;
    /// The sink's position plus the bytes in the block.
    [[nodiscard]] uint64 tell() const;

    /// Typed items: appends a_value, an item of 1, 2, 4 or 8 bytes (unsigned char, integer,
    /// floating-point number), in big-endian (be) or little-endian (le) order. No alignment is
    /// applied.
    ///@{
    void write_u8(uint8 a_value) { *write_at(1) = a_value; }
    template <class T> void write_be(T a_value) { order::store_be<T>(write_at(item_size<T>()), a_value); }
    template <class T> void write_le(T a_value) { order::store_le<T>(write_at(item_size<T>()), a_value); }
    ///@}

private:
    template <class T> static constexpr uint64 item_size()
    {
        static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8,
                      "items are of 1, 2, 4 or 8 bytes");
        return sizeof(T);
    }

    unsigned char *block() const { return reinterpret_cast<unsigned char *>(m_buf.get()); }

    /// Room for a_count (at most 8) bytes at the cursor, which moves past them.
    unsigned char *write_at(uint64 a_count)
    {
        if (m_free < a_count) {
            make_room(a_count);
        }
        unsigned char *const l_at = block() + (m_size - m_free);
        m_free -= a_count;
        return l_at;
    }
    /// Writes out the whole words of the block, keeping the last partial word.
    void make_room(uint64 a_count);
    /// Writes out everything in the block and empties it.
    void write_out();
    void allocate(uint64 a_size);

    uint64 m_size;
    std::unique_ptr<uint64[]> m_buf;
    stream::wr *m_stream;
    uint64 m_free;
};

} // namespace bytestream
} // namespace ordwel

#endif
