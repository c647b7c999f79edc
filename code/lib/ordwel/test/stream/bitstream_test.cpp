// SPDX-License-Identifier: MIT
#include <ordwel/bitstream.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/stream.h>

#include "support/scripted_streams.h"

namespace {

using namespace ordwel;

// A source over a string; its optional pieces cap what each read hands out.
using source = ordwel_test::scripted_rd;

// A sink that keeps everything written and each write.
using sink = ordwel_test::recording_wr;

std::string bytes(std::vector<unsigned> const &a_values)
{
    std::string l_bytes;
    for (unsigned const l_value : a_values) {
        l_bytes += static_cast<char>(l_value);
    }
    return l_bytes;
}

// The reference: a sequence of bits, most significant bit of each byte first.
struct bit_model {
    std::vector<bool> m_bits;

    void append(uint32 a_value, unsigned a_count)
    {
        for (unsigned l_index = a_count; l_index > 0; --l_index) {
            m_bits.push_back(((a_value >> (l_index - 1)) & 1) != 0);
        }
    }
    uint32 field(std::size_t a_at, unsigned a_count) const
    {
        uint32 l_value = 0;
        for (unsigned l_index = 0; l_index < a_count; ++l_index) {
            std::size_t const l_bit = a_at + l_index;
            l_value = (l_value << 1) | (l_bit < m_bits.size() && m_bits[l_bit] ? 1u : 0u);
        }
        return l_value;
    }
    std::string bytes() const
    {
        std::string l_bytes((m_bits.size() + 7) / 8, '\0');
        for (std::size_t l_bit = 0; l_bit < m_bits.size(); ++l_bit) {
            if (m_bits[l_bit]) {
                l_bytes[l_bit / 8] = static_cast<char>(l_bytes[l_bit / 8] | (0x80 >> (l_bit % 8)));
            }
        }
        return l_bytes;
    }
};

uint32 low_bits(uint32 a_value, unsigned a_count)
{
    return a_count == 0 ? 0 : a_count == 32 ? a_value : a_value & ((1u << a_count) - 1);
}

TEST(bitstream_wr, fields_make_bytes_most_significant_bit_first)
{
    struct row {
        char const *name;
        std::vector<std::pair<uint32, unsigned>> fields;
        std::vector<unsigned> expected;
    } const l_rows[] = {
        {"4 bits of 0xa, 4 of 0xb", {{0xa, 4}, {0xb, 4}}, {0xab}},
        {"3 bits of 5, 5 of 1", {{5, 3}, {1, 5}}, {0xa1}},
        {"4 bits of all ones", {{0xffffffff, 4}}, {0xf0}},
        {"3 bits, then the end", {{7, 3}}, {0xe0}},
        {"32 bits at an offset of 4", {{0x0, 4}, {0x12345678, 32}, {0xf, 4}}, {0x01, 0x23, 0x45, 0x67, 0x8f}},
        {"zero-bit fields write nothing", {{0xffffffff, 0}, {1, 1}, {0xffffffff, 0}}, {0x80}},
        {"a count above 32 counts as 32", {{0x89abcdef, 40}}, {0x89, 0xab, 0xcd, 0xef}},
    };
    for (row const &l_row : l_rows) {
        sink l_sink;
        {
            bitstream::wr l_writer(l_sink, 64);
            for (auto const &l_field : l_row.fields) {
                l_writer.write(l_field.first, l_field.second);
            }
        }
        EXPECT_EQ(l_sink.all(), bytes(l_row.expected)) << l_row.name;
        EXPECT_EQ(l_sink.flushes(), 0) << "the cursor never calls flush";
    }
}

TEST(bitstream_wr, tell_counts_a_begun_byte)
{
    sink l_sink;
    l_sink.write("xyz", 3);
    bitstream::wr l_writer(l_sink, 16);
    EXPECT_EQ(l_writer.tell(), 3u);
    l_writer.write(0x1ff, 9);
    EXPECT_EQ(l_writer.tell(), 5u);
    l_writer.write(0, 7);
    EXPECT_EQ(l_writer.tell(), 5u);
    for (int l_index = 0; l_index < 20; ++l_index) {
        l_writer.write(0xabcdef01, 32);
    }
    EXPECT_EQ(l_writer.tell(), 3u + 2u + 80u);
    EXPECT_LT(l_sink.all().size(), 3u + 82u) << "the block holds the last bytes back";
    for (std::size_t l_index = 1; l_index < l_sink.writes().size(); ++l_index) {
        EXPECT_EQ(l_sink.writes()[l_index].size() % 4, 0u) << "fields go out in whole words";
    }
}

// Every width at every bit offset, across block boundaries: what the writer gives is what the
// model gives, and the reader gives every field back.
TEST(bitstream, every_width_at_every_offset_round_trips)
{
    std::mt19937 l_random(1125);
    for (uint64 const l_block : {4u, 8u, 12u, 64u}) {
        for (unsigned l_width = 0; l_width <= 32; ++l_width) {
            bit_model l_model;
            sink l_sink;
            std::vector<std::pair<uint32, unsigned>> l_fields;
            {
                bitstream::wr l_writer(l_sink, l_block);
                for (unsigned l_offset = 0; l_offset < 64; ++l_offset) {
                    // A field of l_offset % 32 + 1 bits moves the next one to a new offset.
                    unsigned const l_lead = l_offset % 32 + 1;
                    uint32 const l_filler = l_random();
                    uint32 const l_value = l_random();
                    l_writer.write(l_filler, l_lead);
                    l_writer.write(l_value, l_width);
                    l_model.append(low_bits(l_filler, l_lead), l_lead);
                    l_model.append(low_bits(l_value, l_width), l_width);
                    l_fields.emplace_back(low_bits(l_filler, l_lead), l_lead);
                    l_fields.emplace_back(low_bits(l_value, l_width), l_width);
                }
            }
            ASSERT_EQ(l_sink.all(), l_model.bytes()) << "block " << l_block << " width " << l_width;

            source l_source(l_sink.all());
            bitstream::rd l_reader(l_source, l_block);
            std::size_t l_at = 0;
            for (auto const &l_field : l_fields) {
                ASSERT_EQ(l_reader.peek(l_field.second), l_field.first) << l_block << " " << l_width << " " << l_at;
                ASSERT_EQ(l_reader.read(l_field.second), l_field.first) << l_block << " " << l_width << " " << l_at;
                l_at += l_field.second;
                ASSERT_EQ(l_reader.tell(), (l_at + 7) / 8) << "a begun byte counts as consumed";
            }
            EXPECT_EQ(l_reader.read(32), 0u) << "the zero bits of the last byte, then nothing";
            EXPECT_FALSE(l_reader.has_bits(1));
        }
    }
}

TEST(bitstream_rd, past_the_end_reads_zeros_and_stops)
{
    source l_empty("");
    bitstream::rd l_reader(l_empty, 16);
    EXPECT_EQ(l_reader.read(8), 0u);
    EXPECT_FALSE(l_reader.has_bits(1));

    source l_one(bytes({0xc5}));
    l_reader.clear(l_one);
    EXPECT_EQ(l_reader.read(16), 0xc500u) << "the bits there at the top, zeros below";
    EXPECT_FALSE(l_reader.has_bits(1));
    EXPECT_EQ(l_reader.tell(), 1u);
    EXPECT_EQ(l_reader.read(32), 0u);
    EXPECT_EQ(l_reader.read(40), 0u);

    source l_two(bytes({0x12, 0x34, 0x56, 0x78, 0x9a}));
    l_reader.clear(l_two);
    EXPECT_TRUE(l_reader.has_bits(40)) << "a block holds more than 32 bits";
    EXPECT_FALSE(l_reader.has_bits(41));
    EXPECT_EQ(l_reader.read(40), 0x12345678u) << "a count above 32 counts as 32";
}

TEST(bitstream_rd, align_and_boundary_within_a_byte)
{
    source l_source(bytes({0xff, 0x5a, 0x00, 0x80}));
    bitstream::rd l_reader(l_source, 16);
    EXPECT_EQ(l_reader.read(3), 7u);
    EXPECT_EQ(l_reader.boundary(8), 5u);
    EXPECT_EQ(l_reader.boundary(1), 0u);
    l_reader.align(8);
    EXPECT_EQ(l_reader.boundary(8), 0u);
    EXPECT_EQ(l_reader.read(8), 0x5au);
    l_reader.align(8);
    EXPECT_EQ(l_reader.read(8), 0x00u) << "aligned already: nothing moves";
    EXPECT_EQ(l_reader.boundary(0), 0u);
    l_reader.align(0);
    EXPECT_EQ(l_reader.read(1), 1u);
}

TEST(bitstream_wr, align_and_boundary_pad_with_zeros)
{
    sink l_sink;
    {
        bitstream::wr l_writer(l_sink, 8);
        l_writer.write(7, 3);
        EXPECT_EQ(l_writer.boundary(8), 5u);
        l_writer.align(8);
        EXPECT_EQ(l_writer.boundary(8), 0u);
        l_writer.write(0x5a, 8);
        l_writer.align(32);
        l_writer.write(1, 1);
        l_writer.align(8);
        l_writer.write(0xff, 8);
        l_writer.align(64); // to the block's end: the rest of the block is zero
        l_writer.write(0xc, 4);
    }
    EXPECT_EQ(l_sink.all(), bytes({0xe0, 0x5a, 0, 0, 0x80, 0xff, 0, 0, 0xc0}));
}

TEST(bitstream, skips_within_and_across_blocks)
{
    std::mt19937 l_random(1318);
    for (uint64 const l_block : {4u, 8u, 20u}) {
        bit_model l_model;
        sink l_sink;
        std::vector<std::pair<uint64, uint32>> l_steps; // skip, then a 9-bit field
        {
            bitstream::wr l_writer(l_sink, l_block);
            for (int l_index = 0; l_index < 200; ++l_index) {
                uint64 const l_skip = l_index % 10 == 0 ? l_random() % 1000 : l_random() % 40;
                uint32 const l_value = l_random() & 0x1ff;
                l_writer.skip(l_skip);
                l_writer.write(l_value, 9);
                l_model.append(0, 0);
                for (uint64 l_bit = 0; l_bit < l_skip; ++l_bit) {
                    l_model.m_bits.push_back(false);
                }
                l_model.append(l_value, 9);
                l_steps.emplace_back(l_skip, l_value);
            }
            l_writer.skip(3 * l_block * 8 + 5);
        }
        for (uint64 l_bit = 0; l_bit < 3 * l_block * 8 + 5; ++l_bit) {
            l_model.m_bits.push_back(false);
        }
        ASSERT_EQ(l_sink.all(), l_model.bytes()) << l_block;

        source l_source(l_sink.all(), {7});
        bitstream::rd l_reader(l_source, l_block);
        for (auto const &l_step : l_steps) {
            l_reader.skip(l_step.first);
            ASSERT_EQ(l_reader.read(9), l_step.second) << l_block;
        }
        l_reader.skip(~uint64(0) / 2);
        EXPECT_FALSE(l_reader.has_bits(1)) << "a skip past the end stops at the end";
        EXPECT_EQ(l_reader.tell(), l_sink.all().size());
    }
}

// Bulk bytes between fields: the cursor goes to the next byte boundary, bytes come from the block
// first and from the source after it.
TEST(bitstream, bulk_bytes_between_fields)
{
    std::mt19937 l_random(1461);
    std::string l_payload(300, '\0');
    for (char &l_byte : l_payload) {
        l_byte = static_cast<char>(l_random());
    }
    auto const *const l_bytes = reinterpret_cast<unsigned char const *>(l_payload.data());
    sink l_sink;
    {
        bitstream::wr l_writer(l_sink, 32);
        l_writer.write(5, 3);
        l_writer.write(l_bytes, 5, 8); // fits in the block
        l_writer.write(1, 1);
        l_writer.write(l_bytes + 5, 4, 32);  // to a word boundary of the block
        l_writer.write(l_bytes + 9, 200, 8); // more than the block: straight to the sink
        l_writer.write(0x3, 2);
        l_writer.write(l_bytes + 209, 0, 8);
        l_writer.write(l_bytes + 209, 91, 4); // an alignment below 8 counts as 8
    }
    std::string l_expected;
    l_expected += static_cast<char>(0xa0);
    l_expected += l_payload.substr(0, 5);
    l_expected += static_cast<char>(0x80);
    l_expected += std::string(1, '\0'); // 7 bytes in use: on to the word boundary at 8
    l_expected += l_payload.substr(5, 4);
    l_expected += l_payload.substr(9, 200);
    l_expected += static_cast<char>(0xc0);
    l_expected += l_payload.substr(209, 91);
    ASSERT_EQ(l_sink.all(), l_expected);

    source l_source(l_expected);
    bitstream::rd l_reader(l_source, 16);
    unsigned char l_out[300] = {};
    EXPECT_EQ(l_reader.read(3), 5u);
    EXPECT_EQ(l_reader.read(l_out, 5, 8), 5u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_out), 5), l_payload.substr(0, 5));
    EXPECT_EQ(l_reader.read(1), 1u);
    EXPECT_EQ(l_reader.read(l_out, 1, 8), 1u);
    EXPECT_EQ(l_out[0], 0);
    EXPECT_EQ(l_reader.read(l_out, 204, 8), 204u) << "the block's bytes, then one read of the source";
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_out), 204), l_payload.substr(5, 204));
    EXPECT_EQ(l_reader.read(2), 3u);
    EXPECT_EQ(l_reader.read(l_out, 300, 1), 91u) << "the end of the data gives what there is";
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_out), 91), l_payload.substr(209, 91));
    EXPECT_EQ(l_reader.read(l_out, 10, 8), 0u);
}

// A search: the pattern, its width and the step between the positions tested.
struct search {
    uint32 value;
    unsigned bits;
    unsigned step;
};

// The first match at or after a_start in a bit model, testing every position (step 1).
std::size_t first_match(bit_model const &a_model, std::size_t a_start, uint32 a_value, unsigned a_bits)
{
    for (std::size_t l_at = a_start; l_at + a_bits <= a_model.m_bits.size(); ++l_at) {
        if (a_model.field(l_at, a_bits) == low_bits(a_value, a_bits)) {
            return l_at;
        }
    }
    return std::string::npos;
}

TEST(bitstream_rd, find_a_pattern_at_every_bit_offset)
{
    std::mt19937 l_random(1318);
    for (unsigned const l_bits : {1u, 5u, 8u, 13u, 24u, 31u, 32u}) {
        uint32 const l_pattern = low_bits(0xdeadbeef ^ (l_bits * 0x9e3779b9u), l_bits) | (1u << (l_bits - 1));
        for (unsigned l_offset = 0; l_offset < 96; ++l_offset) {
            // Zero bits with one copy of the pattern, so the first match is known; a pattern of one
            // bit is the first one-bit.
            bit_model l_model;
            for (unsigned l_bit = 0; l_bit < l_offset; ++l_bit) {
                l_model.m_bits.push_back(false);
            }
            l_model.append(l_pattern, l_bits);
            l_model.append(l_random(), 32);
            l_model.append(l_random() | 1u, 32);
            std::size_t const l_expected = first_match(l_model, 0, l_pattern, l_bits);
            ASSERT_LE(l_expected, l_offset);
            for (uint64 const l_block : {4u, 8u, 16u}) {
                source l_source(l_model.bytes());
                bitstream::rd l_reader(l_source, l_block);
                ASSERT_TRUE(l_reader.find(l_pattern, l_bits, 1, 1)) << l_bits << " at " << l_offset;
                std::size_t const l_behind = l_expected + l_bits;
                ASSERT_EQ(l_reader.read(32), l_model.field(l_behind, 32))
                    << "the cursor stands behind the pattern: " << l_bits << " at " << l_offset << " block " << l_block;
            }
        }
    }
}

TEST(bitstream_rd, find_at_the_edges)
{
    struct row {
        char const *name;
        std::string data;
        uint64 lead; // bits read before the search
        search what;
        uint64 align;
        bool found;
        uint64 tell_after;
    } const l_rows[] = {
        {"pattern at the very start", bytes({0xca, 0xfe, 0x00, 0x01}), 0, {0xcafe, 16, 8}, 8, true, 2},
        {"pattern in the last bits", bytes({0x00, 0x12, 0x34, 0x56}), 0, {0x3456, 16, 8}, 8, true, 4},
        {"32 bits in the last word", bytes({0x00, 0x12, 0x34, 0x56, 0x78}), 0, {0x12345678, 32, 8}, 8, true, 5},
        {"pattern missing", bytes({0x00, 0x12, 0x34, 0x56}), 0, {0x3457, 16, 8}, 8, false, 4},
        {"3 bits in: tests from the next byte", bytes({0xab, 0xab, 0xcd}), 3, {0xab, 8, 8}, 8, true, 2},
        {"3 bits in, aligned to 1", bytes({0x15, 0x60, 0x00}), 3, {0xab, 8, 1}, 1, true, 2},
        {"no data at all", "", 0, {0, 1, 1}, 1, false, 0},
        {"step 0 counts as 1", bytes({0x01}), 0, {1, 1, 0}, 1, true, 1},
        {"a step of 32 tests the start of each word",
         bytes({0x00, 0x00, 0x00, 0x07, 0x07, 0x00, 0x00, 0x00}),
         0,
         {0x07, 8, 32},
         8,
         true,
         5},
    };
    for (row const &l_row : l_rows) {
        source l_source(l_row.data);
        bitstream::rd l_reader(l_source, 8);
        l_reader.read(l_row.lead);
        EXPECT_EQ(l_reader.find(l_row.what.value, l_row.what.bits, l_row.what.step, l_row.align), l_row.found)
            << l_row.name;
        EXPECT_EQ(l_reader.tell(), l_row.tell_after) << l_row.name;
        if (!l_row.found) {
            EXPECT_FALSE(l_reader.has_bits(1)) << l_row.name;
        }
    }
}

// The step restarts at each word of the block: a step of 12 tests offsets 0, 12 and 24 of every
// word, so a pattern at offset 36 (12 after 24) is not seen, one at 32 is.
TEST(bitstream_rd, find_steps_restart_at_each_word)
{
    bit_model l_at_36;
    l_at_36.append(0, 32);
    l_at_36.append(0, 4);
    l_at_36.append(0xff, 8);
    l_at_36.append(0, 32);
    l_at_36.append(0, 20);
    source l_source(l_at_36.bytes());
    bitstream::rd l_reader(l_source, 64);
    EXPECT_FALSE(l_reader.find(0xff, 8, 12, 1));

    bit_model l_at_32;
    l_at_32.append(0, 32);
    l_at_32.append(0xff, 8);
    l_at_32.append(0, 32);
    l_at_32.append(0, 24);
    source l_source_32(l_at_32.bytes());
    l_reader.clear(l_source_32);
    EXPECT_TRUE(l_reader.find(0xff, 8, 12, 1));
    EXPECT_EQ(l_reader.tell(), 5u);
}

// A source that gives a byte at a time still serves whole fields.
TEST(bitstream_rd, short_reads_still_fill_a_field)
{
    source l_source(bytes({0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc}), {1});
    bitstream::rd l_reader(l_source, 16);
    EXPECT_EQ(l_reader.read(4), 0x1u);
    EXPECT_EQ(l_reader.read(32), 0x23456789u);
    EXPECT_TRUE(l_reader.has_bits(12));
    EXPECT_EQ(l_reader.read(12), 0xabcu);
    EXPECT_FALSE(l_reader.has_bits(1));
}

// The reader's block is the size asked, rounded up to whole 32-bit words: every refill asks the
// source for exactly that many bytes, and fields still come out whole across the small blocks.
TEST(bitstream_rd, block_size_is_rounded_up_to_whole_words)
{
    struct row {
        uint64 asked;
        uint64 block;
    };
    row const l_rows[] = {{0, 4}, {1, 4}, {3, 4}, {4, 4}, {5, 8}, {8, 8}, {9, 12}, {12, 12}, {13, 16}, {100, 100}};
    std::mt19937 l_random(7);
    bit_model l_model;
    for (int l_index = 0; l_index < 200; ++l_index) {
        l_model.append(l_random(), 32);
    }
    std::string const l_data = l_model.bytes();
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.asked);
        ordwel_test::scripted_rd l_source(l_data);
        bitstream::rd l_reader(l_source, l_row.asked);
        std::size_t l_at = 0;
        for (unsigned l_width = 0; l_at + 32 <= l_model.m_bits.size(); l_width = (l_width + 5) % 33) {
            ASSERT_EQ(l_reader.read(l_width), l_model.field(l_at, l_width)) << "at bit " << l_at;
            l_at += l_width;
        }
        ASSERT_FALSE(l_source.asked().empty());
        EXPECT_EQ(l_source.asked(), std::vector<uint64>(l_source.asked().size(), l_row.block));

        ordwel_test::scripted_rd l_again(l_data);
        l_reader.set(l_again, l_row.asked);
        EXPECT_EQ(l_reader.read(32), l_model.field(0, 32));
        EXPECT_EQ(l_again.asked(), std::vector<uint64>(l_again.asked().size(), l_row.block)) << "after set";
    }
}

TEST(bitstream, set_and_clear_change_stream_and_block)
{
    sink l_first;
    sink l_second;
    bitstream::wr l_writer(l_first, 8);
    l_writer.write(0xa, 4);
    l_writer.clear(l_second);
    EXPECT_EQ(l_first.all(), bytes({0xa0})) << "the old sink gets what was written";
    l_writer.write(0x5, 4);
    l_writer.set(l_first, 100);
    EXPECT_EQ(l_second.all(), bytes({0x50}));
    for (int l_index = 0; l_index < 30; ++l_index) {
        l_writer.write(0xff, 8);
    }
    EXPECT_EQ(l_first.all().size(), 1u) << "a block of 100 bytes holds 30";
    l_writer.clear(l_second);
    EXPECT_EQ(l_first.all(), bytes({0xa0}) + std::string(30, '\xff'));

    source l_source(bytes({1, 2, 3}));
    source l_other(bytes({9}));
    bitstream::rd l_reader(l_source, 8);
    EXPECT_EQ(l_reader.read(8), 1u);
    l_reader.clear(l_other);
    EXPECT_EQ(l_reader.read(8), 9u) << "what was buffered from the first source is dropped";
    source l_rest(bytes({2, 3}));
    l_reader.set(l_rest, 64);
    EXPECT_EQ(l_reader.read(16), 0x0203u);
}

} // namespace
