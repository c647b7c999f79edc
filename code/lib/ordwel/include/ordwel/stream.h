// SPDX-License-Identifier: MIT
#ifndef ORDWEL_STREAM_H
#define ORDWEL_STREAM_H

#include <memory>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {
namespace stream {

/// The origin of a seek. buf and mem take every value but begin and current as end; the fixed
/// underlying type makes any int a valid value.
enum whence : int {
    begin = 0,   ///< The start of the stream.
    current = 1, ///< The present position.
    end = 2      ///< The end of the stream.
};

/// A sequential reader. read gives up to a_size bytes and moves on by as many; 0 means the end of
/// the data, and a smaller count than asked is no end of data.
class ORDWEL_API rd {
public:
    /// The interface holds no state: constructing, copying and assigning do nothing.
    ///@{
    rd() {}
    rd(rd const &) {}
    rd &operator=(rd const &) { return *this; }
    ///@}
    /// Destroys the stream through the interface.
    virtual ~rd();

    /// Reads up to a_size bytes into a_destination and moves on by as many. Gives the count read:
    /// 0 at the end of the data; a smaller count than asked is no end of data.
    virtual uint64 read(void *a_destination, uint64 a_size) = 0;
    /// The position from the start of the stream.
    [[nodiscard]] virtual uint64 tell() = 0;
};

/// A sequential writer. write writes all the bytes or raises; flush pushes out what is held back.
class ORDWEL_API wr {
public:
    /// The interface holds no state: constructing, copying and assigning do nothing.
    ///@{
    wr() {}
    wr(wr const &) {}
    wr &operator=(wr const &) { return *this; }
    ///@}
    /// Destroys the stream through the interface.
    virtual ~wr();

    /// Writes all a_size bytes from a_source, or raises.
    virtual void write(void const *a_source, uint64 a_size) = 0;
    /// Pushes out what the stream holds back.
    virtual void flush() = 0;
    /// The position from the start of the stream.
    [[nodiscard]] virtual uint64 tell() = 0;
};

/// A reader that can seek.
class ORDWEL_API rda : public rd {
public:
    /// The interface holds no state: constructing, copying and assigning do nothing.
    ///@{
    rda() {}
    rda(rda const &a_other) : rd(a_other) {}
    rda &operator=(rda const &) { return *this; }
    ///@}
    /// Destroys the stream through the interface.
    ~rda() override;

    uint64 read(void *a_destination, uint64 a_size) override = 0;
    /// seek(0, current).
    [[nodiscard]] uint64 tell() override;
    /// As read, leaving the position where it was: read, then seek back by the count.
    [[nodiscard]] virtual uint64 peek(void *a_destination, uint64 a_size);
    /// Moves the position by a_offset from a_whence; gives the new position from the start.
    virtual uint64 seek(sint64 a_offset, whence a_whence) = 0;
    /// The position of the end, found by seeking there and back; the position stays.
    [[nodiscard]] virtual uint64 size();
};

/// A writer that can seek.
class ORDWEL_API wra : public wr {
public:
    /// The interface holds no state: constructing, copying and assigning do nothing.
    ///@{
    wra() {}
    wra(wra const &a_other) : wr(a_other) {}
    wra &operator=(wra const &) { return *this; }
    ///@}
    /// Destroys the stream through the interface.
    ~wra() override;

    void write(void const *a_source, uint64 a_size) override = 0;
    void flush() override = 0;
    /// seek(0, current).
    [[nodiscard]] uint64 tell() override;
    /// Moves the position by a_offset from a_whence; gives the new position from the start.
    virtual uint64 seek(sint64 a_offset, whence a_whence) = 0;
    /// The position of the end; seeks back only when the position was not already there.
    [[nodiscard]] virtual uint64 size();
};

/// A stream that reads and writes and seeks. tell and size are those of rda for both faces; seek
/// stays pure in both bases, and one seek in a derived class implements both.
class ORDWEL_API rwa : public rda, public wra {
public:
    /// The interface holds no state: constructing, copying and assigning do nothing.
    ///@{
    rwa() {}
    rwa(rwa const &a_other) : rda(a_other), wra(a_other) {}
    rwa &operator=(rwa const &) { return *this; }
    ///@}
    /// Destroys the stream through the interface.
    ~rwa() override;

    /// Moves the one position that reading and writing share; gives the new position from the start.
    using rda::seek;
    /// seek(0, current): the one position of both faces.
    [[nodiscard]] uint64 tell() override;
    /// The position of the end, found by seeking there and back; the position stays.
    [[nodiscard]] uint64 size() override;
};

/// A stream over a buffer that the caller keeps alive. Writing grows the buffer (through
/// buffer::resize, so its aggressive setting applies); one position serves reading and writing.
class ORDWEL_API buf : public rwa {
public:
    /// Attaches a_buffer; position 0.
    explicit buf(buffer &a_buffer);
    /// Leaves the buffer as it is.
    ~buf() override;

    /// Attaches another buffer; position 0.
    void set(buffer &a_buffer);
    /// buffer::resize on the attached buffer; the position stays where it was.
    void resize(uint64 a_size);

    /// Copies the smaller of a_size and the bytes left behind the position, and moves on by as many.
    uint64 read(void *a_destination, uint64 a_size) override;
    /// As read, leaving the position where it was.
    [[nodiscard]] uint64 peek(void *a_destination, uint64 a_size) override;
    /// The position from the start of the buffer.
    [[nodiscard]] uint64 tell() override;
    /// Raises es::range when the new position would be negative or beyond the buffer's size; a
    /// seek to exactly the size is allowed. The position stays when it raises.
    uint64 seek(sint64 a_offset, whence a_whence) override;
    /// Copies a_size bytes to the position, growing the buffer when they reach beyond its end; a
    /// write in the middle overwrites and never shrinks.
    void write(void const *a_source, uint64 a_size) override;
    /// Does nothing: nothing is held back.
    void flush() override;

private:
    friend class memory_access;
    buffer *m_buffer;
    uint64 m_pos;
};

/// A stream over a fixed piece of memory that the caller keeps alive. A write that does not fit
/// raises es::range and writes nothing.
class ORDWEL_API mem : public rwa {
public:
    /// Attaches the a_size bytes at a_data; position 0.
    mem(void *a_data, uint64 a_size);
    /// Leaves the memory as it is.
    ~mem() override;

    /// Attaches other memory; position 0.
    void set(void *a_data, uint64 a_size);

    /// Copies the smaller of a_size and the bytes left behind the position, and moves on by as many.
    uint64 read(void *a_destination, uint64 a_size) override;
    /// As read, leaving the position where it was.
    [[nodiscard]] uint64 peek(void *a_destination, uint64 a_size) override;
    /// The position from the start of the memory.
    [[nodiscard]] uint64 tell() override;
    /// Raises es::range when the new position would be negative or beyond the size; a seek to
    /// exactly the size is allowed. The position stays when it raises.
    uint64 seek(sint64 a_offset, whence a_whence) override;
    /// Copies a_size bytes to the position and moves on. Raises es::range, writing nothing, when
    /// they do not fit before the end.
    void write(void const *a_source, uint64 a_size) override;
    /// Does nothing: nothing is held back.
    void flush() override;

private:
    friend class memory_access;
    uint64 m_size;
    unsigned char *m_data;
    uint64 m_pos;
};

/// A reader that reads the readers added to it one after the other, each to its end, as one
/// stream. It does not own them.
class ORDWEL_API multird : public rd {
public:
    /// An empty chain at position 0.
    multird();
    multird(multird const &) = delete;
    multird &operator=(multird const &) = delete;
    /// Leaves the chained readers as they are.
    ~multird() override;

    /// Puts a reader at the end of the chain.
    void add(rd &a_reader);
    /// Empties the chain and sets the position back to 0; the readers are not touched.
    void clear();

    /// Reads up to a_size bytes across the chain: a reader that gives 0 has ended and is not asked
    /// again, so one read may span several readers. Gives 0 when the last reader has ended.
    uint64 read(void *a_destination, uint64 a_size) override;
    /// The bytes handed out since construction or the last clear.
    [[nodiscard]] uint64 tell() override;

private:
    uint64 m_capacity;
    std::unique_ptr<rd *[]> m_list;
    uint64 m_count;
    uint64 m_current;
    uint64 m_position;
};

/// Resizes a_buffer to a_size, does one read into it and cuts it to the count read.
ORDWEL_API void read(rd &a_stream, buffer &a_buffer, uint64 a_size);
/// Reads into a_destination until at least a_required bytes are in, never more than a_size, and
/// gives the count. Raises es::uflow when the stream ends first (even for a_required 0 on a stream
/// that has ended); what was read so far stays in the destination.
ORDWEL_API uint64 read(rd &a_stream, void *a_destination, uint64 a_size, uint64 a_required);
/// One write of the first a_size bytes of a_buffer. Raises es::range when a_size is beyond the
/// buffer's size.
ORDWEL_API void write(wr &a_stream, buffer const &a_buffer, uint64 a_size);

} // namespace stream
} // namespace ordwel

#endif
