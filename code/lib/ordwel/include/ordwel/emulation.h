// SPDX-License-Identifier: MIT
#ifndef ORDWEL_EMULATION_H
#define ORDWEL_EMULATION_H

#include <memory>
#include <string>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/stream.h>
#include <ordwel/types.h>

namespace ordwel {

// Emulation prevention, as H.264 and HEVC wrap a NAL unit's payload (the raw byte sequence
// payload) so that no start code 00 00 01 appears inside it.
//
// Inserting puts a byte 03 before every byte 00, 01, 02 or 03 that follows two zero bytes; the
// zeros are counted in what has been written since the last inserted 03, so 00 00 00 00 becomes
// 00 00 03 00 00. When the output ends in two such zeros, a final 03 follows (a payload that ends
// in cabac_zero_words thus ends in 03, as the coding standards ask).
//
// Removing drops the 03 of every 00 00 03, the zeros counted in the input since the last 03
// dropped, and keeps everything else, whatever follows the 03: 00 00 03 03 gives 00 00 03. So
// removing undoes inserting for every input, and bytes that no insertion made (00 00 00, 00 00 02)
// pass unchanged.

/// The most bytes that insert_emulation gives for a_size bytes: a_size + a_size / 2.
constexpr uint64 emulation_inserted_bound(uint64 a_size)
{
    return a_size + a_size / 2;
}

/// Writes the a_size bytes at a_source to a_destination with the emulation prevention bytes
/// removed, and gives their count (at most a_size). a_destination may equal a_source (removal in
/// place); it must not overlap it otherwise.
ORDWEL_API uint64 remove_emulation(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size);
/// Writes the a_size bytes at a_source to a_destination with emulation prevention bytes inserted,
/// the final 03 included, and gives their count. a_destination holds
/// emulation_inserted_bound(a_size) bytes and does not overlap a_source.
ORDWEL_API uint64 insert_emulation(unsigned char *a_destination, unsigned char const *a_source, uint64 a_size);

/// The a_size bytes at a_bytes with the emulation prevention bytes removed, as a buffer or a
/// string. A null pointer or a size of 0 gives an empty result.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_remove_emulation(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_remove_emulation(unsigned char const *a_bytes, uint64 a_size);
///@}

/// The a_size bytes at a_bytes with emulation prevention bytes inserted, as a buffer or a string.
/// A null pointer or a size of 0 gives an empty result.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_insert_emulation(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_insert_emulation(unsigned char const *a_bytes, uint64 a_size);
///@}

namespace stream {

/// A reader that gives the bytes of another reader with the emulation prevention bytes removed,
/// as remove_emulation does over all of them at once: the zeros at the end of one read count
/// for the next. It does not own the source, and holds nothing back.
class ORDWEL_API ep_remove_rd : public rd {
public:
    /// Reads a_source from its present position, counting no zeros before it.
    explicit ep_remove_rd(rd &a_source);
    ep_remove_rd(ep_remove_rd const &) = delete;
    ep_remove_rd &operator=(ep_remove_rd const &) = delete;
    ~ep_remove_rd() override;

    /// Reads the source into a_destination and removes there. Gives 0 only at the end of the
    /// source: a read whose bytes were all removed reads again.
    uint64 read(void *a_destination, uint64 a_size) override;
    /// The bytes handed out.
    [[nodiscard]] uint64 tell() override;

private:
    rd *m_source;
    unsigned m_zeros;
    uint64 m_position;
};

/// A writer that passes the bytes written to another writer with emulation prevention bytes
/// inserted, as insert_emulation does over all of them at once: the zeros at the end of one write
/// count for the next. finish ends a payload. It does not own the sink.
class ORDWEL_API ep_insert_wr : public wr {
public:
    /// Writes to a_sink from its present position, at the start of a payload.
    explicit ep_insert_wr(wr &a_sink);
    ep_insert_wr(ep_insert_wr const &) = delete;
    ep_insert_wr &operator=(ep_insert_wr const &) = delete;
    /// Writes nothing more: a payload that ends in two zeros needs finish for its final 03.
    ~ep_insert_wr() override;

    /// Inserts and writes to the sink, in pieces of a few KiB; nothing is held back.
    void write(void const *a_source, uint64 a_size) override;
    /// Calls the sink's flush.
    void flush() override;
    /// The bytes taken, before insertion.
    [[nodiscard]] uint64 tell() override;

    /// Ends the payload: writes the final 03 when the output ends in two zeros; the next byte
    /// written starts a new payload.
    void finish();

private:
    wr *m_sink;
    unsigned m_zeros;
    uint64 m_position;
    std::unique_ptr<unsigned char[]> m_stage;
};

} // namespace stream
} // namespace ordwel

#endif
