// SPDX-License-Identifier: MIT
#include <ordwel/bitstream.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <new>

#include <ordwel/internal/attributes.h>

#include "core/byte_scan.h"
#include "stream/stream_memory.h"

namespace ordwel {
namespace bitstream {

namespace {

// Block sizes are whole 32-bit words.
uint64 whole_words(uint64 a_size)
{
    return a_size % 4 == 0 ? a_size : a_size + (4 - a_size % 4);
}

// The reader's block is the size asked in whole words, at least one: it always carries two words
// over on a refill, so one word of new data is enough for any field.
uint64 reader_block_size(uint64 a_size)
{
    return a_size == 0 ? 4 : whole_words(a_size);
}

// The writer's block holds at least two words: it must be able to send a whole word out whenever
// a field does not fit.
constexpr uint64 k_min_writer_block = 8;

uint64 writer_block_size(uint64 a_size)
{
    return a_size <= k_min_writer_block ? k_min_writer_block : whole_words(a_size);
}

std::unique_ptr<uint32[]> zeroed_words(uint64 a_bytes)
{
    return std::unique_ptr<uint32[]>(new uint32[static_cast<std::size_t>(a_bytes / 4)]());
}

// How many matches a search over a memory stream keeps from one scan.
constexpr std::size_t k_ahead = 16;

// The matches that a search over a memory stream found behind the one it returned, kept behind the
// reader's block for the next searches of the same pattern, which then neither compare the bytes
// left in the block with the memory nor enter the scan again. They hold while nothing has moved
// but the cursor within the block: a refill, a skip or a read through the source, clear and set
// drop them, and the memory and the stream's position must be as they were. They reach at most a
// stretch of the scan beyond the stream's position, as a reader of any other source holds a block
// read ahead.
struct found_ahead {
    stream::rd const *m_stream; // null: nothing kept
    stream::memory_kind m_kind;
    unsigned char const *m_data;
    uint64 m_size;
    uint64 m_position; // the stream's position
    uint64 m_bytes;    // the reader's bytes in the block
    uint32 m_want;
    uint32 m_mask;
    unsigned int m_value; // the search's arguments, as the caller gave them
    uint64 m_bits;
    uint64 m_scanned; // every match that starts below this offset in the memory is in m_at
    uint64 m_count;
    uint64 m_next;        // the first of m_at not yet taken
    uint64 m_base;        // the offset in the memory that m_at count from
    uint64 m_at[k_ahead]; // ascending
};

// The kept matches stand behind the block's room (the block of a_size bytes, up to 8 carried and
// the 8 cleared behind them), on a multiple of 8.
uint64 ahead_offset(uint64 a_size)
{
    return (a_size + 16 + 7) & ~uint64(7);
}

std::unique_ptr<uint32[]> reader_block(uint64 a_size)
{
    uint64 const l_offset = ahead_offset(a_size);
    std::unique_ptr<uint32[]> l_block = zeroed_words(l_offset + sizeof(found_ahead));
    new (reinterpret_cast<unsigned char *>(l_block.get()) + l_offset) found_ahead{};
    return l_block;
}

found_ahead &ahead_of(unsigned char *a_block, uint64 a_size)
{
    return *std::launder(reinterpret_cast<found_ahead *>(a_block + ahead_offset(a_size)));
}

// Zeros from a_end to the end of the word after the one that holds it: 8 bytes, which cover them
// (the block has room behind its last word) in one store.
void clear_behind(unsigned char *a_block, uint64 a_end)
{
    std::memset(a_block + a_end, 0, 8);
}

// The leading bytes of a pattern searched at byte positions: three where the pattern has them (start
// codes 00 00 01 among them), found by the vector kernel of the active level, else the first, found
// by memchr.
class byte_lead {
public:
    byte_lead(uint32 a_want, uint64 a_bits)
        : m_triple(a_bits >= 24 ? internal::k_triple_find.for_level(internal::simd_level_active()) : nullptr),
          m_first(static_cast<unsigned char>(a_want >> 24)), m_second(static_cast<unsigned char>(a_want >> 16)),
          m_third(static_cast<unsigned char>(a_want >> 8))
    {
    }

    // The first offset in a_data[0, a_size) where the leading bytes stand whole; a_size when
    // there is none.
    std::size_t first(unsigned char const *a_data, std::size_t a_size) const
    {
        if (m_triple != nullptr) {
            return m_triple(a_data, a_size, m_first, m_second, m_third);
        }
        auto const *const l_hit = static_cast<unsigned char const *>(std::memchr(a_data, m_first, a_size));
        return l_hit == nullptr ? a_size : static_cast<std::size_t>(l_hit - a_data);
    }

private:
    internal::triple_find m_triple;
    unsigned char m_first;
    unsigned char m_second;
    unsigned char m_third;
};

// The bytes that a search in memory copies into the block behind a match.
constexpr uint64 k_found_bytes = 64;

// A byte-grid pattern: its leading bytes, mask and value.
struct byte_pattern {
    byte_lead m_lead;
    uint32 m_mask;
    uint32 m_want;
    uint64 m_bits;

    bool matches(uint32 a_word) const { return (a_word & m_mask) == m_want; }
    bool matches(unsigned char const *a_at) const { return matches(internal::load_be<uint32>(a_at)); }
};

// Where a search at byte positions over memory ends: at a pattern that starts among the bytes left
// in the block (the seam), at one in the memory, or nowhere.
enum class memory_match { seam, memory, none };

// Scans the a_left bytes (fewer than 8) left in the block at a_left_bytes, then the memory from
// a_begin on. A pattern is found where all its bits lie in the data. 8 bytes at a_left_bytes are
// readable (the block has room behind its data). a_at: the position in the memory of the one
// found there.
memory_match find_in_memory(byte_pattern const &a_pattern, unsigned char const *a_left_bytes, uint64 a_left,
                            stream::memory_span const &a_memory, uint64 a_begin, uint64 &a_at)
{
    unsigned char const *const l_data = a_memory.m_data + a_begin;
    uint64 const l_size = a_memory.m_size - a_begin;
    if (a_left != 0) {
        // The bytes left and up to 3 of the memory, big-endian in two registers: l_high holds
        // the first 8, l_low the rest.
        uint64 const l_joined = a_left + std::min<uint64>(l_size, 3);
        uint64 l_high = internal::load_be<uint64>(a_left_bytes) & (~uint64(0) << (64 - 8 * a_left));
        uint64 l_low = 0;
        for (uint64 l_index = a_left; l_index < l_joined; ++l_index) {
            uint64 const l_byte = l_data[l_index - a_left];
            if (l_index < 8) {
                l_high |= l_byte << (56 - 8 * l_index);
            } else {
                l_low |= l_byte << (56 - 8 * (l_index - 8));
            }
        }
        for (uint64 l_at = 0; l_at < a_left && 8 * l_at + a_pattern.m_bits <= 8 * l_joined; ++l_at) {
            uint64 const l_window = l_at == 0 ? l_high : (l_high << (8 * l_at)) | (l_low >> (64 - 8 * l_at));
            if (a_pattern.matches(static_cast<uint32>(l_window >> 32))) {
                return memory_match::seam;
            }
        }
    }
    uint64 l_at = 0;
    while (l_at < l_size) {
        l_at += a_pattern.m_lead.first(l_data + l_at, static_cast<std::size_t>(l_size - l_at));
        uint64 const l_rest = l_size - l_at;
        if (8 * l_rest < a_pattern.m_bits) {
            break;
        }
        // The last bytes of the memory are tested through a copy that zeros behind them.
        unsigned char l_last[4] = {};
        unsigned char const *l_bytes = l_data + l_at;
        if (l_rest < 4) {
            std::memcpy(l_last, l_bytes, static_cast<std::size_t>(l_rest));
            l_bytes = l_last;
        }
        if (a_pattern.matches(l_bytes)) {
            a_at = a_begin + l_at;
            return memory_match::memory;
        }
        ++l_at;
    }
    return memory_match::none;
}

// Whether the word of a_rest bytes at a_data (zeros behind them when fewer than 4) holds the pattern.
bool matches_at(unsigned char const *a_data, uint64 a_rest, uint32 a_want, uint32 a_mask)
{
    if (a_rest >= 4) {
        return (internal::load_be<uint32>(a_data) & a_mask) == a_want;
    }
    unsigned char l_word[4] = {};
    std::memcpy(l_word, a_data, static_cast<std::size_t>(a_rest));
    return (internal::load_be<uint32>(l_word) & a_mask) == a_want;
}

// The stretch of memory that a search scans at a time for a pattern led by three bytes: the
// matches found in it are kept for the next searches. Never more than the reader's block, so that
// a search has looked no further ahead than a reader that copies its source block by block: bytes
// written into the memory beyond that are seen by the next search, as they would be by its refill.
constexpr uint64 k_scan_stretch = 8192;

// Looks in the memory from a_from on for a pattern of a_bits (24 or more) bits, found by its three
// leading bytes, stretch by stretch (each at most a_block bytes long), and keeps in a_ahead the
// matches of the first stretch that has any, the first of them taken. Gives true and the first in
// a_at; false when there is none.
bool collect_in_memory(uint32 a_want, uint32 a_mask, uint64 a_bits, stream::memory_span const &a_memory, uint64 a_from,
                       uint64 a_block, found_ahead &a_ahead, uint64 &a_at)
{
    internal::triple_collect const l_collect = internal::k_triple_collect.for_level(internal::simd_level_active());
    uint64 const l_stretch = std::min(k_scan_stretch, a_block);
    uint64 l_from = a_from;
    while (l_from + 3 <= a_memory.m_size) {
        uint64 const l_size = a_memory.m_size - l_from;
        uint64 const l_reach = std::min(l_stretch, l_size);
        std::size_t const l_count = l_collect(
            a_memory.m_data + l_from, static_cast<std::size_t>(l_size), static_cast<unsigned char>(a_want >> 24),
            static_cast<unsigned char>(a_want >> 16), static_cast<unsigned char>(a_want >> 8), a_ahead.m_at, k_ahead,
            static_cast<std::size_t>(l_reach));
        // Every start below the last when the room is full, else below the reach.
        uint64 const l_scanned = l_count == k_ahead ? l_from + a_ahead.m_at[k_ahead - 1] + 1 : l_from + l_reach;
        uint64 l_kept = l_count;
        if (a_bits > 24) {
            // Past the leading bytes: the rest of the pattern, which must lie in the data.
            l_kept = 0;
            for (std::size_t l_index = 0; l_index < l_count; ++l_index) {
                uint64 const l_at = l_from + a_ahead.m_at[l_index];
                uint64 const l_rest = a_memory.m_size - l_at;
                if (8 * l_rest < a_bits) {
                    break;
                }
                if (matches_at(a_memory.m_data + l_at, l_rest, a_want, a_mask)) {
                    a_ahead.m_at[l_kept++] = a_ahead.m_at[l_index];
                }
            }
        }
        if (l_kept != 0) {
            a_ahead.m_count = l_kept;
            a_ahead.m_next = 1;
            a_ahead.m_scanned = l_scanned;
            a_ahead.m_base = l_from;
            a_at = l_from + a_ahead.m_at[0];
            return true;
        }
        l_from = l_scanned;
    }
    return false;
}

// Copies the k_found_bytes bytes from a match into the block, in pieces of 16 bytes: a copy of all
// 64 at once may become a string move, whose start-up costs more than the copy.
inline void copy_found_bytes(unsigned char *a_to, unsigned char const *a_from)
{
    static_assert(k_found_bytes == 64, "the copy is four pieces of 16 bytes");
    std::memcpy(a_to, a_from, 16);
    std::memcpy(a_to + 16, a_from + 16, 16);
    std::memcpy(a_to + 32, a_from + 32, 16);
    std::memcpy(a_to + 48, a_from + 48, 16);
}

// Settles the reader on a match at a_at in the memory (a_found) or at the end of the data: the
// block takes a few bytes from the match on, each at its offset modulo 4 as a refill keeps it, and
// the stream's position moves behind them. Gives that position.
inline uint64 settle_in_memory(stream::rd &a_stream, stream::memory_kind a_kind, stream::memory_span const &a_memory,
                               unsigned char *a_block, uint64 a_block_size, uint64 &a_bytes, uint64 &a_bits,
                               bool a_found, uint64 a_at, uint64 a_pattern_bits)
{
    uint64 const l_phase = (a_bytes - a_memory.m_position) & 3;
    if (a_found) {
        uint64 const l_offset_in_block = (a_at + l_phase) & 3;
        uint64 const l_count = std::min({a_memory.m_size - a_at, a_block_size, k_found_bytes});
        if (l_count == k_found_bytes) {
            copy_found_bytes(a_block + l_offset_in_block, a_memory.m_data + a_at);
        } else {
            std::memcpy(a_block + l_offset_in_block, a_memory.m_data + a_at, static_cast<std::size_t>(l_count));
        }
        stream::memory_access::set_position_as(a_stream, a_kind, a_at + l_count);
        a_bytes = l_offset_in_block + l_count;
        a_bits = 8 * l_count - a_pattern_bits;
        clear_behind(a_block, a_bytes);
        return a_at + l_count;
    }
    uint64 const l_end = std::max(a_memory.m_position, a_memory.m_size);
    stream::memory_access::set_position_as(a_stream, a_kind, l_end);
    a_bytes = (l_end + l_phase) & 3;
    a_bits = 0;
    clear_behind(a_block, a_bytes);
    return l_end;
}

// After a settle on a match that collect_in_memory gave: what the matches kept behind it hold by.
void keep_ahead(found_ahead &a_ahead, stream::rd *a_stream, stream::memory_span const &a_memory, uint64 a_position,
                uint64 a_bytes, uint32 a_want, uint32 a_mask, unsigned int a_value, uint64 a_bits)
{
    a_ahead.m_value = a_value;
    a_ahead.m_bits = a_bits;
    a_ahead.m_stream = a_stream;
    a_ahead.m_kind = stream::memory_access::kind_of(*a_stream);
    a_ahead.m_data = a_memory.m_data;
    a_ahead.m_size = a_memory.m_size;
    a_ahead.m_position = a_position;
    a_ahead.m_bytes = a_bytes;
    a_ahead.m_want = a_want;
    a_ahead.m_mask = a_mask;
}

} // namespace

// The reader's block: m_size bytes of data behind up to 7 carried bytes, then
// the cleared word after the last one that holds data.
rd::rd(stream::rd &a_stream, uint64 a_size)
    : m_size(reader_block_size(a_size)), m_buf(reader_block(m_size)), m_stream(&a_stream), m_bytes(0), m_bits(0)
{
}

rd::~rd() = default;

void rd::set(stream::rd &a_stream, uint64 a_size)
{
    uint64 const l_size = reader_block_size(a_size);
    m_buf.reset();
    m_buf = reader_block(l_size);
    m_size = l_size;
    clear(a_stream);
}

void rd::clear(stream::rd &a_stream)
{
    m_stream = &a_stream;
    m_bytes = 0;
    m_bits = 0;
    ahead_of(bytes(), m_size).m_stream = nullptr;
}

uint64 rd::fill_from(uint64 a_offset, uint64 a_want_bits) const
{
    // One read fills the block from a well-behaved source. A source that hands
    // out less while more is coming is asked again until the bits wanted are in:
    // what a refill brings back is taken as all there is for now, and a short
    // piece would otherwise read as the end of the data.
    unsigned char *const l_block = bytes();
    uint64 l_got = 0;
    for (;;) {
        uint64 const l_room = m_size - l_got;
        uint64 const l_count = std::min(m_stream->read(l_block + a_offset + l_got, l_room), l_room);
        l_got += l_count;
        if (l_count == 0 || l_got == m_size || m_bits + 8 * l_got >= a_want_bits) {
            break;
        }
    }
    m_bytes = a_offset + l_got;
    clear_behind(l_block, m_bytes);
    return l_got;
}

void rd::refill(uint64 a_want) const
{
    // The unfinished bytes (a begun one among them) stay at their offset modulo
    // 4: the two words that hold them go to the front, and the source fills in
    // behind them.
    uint64 const l_unfinished = (m_bits + 7) / 8;
    uint64 const l_start = m_bytes - l_unfinished;
    unsigned char *const l_block = bytes();
    ahead_of(l_block, m_size).m_stream = nullptr;
    std::memmove(l_block, l_block + (l_start & ~uint64(3)), 8);
    uint64 const l_got = fill_from(l_unfinished + (l_start & 3), a_want);
    m_bits += 8 * l_got;
}

uint64 rd::read(unsigned char *a_destination, uint64 a_count, uint64 a_align) const
{
    // Bytes need a byte boundary: an alignment below 8 counts as 8.
    uint64 const l_align = std::max<uint64>(a_align, 8);
    m_bits -= m_bits % l_align;
    m_bits -= m_bits % 8;
    uint64 const l_buffered = m_bits / 8;
    uint64 const l_taken = std::min(a_count, l_buffered);
    if (l_taken != 0) {
        std::memcpy(a_destination, bytes() + m_bytes - l_buffered, static_cast<std::size_t>(l_taken));
        m_bits -= 8 * l_taken;
    }
    if (l_taken == a_count) {
        return l_taken;
    }
    ahead_of(bytes(), m_size).m_stream = nullptr;
    return l_taken + m_stream->read(a_destination + l_taken, a_count - l_taken);
}

void rd::skip(uint64 a_count) const
{
    if (a_count <= m_bits) {
        m_bits -= a_count;
        return;
    }
    unsigned char *const l_block = bytes();
    ahead_of(l_block, m_size).m_stream = nullptr;
    uint64 l_count = a_count;
    for (;;) {
        l_count -= m_bits;
        std::memmove(l_block, l_block + (m_bytes & ~uint64(3)), 8);
        uint64 const l_offset = m_bytes & 3;
        uint64 const l_read = std::min(m_stream->read(l_block + l_offset, m_size), m_size);
        m_bytes = l_offset + l_read;
        clear_behind(l_block, m_bytes);
        m_bits = 8 * l_read;
        if (l_count <= m_bits || l_read == 0) {
            break;
        }
    }
    m_bits -= std::min(l_count, m_bits);
}

bool rd::find(unsigned int a_value, uint64 a_bits, uint64 a_step, uint64 a_align) const
{
    // The ways out of the kept matches and the long way, out of line (and called last), so that
    // the way through the kept matches stays short.
    struct search {
        // The kept matches ran out before the end of their scan, which lies beyond the block: the
        // scan goes on from there.
        static ORDWEL_NOINLINE bool scan_on(rd const &a_reader, found_ahead &a_ahead)
        {
            stream::memory_span const l_memory = stream::memory_access::span_as(*a_reader.m_stream, a_ahead.m_kind);
            uint64 const l_bits = detail::at_most_32(a_ahead.m_bits);
            uint64 l_at = 0;
            bool const l_found = collect_in_memory(a_ahead.m_want, a_ahead.m_mask, l_bits, l_memory, a_ahead.m_scanned,
                                                   a_reader.m_size, a_ahead, l_at);
            uint64 const l_settled =
                settle_in_memory(*a_reader.m_stream, a_ahead.m_kind, l_memory, a_reader.bytes(), a_reader.m_size,
                                 a_reader.m_bytes, a_reader.m_bits, l_found, l_at, l_bits);
            if (!l_found) {
                a_ahead.m_stream = nullptr;
                return false;
            }
            a_ahead.m_position = l_settled;
            a_ahead.m_bytes = a_reader.m_bytes;
            return true;
        }

        // A kept match at a_at in the memory, near its end or with a small block.
        static ORDWEL_NOINLINE bool settle_on(rd const &a_reader, found_ahead &a_ahead, uint64 a_at)
        {
            stream::memory_span const l_memory = stream::memory_access::span_as(*a_reader.m_stream, a_ahead.m_kind);
            a_ahead.m_position =
                settle_in_memory(*a_reader.m_stream, a_ahead.m_kind, l_memory, a_reader.bytes(), a_reader.m_size,
                                 a_reader.m_bytes, a_reader.m_bits, true, a_at, detail::at_most_32(a_ahead.m_bits));
            a_ahead.m_bytes = a_reader.m_bytes;
            return true;
        }

        static ORDWEL_NOINLINE bool on(rd const &a_reader, unsigned int a_value, uint64 a_bits, uint64 a_step,
                                       uint64 a_align)
        {
            uint64 const l_bits = detail::at_most_32(a_bits);
            // A shift by 32 counts as a shift by 0.
            uint32 const l_want = l_bits == 0 || l_bits == 32 ? a_value : a_value << (32 - l_bits);
            uint32 const l_mask = l_bits == 0 ? 0 : ~uint32(0) << (32 - l_bits);
            // Alignments are powers of two in practice: a mask spares the division.
            uint64 const l_unread =
                a_reader.m_bits - (a_align == 0                     ? 0
                                   : (a_align & (a_align - 1)) == 0 ? a_reader.m_bits & (a_align - 1)
                                                                    : a_reader.m_bits % a_align);
            uint64 const l_position = a_reader.m_bytes * 8 - l_unread;

            // Every step of 32 or more tests one position per word; a larger one must not wrap the
            // offset.
            uint64 const l_step = a_step == 0 ? 1 : std::min<uint64>(a_step, 64);
            // o: the offset in the word under the scan; r: the valid bits from that word's start. The
            // positions are o, o + step ... up to the end of the word, then the same from the start of
            // each following word.
            uint64 l_offset = l_position % 32;
            uint64 l_valid = l_unread + l_offset;
            uint64 l_word = l_position / 32;
            unsigned char const *const l_block = a_reader.bytes();
            // A search at byte positions for a pattern with a whole first byte looks up its leading bytes
            // and tests the candidates: the same positions in the same order as the word scan.
            bool const l_byte_grid = l_step == 8 && l_bits >= 8;

            // Over the library's memory streams the data behind the block is scanned where it lies. The
            // block then takes a few words from a match on (the next search goes on in memory, a field read
            // past them refills as usual); each byte keeps its offset modulo 4 in the block, as a refill
            // keeps it. A failed search consumes everything.
            unsigned char *const l_bytes = a_reader.bytes();
            found_ahead &l_ahead = ahead_of(l_bytes, a_reader.m_size);
            stream::memory_span l_memory{};
            l_ahead.m_stream = nullptr;
            byte_pattern const l_pattern{byte_lead(l_want, l_bits), l_mask, l_want, l_bits};
            bool const l_in_memory =
                l_byte_grid && l_offset % 8 == 0 && stream::memory_access::span_of(*a_reader.m_stream, l_memory);
            auto const l_settle = [&](memory_match a_match, uint64 a_at) {
                settle_in_memory(*a_reader.m_stream, stream::memory_access::kind_of(*a_reader.m_stream), l_memory,
                                 l_bytes, a_reader.m_size, a_reader.m_bytes, a_reader.m_bits,
                                 a_match == memory_match::memory, a_at, l_bits);
                return a_match == memory_match::memory;
            };
            // Normally the bytes left in the block are those just before the stream's position (unless
            // the caller moved the stream): then the whole search runs in memory.
            if (l_in_memory && l_memory.m_position <= l_memory.m_size) {
                uint64 const l_from = l_position / 8;
                uint64 const l_left = a_reader.m_bytes - l_from;
                // An empty memory stream may have no memory at all: memcmp must not see its null pointer.
                if (l_left <= l_memory.m_position &&
                    (l_left == 0 || std::memcmp(l_block + l_from, l_memory.m_data + l_memory.m_position - l_left,
                                                static_cast<std::size_t>(l_left)) == 0)) {
                    uint64 l_at = 0;
                    if (l_bits >= 24) {
                        // Led by three whole bytes: the matches behind this one in the same stretch
                        // are kept for the next searches.
                        bool const l_found =
                            collect_in_memory(l_want, l_mask, l_bits, l_memory, l_memory.m_position - l_left,
                                              a_reader.m_size, l_ahead, l_at);
                        uint64 const l_settled = settle_in_memory(
                            *a_reader.m_stream, stream::memory_access::kind_of(*a_reader.m_stream), l_memory, l_bytes,
                            a_reader.m_size, a_reader.m_bytes, a_reader.m_bits, l_found, l_at, l_bits);
                        if (l_found) {
                            keep_ahead(l_ahead, a_reader.m_stream, l_memory, l_settled, a_reader.m_bytes, l_want,
                                       l_mask, a_value, a_bits);
                        }
                        return l_found;
                    }
                    memory_match const l_match =
                        find_in_memory(l_pattern, nullptr, 0, l_memory, l_memory.m_position - l_left, l_at);
                    return l_settle(l_match, l_at);
                }
            }
            for (;;) {
                // A word is scanned only when the next one is whole too: then every span that starts in it
                // lies in the data, and a span that runs past the data is tested after the next refill.
                if (l_byte_grid && l_offset % 8 == 0 && l_valid >= 64) {
                    uint64 const l_words = (l_valid - 32) / 32;
                    unsigned char const *l_from = l_block + 4 * l_word + l_offset / 8;
                    unsigned char const *const l_to = l_block + 4 * (l_word + l_words);
                    uint64 const l_end = 32 * l_word + l_valid;
                    // At least one word of data stands behind l_to: every position before it has its
                    // leading bytes in the data.
                    while (l_from < l_to) {
                        unsigned char const *const l_hit =
                            l_from + l_pattern.m_lead.first(l_from, static_cast<std::size_t>(l_to - l_from) + 2);
                        if (l_hit >= l_to) {
                            break;
                        }
                        uint64 const l_at = 8 * static_cast<uint64>(l_hit - l_block);
                        if (l_pattern.matches(l_hit)) {
                            a_reader.m_bits = l_end - l_at - l_bits;
                            return true;
                        }
                        l_from = l_hit + 1;
                    }
                    l_valid -= 32 * l_words;
                    l_offset = 0;
                    l_word += l_words;
                }
                while (l_valid >= 64) {
                    uint64 const l_pair = internal::load_be<uint64>(l_block + 4 * l_word);
                    for (; l_offset < 32; l_offset += l_step) {
                        if ((static_cast<uint32>((l_pair << l_offset) >> 32) & l_mask) == l_want) {
                            a_reader.m_bits = l_valid - l_offset - l_bits;
                            return true;
                        }
                    }
                    l_valid -= 32;
                    l_offset = 0;
                    ++l_word;
                }
                // The bytes left in the block meet the memory: a pattern that starts among them is left to
                // the refill and the word scan, which find it in their first words.
                if (l_in_memory && l_offset % 8 == 0) {
                    stream::memory_access::span_of(*a_reader.m_stream, l_memory);
                    uint64 const l_from = 4 * l_word + l_offset / 8;
                    uint64 l_at = 0;
                    memory_match const l_match =
                        find_in_memory(l_pattern, l_block + l_from, a_reader.m_bytes - l_from, l_memory,
                                       std::min(l_memory.m_position, l_memory.m_size), l_at);
                    if (l_match != memory_match::seam) {
                        return l_settle(l_match, l_at);
                    }
                }
                // Fewer than two words left: carry them to the front of the block (the word under the scan
                // starts a word, so it goes to the very front) and read behind them.
                a_reader.m_bits = l_valid;
                a_reader.refill(64);
                l_word = 0;
                if (a_reader.m_bits == l_valid) {
                    break;
                }
                l_valid = a_reader.m_bits;
            }
            // The end of the data: the last one or two words, only spans that lie in the data.
            for (uint64 l_base = 0; l_base < l_valid; l_base += 32) {
                uint64 const l_pair = internal::load_be<uint64>(l_block + l_base / 8);
                for (; l_offset < 32 && l_base + l_offset + l_bits <= l_valid; l_offset += l_step) {
                    if ((static_cast<uint32>((l_pair << l_offset) >> 32) & l_mask) == l_want) {
                        a_reader.m_bits = l_valid - l_base - l_offset - l_bits;
                        return true;
                    }
                }
                l_offset = 0;
            }
            a_reader.m_bits = 0;
            return false;
        }
    };

    // The same search as the one that kept the matches, from a byte boundary (an alignment of up
    // to 8 bits leaves the cursor where it is), while nothing but the cursor has moved. The
    // stream is of the class it was when they were kept. The block's data ends where the stream
    // stands, so the cursor and the matches have offsets in the memory.
    unsigned char *const l_bytes = bytes();
    found_ahead &l_ahead = ahead_of(l_bytes, m_size);
    if (l_ahead.m_stream == m_stream && l_ahead.m_value == a_value && l_ahead.m_bits == a_bits && a_step == 8 &&
        (m_bits & 7) == 0 && a_align <= 8 && (a_align & (a_align - 1)) == 0) {
        stream::memory_span const l_memory = stream::memory_access::span_as(*m_stream, l_ahead.m_kind);
        if (l_ahead.m_bytes == m_bytes && l_memory.m_position == l_ahead.m_position &&
            l_memory.m_data == l_ahead.m_data && l_memory.m_size == l_ahead.m_size) {
            uint64 const l_end = l_memory.m_position;
            uint64 const l_cursor = l_end - m_bits / 8;
            uint64 l_next = l_ahead.m_next;
            // Those behind a cursor that reads moved on are passed over.
            while (l_next < l_ahead.m_count && l_ahead.m_base + l_ahead.m_at[l_next] < l_cursor) {
                ++l_next;
            }
            if (l_next == l_ahead.m_count) {
                l_ahead.m_next = l_next;
                if (l_ahead.m_scanned >= l_end) {
                    return search::scan_on(*this, l_ahead);
                }
            } else {
                uint64 const l_bits = detail::at_most_32(a_bits);
                uint64 const l_at = l_ahead.m_base + l_ahead.m_at[l_next];
                if (l_at + (l_bits + 7) / 8 <= l_end) {
                    // In the block: its bytes were copied from the memory that the scan saw.
                    l_ahead.m_next = l_next + 1;
                    m_bits = 8 * (l_end - l_at) - l_bits;
                    return true;
                }
                // Behind the block: still there, unless the memory was written since. One that
                // starts in the block and ends in the memory takes the long way.
                uint64 const l_rest = l_memory.m_size - l_at;
                if (l_at >= l_end && matches_at(l_memory.m_data + l_at, l_rest, l_ahead.m_want, l_ahead.m_mask)) {
                    l_ahead.m_next = l_next + 1;
                    if (l_rest < k_found_bytes || m_size < k_found_bytes) {
                        return search::settle_on(*this, l_ahead, l_at);
                    }
                    // As settle_in_memory, for a whole copy.
                    uint64 const l_offset_in_block = (l_at + m_bytes - l_end) & 3;
                    copy_found_bytes(l_bytes + l_offset_in_block, l_memory.m_data + l_at);
                    stream::memory_access::set_position_as(*m_stream, l_ahead.m_kind, l_at + k_found_bytes);
                    m_bytes = l_offset_in_block + k_found_bytes;
                    m_bits = 8 * k_found_bytes - l_bits;
                    clear_behind(l_bytes, m_bytes);
                    l_ahead.m_position = l_at + k_found_bytes;
                    l_ahead.m_bytes = m_bytes;
                    return true;
                }
            }
        }
    }
    return search::on(*this, a_value, a_bits, a_step, a_align);
}

// The writer's block: m_size bytes and a spare word behind them, so that a
// field written at the last word of the block never leaves it. Everything
// behind the write cursor is kept zero.
wr::wr(stream::wr &a_stream, uint64 a_size) : m_size(0), m_stream(&a_stream), m_free(0)
{
    allocate(a_size);
}

wr::~wr()
{
    try {
        write_out(m_size - m_free / 8);
    } catch (std::exception const &) {
        // Nowhere to report it; clear() before the end makes the failure visible.
    }
}

void wr::allocate(uint64 a_size)
{
    uint64 const l_size = writer_block_size(a_size);
    m_buf.reset();
    m_buf = zeroed_words(l_size + 8);
    m_size = l_size;
    m_free = m_size * 8;
}

void wr::set(stream::wr &a_stream, uint64 a_size)
{
    write_out(m_size - m_free / 8);
    allocate(a_size);
    m_stream = &a_stream;
}

void wr::clear(stream::wr &a_stream)
{
    write_out(m_size - m_free / 8);
    m_stream = &a_stream;
}

void wr::write_out(uint64 a_count)
{
    if (a_count != 0) {
        m_stream->write(bytes(), a_count);
    }
    std::memset(bytes(), 0, static_cast<std::size_t>(m_size + 8));
    m_free = m_size * 8;
}

void wr::make_room()
{
    // The complete bytes, in whole words; the word of the cursor moves to the
    // front.
    uint64 const l_complete = m_size - (m_free + 7) / 8;
    uint64 const l_words = l_complete & ~uint64(3);
    if (l_words == 0) {
        return;
    }
    unsigned char *const l_block = bytes();
    m_stream->write(l_block, l_words);
    std::memmove(l_block, l_block + l_words, 4);
    std::memset(l_block + 4, 0, static_cast<std::size_t>(m_size + 4));
    m_free += 8 * l_words;
}

void wr::write(unsigned char const *a_source, uint64 a_count, uint64 a_align)
{
    uint64 const l_align = std::max<uint64>(a_align, 8);
    uint64 l_free = m_free - m_free % l_align;
    l_free -= l_free % 8;
    if (a_count <= l_free / 8) {
        if (a_count != 0) {
            std::memcpy(bytes() + m_size - l_free / 8, a_source, static_cast<std::size_t>(a_count));
        }
        m_free = l_free - 8 * a_count;
        return;
    }
    write_out(m_size - l_free / 8);
    m_stream->write(a_source, a_count);
}

void wr::skip(uint64 a_count)
{
    // The free words of the block are zero already: the cursor can move through
    // them.
    if (a_count < m_free) {
        m_free -= a_count;
        return;
    }
    uint64 l_count = a_count - m_free;
    write_out(m_size);
    uint64 const l_block_bits = m_size * 8;
    while (l_count >= l_block_bits) {
        m_stream->write(bytes(), m_size);
        l_count -= l_block_bits;
    }
    m_free = l_block_bits - l_count;
}

} // namespace bitstream
} // namespace ordwel
