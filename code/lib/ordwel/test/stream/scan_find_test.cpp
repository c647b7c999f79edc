// SPDX-License-Identifier: MIT
// The bit reader's search at byte positions, at every vector level this processor has, against a
// brute-force scan: over memory streams (scanned in place) and over sources that hand out a few
// bytes at a time (read through the block).

#include <ordwel/bitstream.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/buffer.h>
#include <ordwel/stream.h>

#include "core/cpu_dispatch.h"
#include "support/scripted_streams.h"
#include "support/simd_levels.h"

namespace {

using namespace ordwel;
using internal::simd_level;

struct pattern {
    unsigned m_value;
    uint64 m_bits;
};

// Start codes; a start code with the byte behind it; a 20-bit pattern found by its first byte.
constexpr pattern k_patterns[] = {{0x000001, 24}, {0x000001b3, 32}, {0x00001, 20}};

// Lifts the cap that a test set.
struct scan_find : ::testing::Test {
    ~scan_find() override { internal::simd_level_cap(simd_level::avx512); }
};

// Random bytes, a quarter of them zeros, with start codes (some followed by b3) planted at every
// offset modulo 4, on both sides of each 4 KiB boundary and at the very end.
std::string planted_data()
{
    std::mt19937 l_random(2024);
    std::string l_data(3 * 4096 + 301, '\0');
    for (char &l_byte : l_data) {
        l_byte = l_random() % 4 == 0 ? '\0' : static_cast<char>(l_random());
    }
    auto const l_plant = [&](std::size_t a_at) {
        l_data[a_at] = '\0';
        l_data[a_at + 1] = '\0';
        l_data[a_at + 2] = '\1';
        l_data[a_at + 3] = l_random() % 2 == 0 ? '\xb3' : '\x77';
    };
    for (std::size_t l_at = 5; l_at < 200; l_at += 7) {
        l_plant(l_at);
    }
    for (std::size_t l_boundary = 4096; l_boundary < l_data.size(); l_boundary += 4096) {
        for (std::size_t l_at = l_boundary - 6; l_at <= l_boundary + 2; l_at += 4) {
            l_plant(l_at);
        }
        l_plant(l_boundary - 3);
    }
    l_plant(l_data.size() - 4);
    l_data[l_data.size() - 3] = '\0';
    l_data[l_data.size() - 2] = '\0';
    l_data[l_data.size() - 1] = '\1';
    return l_data;
}

// Every match of successive searches from byte a_from: the byte position behind each.
std::vector<uint64> matches_by_brute_force(std::string const &a_data, pattern const &a_pattern, std::size_t a_from)
{
    uint32 const l_want = a_pattern.m_value << (32 - a_pattern.m_bits);
    uint32 const l_mask = ~uint32(0) << (32 - a_pattern.m_bits);
    std::size_t const l_bytes = (a_pattern.m_bits + 7) / 8;
    std::vector<uint64> l_ends;
    for (std::size_t l_at = a_from; 8 * l_at + a_pattern.m_bits <= 8 * a_data.size();) {
        uint32 l_word = 0;
        for (std::size_t l_index = 0; l_index < 4; ++l_index) {
            unsigned char const l_byte =
                l_at + l_index < a_data.size() ? static_cast<unsigned char>(a_data[l_at + l_index]) : 0;
            l_word = (l_word << 8) | l_byte;
        }
        if ((l_word & l_mask) == l_want) {
            l_ends.push_back(l_at + l_bytes);
            l_at += l_bytes;
        } else {
            ++l_at;
        }
    }
    return l_ends;
}

// A memory stream of a class of its own: read through the block like any other source.
class counting_mem : public stream::mem {
public:
    using stream::mem::mem;
    uint64 read(void *a_destination, uint64 a_size) override
    {
        m_asked.push_back(a_size);
        return stream::mem::read(a_destination, a_size);
    }
    std::vector<uint64> m_asked;
};

// The sources under test, each over the same bytes.
struct source_kind {
    char const *m_name;
    std::vector<uint64> m_pieces; // scripted pieces; empty for the memory streams
    int m_memory;                 // 1: stream::mem, 2: stream::buf, 3: counting_mem, 0: scripted
};

source_kind const k_sources[] = {
    {"mem", {}, 1},     {"buf", {}, 2},      {"derived mem", {}, 3},
    {"1 byte", {1}, 0}, {"3 bytes", {3}, 0}, {"4097 bytes", {4097}, 0},
};

struct opened {
    std::unique_ptr<stream::rd> m_stream;
    buffer m_buffer;
};

void open(source_kind const &a_kind, std::string const &a_data, opened &a_out)
{
    auto *const l_bytes = reinterpret_cast<unsigned char *>(const_cast<char *>(a_data.data()));
    switch (a_kind.m_memory) {
    case 1:
        a_out.m_stream.reset(new stream::mem(l_bytes, a_data.size()));
        break;
    case 2:
        a_out.m_buffer.resize(a_data.size());
        std::copy(a_data.begin(), a_data.end(), a_out.m_buffer.begin());
        a_out.m_stream.reset(new stream::buf(a_out.m_buffer));
        break;
    case 3:
        a_out.m_stream.reset(new counting_mem(l_bytes, a_data.size()));
        break;
    default:
        a_out.m_stream.reset(new ordwel_test::scripted_rd(a_data, a_kind.m_pieces));
    }
}

// The 8 bits at bit a_at of a_data, zeros behind its end.
unsigned bits_at(std::string const &a_data, uint64 a_at)
{
    unsigned l_pair = 0;
    for (uint64 l_byte = a_at / 8; l_byte < a_at / 8 + 2; ++l_byte) {
        l_pair = (l_pair << 8) | (l_byte < a_data.size() ? static_cast<unsigned char>(a_data[l_byte]) : 0U);
    }
    return (l_pair >> (8 - a_at % 8)) & 0xff;
}

// Bulk reads of single bytes on a fresh reader go straight to the source: the data behind them
// then stands at another offset modulo 4 in the block.
void skip_past_the_block(bitstream::rd const &a_reader, std::size_t a_count)
{
    for (std::size_t l_index = 0; l_index < a_count; ++l_index) {
        unsigned char l_byte = 0;
        ASSERT_EQ(a_reader.read(&l_byte, 1, 8), 1u);
    }
}

TEST_F(scan_find, agrees_with_brute_force_at_every_level_over_every_source)
{
    std::string const l_data = planted_data();
    for (pattern const &l_pattern : k_patterns) {
        for (std::size_t l_skipped = 0; l_skipped < 4; ++l_skipped) {
            std::vector<uint64> const l_expected = matches_by_brute_force(l_data, l_pattern, l_skipped);
            ASSERT_GT(l_expected.size(), 10u);
            for (simd_level const l_level : ordwel_test::simd_levels_here()) {
                internal::simd_level_cap(l_level);
                for (source_kind const &l_kind : k_sources) {
                    for (uint64 const l_block : {4, 20, 4096}) {
                        opened l_source;
                        open(l_kind, l_data, l_source);
                        bitstream::rd l_reader(*l_source.m_stream, l_block);
                        skip_past_the_block(l_reader, l_skipped);
                        std::vector<uint64> l_ends;
                        bool l_next_ok = true;
                        while (l_reader.find(l_pattern.m_value, l_pattern.m_bits, 8, 8)) {
                            l_ends.push_back(l_reader.tell());
                            // The 8 bits behind the pattern are the next ones read.
                            uint64 const l_behind = 8 * (l_ends.back() - (l_pattern.m_bits + 7) / 8) + l_pattern.m_bits;
                            l_next_ok = l_next_ok && l_reader.peek(8) == bits_at(l_data, l_behind);
                        }
                        SCOPED_TRACE(testing::Message() << l_kind.m_name << ", block " << l_block << ", level "
                                                        << static_cast<unsigned>(l_level) << ", pattern "
                                                        << l_pattern.m_bits << " bits, skipped " << l_skipped);
                        EXPECT_EQ(l_ends, l_expected);
                        EXPECT_TRUE(l_next_ok);
                        // A failed search consumes everything.
                        EXPECT_EQ(l_reader.tell(), l_data.size());
                        EXPECT_FALSE(l_reader.has_bits(1));
                    }
                }
            }
        }
    }
}

// After a search over memory the reader carries on exactly as after one through the block: fields
// at odd widths, bulk reads, and searches at other steps, whose positions depend on where the
// 32-bit words of the block fall.
TEST_F(scan_find, reading_after_a_search_in_memory_is_as_through_the_block)
{
    std::string const l_data = planted_data();
    for (std::size_t l_skipped = 0; l_skipped < 4; ++l_skipped) {
        std::vector<std::vector<uint64>> l_results;
        for (source_kind const &l_kind : k_sources) {
            opened l_source;
            open(l_kind, l_data, l_source);
            bitstream::rd l_reader(*l_source.m_stream, 64);
            skip_past_the_block(l_reader, l_skipped);
            unsigned char l_bytes[3];
            std::vector<uint64> l_seen;
            while (l_reader.find(1, 24, 8, 8)) {
                l_seen.push_back(l_reader.tell());
                l_seen.push_back(l_reader.read(5));
                l_seen.push_back(l_reader.read(13));
                // A step of 12 restarts at each word of the block.
                l_seen.push_back(l_reader.find(0xa, 4, 12, 1));
                l_seen.push_back(l_reader.tell());
                l_seen.push_back(l_reader.read(l_bytes, 3, 8));
                l_seen.push_back(l_bytes[2]);
            }
            l_results.push_back(l_seen);
        }
        for (std::size_t l_index = 1; l_index < l_results.size(); ++l_index) {
            EXPECT_EQ(l_results[l_index], l_results[0]) << k_sources[l_index].m_name << ", skipped " << l_skipped;
        }
        EXPECT_GT(l_results[0].size(), 20u);
    }
}

// A caller that moves the memory stream under the reader: the bytes left in the block are no
// longer those before the position, and the search goes on through them into the memory, as it
// does through a derived stream that the reader reads through its block.
TEST_F(scan_find, a_stream_moved_under_the_reader_goes_on_where_it_stands)
{
    std::string const l_data = planted_data();
    for (uint64 const l_block : {4, 20, 64}) {
        for (sint64 const l_jump : {0, 1, 2, 3, 5, 4093, 12000}) {
            stream::mem l_memory(const_cast<char *>(l_data.data()), l_data.size());
            counting_mem l_derived(const_cast<char *>(l_data.data()), l_data.size());
            bitstream::rd l_in_place(l_memory, l_block);
            bitstream::rd l_through(l_derived, l_block);
            EXPECT_EQ(l_in_place.read(24), l_through.read(24));
            l_memory.seek(l_jump, stream::begin);
            l_derived.seek(l_jump, stream::begin);
            int l_found = 0;
            for (;;) {
                bool const l_match = l_in_place.find(1, 24, 8, 8);
                ASSERT_EQ(l_through.find(1, 24, 8, 8), l_match) << l_block << ", " << l_jump;
                ASSERT_EQ(l_in_place.tell(), l_through.tell()) << l_block << ", " << l_jump;
                ASSERT_EQ(l_in_place.peek(16), l_through.peek(16)) << l_block << ", " << l_jump;
                if (!l_match) {
                    break;
                }
                ++l_found;
            }
            EXPECT_GT(l_found, 0);
        }
    }
}

// Start codes at gaps of 5 to 400 bytes over 40 KB (several stretches of the scan, a few codes
// within the 64 bytes that the block takes from a match), the rest random bytes without 00 00.
std::string spaced_codes()
{
    std::mt19937 l_random(77);
    std::string l_data(40000, '\0');
    for (char &l_byte : l_data) {
        l_byte = static_cast<char>(1 + l_random() % 255);
    }
    for (std::size_t l_at = 3; l_at + 3 < l_data.size();
         l_at += l_random() % 4 == 0 ? 5 + l_random() % 20 : 60 + l_random() % 340) {
        l_data[l_at] = '\0';
        l_data[l_at + 1] = '\0';
        l_data[l_at + 2] = '\1';
    }
    return l_data;
}

// What the reader does between two searches, done the same on both readers.
struct reader_move {
    char const *m_name;
    void (*m_do)(bitstream::rd const &);
};

reader_move const k_reader_moves[] = {
    {"nothing", [](bitstream::rd const &) {}},
    {"a field", [](bitstream::rd const &a_reader) { a_reader.read(5); }},
    {"fields past the bytes taken",
     [](bitstream::rd const &a_reader) {
         for (int l_index = 0; l_index < 20; ++l_index) {
             a_reader.read(32);
         }
     }},
    {"a peek", [](bitstream::rd const &a_reader) { EXPECT_LE(a_reader.peek(20), 0xfffffu); }},
    {"has_bits", [](bitstream::rd const &a_reader) { EXPECT_TRUE(a_reader.has_bits(24)); }},
    {"a skip within the block", [](bitstream::rd const &a_reader) { a_reader.skip(40); }},
    {"a skip through the source", [](bitstream::rd const &a_reader) { a_reader.skip(8 * 5000 + 3); }},
    {"bytes from the block",
     [](bitstream::rd const &a_reader) {
         unsigned char l_bytes[3];
         a_reader.read(l_bytes, 3, 8);
     }},
    {"bytes through the source",
     [](bitstream::rd const &a_reader) {
         unsigned char l_bytes[200];
         a_reader.read(l_bytes, 200, 8);
     }},
    {"an alignment",
     [](bitstream::rd const &a_reader) {
         a_reader.read(3);
         a_reader.align(32);
     }},
};

// The matches that a search over memory keeps for the next ones give way to every move of the
// reader: each search after it finds what a search through the block finds.
TEST_F(scan_find, kept_matches_give_way_to_every_move_of_the_reader)
{
    std::string const l_data = spaced_codes();
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::simd_level_cap(l_level);
        for (source_kind const &l_kind : k_sources) {
            if (l_kind.m_memory != 1 && l_kind.m_memory != 2) {
                continue;
            }
            for (uint64 const l_block : {64, 4096}) {
                for (reader_move const &l_move : k_reader_moves) {
                    opened l_source;
                    open(l_kind, l_data, l_source);
                    counting_mem l_derived(const_cast<char *>(l_data.data()), l_data.size());
                    bitstream::rd l_in_place(*l_source.m_stream, l_block);
                    bitstream::rd l_through(l_derived, l_block);
                    int l_found = 0;
                    for (;;) {
                        bool const l_match = l_in_place.find(1, 24, 8, 8);
                        ASSERT_EQ(l_through.find(1, 24, 8, 8), l_match) << l_move.m_name << ", " << l_kind.m_name;
                        ASSERT_EQ(l_in_place.tell(), l_through.tell())
                            << l_move.m_name << ", " << l_kind.m_name << ", block " << l_block << ", level "
                            << static_cast<unsigned>(l_level) << ", match " << l_found;
                        ASSERT_EQ(l_in_place.peek(24), l_through.peek(24)) << l_move.m_name;
                        if (!l_match) {
                            break;
                        }
                        ++l_found;
                        // Every third search follows the move, so that kept matches are also
                        // taken one after another.
                        if (l_found % 3 == 0) {
                            l_move.m_do(l_in_place);
                            l_move.m_do(l_through);
                        }
                    }
                    EXPECT_GT(l_found, 20) << l_move.m_name;
                }
            }
        }
    }
}

// The reader's data: the bytes left in its block (those before the stream's position when it
// moved), then the memory from the stream's position on. What happens to the stream between two
// searches, given the memory and the position it stood at; it may write the memory, and gives the
// new position.
struct stream_move {
    char const *m_name;
    uint64 (*m_do)(stream::rwa &a_stream, uint64 a_at, uint64 a_next_match);
};

stream_move const k_stream_moves[] = {
    {"a seek to where it stands", [](stream::rwa &a_stream, uint64 a_at,
                                     uint64) { return a_stream.seek(static_cast<sint64>(a_at), stream::begin); }},
    {"a seek back", [](stream::rwa &a_stream, uint64 a_at,
                       uint64) { return a_stream.seek(static_cast<sint64>(a_at) - 10, stream::begin); }},
    {"a seek on by a byte", [](stream::rwa &a_stream, uint64 a_at,
                               uint64) { return a_stream.seek(static_cast<sint64>(a_at) + 1, stream::begin); }},
    {"a seek far on", [](stream::rwa &a_stream, uint64 a_at,
                         uint64) { return a_stream.seek(static_cast<sint64>(a_at) + 2000, stream::begin); }},
    {"a seek to the end", [](stream::rwa &a_stream, uint64, uint64) { return a_stream.seek(0, stream::end); }},
    {"a write of a start code",
     [](stream::rwa &a_stream, uint64, uint64) {
         a_stream.write("\0\0\1", 3);
         return a_stream.tell();
     }},
    {"the next match written over, the stream back where it stood",
     [](stream::rwa &a_stream, uint64 a_at, uint64 a_next_match) {
         a_stream.seek(static_cast<sint64>(a_next_match), stream::begin);
         a_stream.write("\xff\xff\xff", 3);
         return a_stream.seek(static_cast<sint64>(a_at), stream::begin);
     }},
};

TEST_F(scan_find, kept_matches_give_way_to_every_move_of_the_stream)
{
    std::string const l_original = spaced_codes();
    pattern const l_pattern{1, 24};
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::simd_level_cap(l_level);
        for (stream_move const &l_move : k_stream_moves) {
            for (int const l_kind : {1, 2}) {
                std::string l_data = l_original;
                buffer l_buffer;
                std::unique_ptr<stream::rwa> l_stream;
                if (l_kind == 1) {
                    l_stream.reset(new stream::mem(&l_data[0], l_data.size()));
                } else {
                    l_buffer.resize(l_data.size());
                    std::copy(l_data.begin(), l_data.end(), l_buffer.begin());
                    l_stream.reset(new stream::buf(l_buffer));
                }
                bitstream::rd l_reader(*l_stream, 4096);
                for (int l_index = 0; l_index < 7; ++l_index) {
                    ASSERT_TRUE(l_reader.find(1, 24, 8, 8));
                }
                uint64 const l_cursor = l_reader.tell();
                uint64 const l_at = l_stream->tell();
                std::vector<uint64> const l_ahead = matches_by_brute_force(l_original, l_pattern, l_at);
                ASSERT_FALSE(l_ahead.empty());
                uint64 const l_to = l_move.m_do(*l_stream, l_at, l_ahead[0] - 3);
                std::string const l_now =
                    l_kind == 1 ? l_data
                                : std::string(reinterpret_cast<char const *>(l_buffer.begin()), l_buffer.size());
                std::string const l_view = l_original.substr(l_cursor, l_at - l_cursor) + l_now.substr(l_to);
                // A match l_end bytes into the view leaves the cursor there: tell() counts from the
                // stream's position back over the bytes left in the block.
                std::vector<uint64> l_ends;
                while (l_reader.find(1, 24, 8, 8)) {
                    l_ends.push_back(l_reader.tell() + (l_at - l_cursor) - l_to);
                }
                SCOPED_TRACE(testing::Message() << l_move.m_name << ", " << (l_kind == 1 ? "mem" : "buf") << ", level "
                                                << static_cast<unsigned>(l_level));
                EXPECT_EQ(l_ends, matches_by_brute_force(l_view, l_pattern, 0));
                EXPECT_EQ(l_reader.tell(), l_now.size());
            }
        }
    }
}

// A search looks no further ahead than a reader that copies its source block by block: a start
// code written into the memory more than a block beyond the stream's position, the stream left
// where it stood, is found by the next search.
TEST_F(scan_find, a_start_code_written_beyond_a_block_ahead_is_found)
{
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::simd_level_cap(l_level);
        for (uint64 const l_block : {64, 256, 1024}) {
            std::string l_data(20000, '\x55');
            l_data.replace(100, 3, std::string("\0\0\1", 3));
            l_data.replace(15000, 3, std::string("\0\0\1", 3));
            stream::mem l_stream(&l_data[0], l_data.size());
            bitstream::rd l_reader(l_stream, l_block);
            ASSERT_TRUE(l_reader.find(1, 24, 8, 8));
            ASSERT_EQ(l_reader.tell(), 103u);
            uint64 const l_late = l_stream.tell() + l_block + 8;
            l_data.replace(l_late, 3, std::string("\0\0\1", 3));
            ASSERT_TRUE(l_reader.find(1, 24, 8, 8));
            EXPECT_EQ(l_reader.tell(), l_late + 3)
                << "block " << l_block << ", level " << static_cast<unsigned>(l_level);
        }
    }
}

// A new source or a new block: what was kept for the old one goes.
TEST_F(scan_find, kept_matches_go_with_clear_and_set)
{
    std::string const l_first = spaced_codes();
    std::string const l_second = planted_data();
    pattern const l_pattern{1, 24};
    for (simd_level const l_level : ordwel_test::simd_levels_here()) {
        internal::simd_level_cap(l_level);
        for (bool const l_set : {false, true}) {
            for (bool const l_same : {false, true}) {
                stream::mem l_one(const_cast<char *>(l_first.data()), l_first.size());
                stream::mem l_other(const_cast<char *>(l_second.data()), l_second.size());
                bitstream::rd l_reader(l_one, 4096);
                for (int l_index = 0; l_index < 5; ++l_index) {
                    ASSERT_TRUE(l_reader.find(1, 24, 8, 8));
                }
                // The same stream again, moved to a start code's second byte; or another one.
                stream::mem &l_next = l_same ? l_one : l_other;
                std::string const &l_bytes = l_same ? l_first : l_second;
                uint64 const l_from = l_same ? l_one.tell() + 1 : 0;
                l_next.seek(static_cast<sint64>(l_from), stream::begin);
                if (l_set) {
                    l_reader.set(l_next, 4096);
                } else {
                    l_reader.clear(l_next);
                }
                std::vector<uint64> l_ends;
                while (l_reader.find(1, 24, 8, 8)) {
                    l_ends.push_back(l_reader.tell());
                }
                EXPECT_EQ(l_ends, matches_by_brute_force(l_bytes, l_pattern, l_from))
                    << (l_set ? "set" : "clear") << (l_same ? ", same stream" : ", other stream") << ", level "
                    << static_cast<unsigned>(l_level);
            }
        }
    }
}

// Sources of the caller's own see the reads they saw before the memory streams were scanned in
// place: a memory stream of a derived class is read as a scripted one is.
TEST_F(scan_find, other_sources_are_read_as_before)
{
    std::string const l_data = planted_data();
    for (uint64 const l_block : {4, 20, 4096}) {
        counting_mem l_derived(const_cast<char *>(l_data.data()), l_data.size());
        ordwel_test::scripted_rd l_scripted(l_data);
        bitstream::rd l_reader(l_derived, l_block);
        bitstream::rd l_other(l_scripted, l_block);
        while (l_reader.find(1, 24, 8, 8)) {
            ASSERT_TRUE(l_other.find(1, 24, 8, 8));
            ASSERT_EQ(l_derived.m_asked, l_scripted.asked());
        }
        EXPECT_FALSE(l_other.find(1, 24, 8, 8));
        EXPECT_EQ(l_derived.m_asked, l_scripted.asked());
        EXPECT_GT(l_derived.m_asked.size(), l_data.size() / ((l_block + 3) / 4 * 4));
    }
}

} // namespace
