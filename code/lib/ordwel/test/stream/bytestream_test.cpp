// SPDX-License-Identifier: MIT
#include <ordwel/bytestream.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/scripted_streams.h"
#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::failing_wr;
using ordwel_test::recording_wr;
using ordwel_test::scripted_rd;

// Bytes 0, 1, 2 ... wrapping at 251, so that no two nearby positions hold the same byte.
std::string pattern(std::size_t a_size)
{
    std::string l_text(a_size, '\0');
    for (std::size_t l_index = 0; l_index < a_size; ++l_index) {
        l_text[l_index] = static_cast<char>(l_index % 251);
    }
    return l_text;
}

// The a_size bytes at a_pos read as one number, in big-endian order or little-endian order.
uint64 value_at(std::string const &a_data, uint64 a_pos, unsigned a_size, bool a_big)
{
    uint64 l_value = 0;
    for (unsigned l_index = 0; l_index < a_size; ++l_index) {
        l_value = (l_value << 8) | static_cast<unsigned char>(a_data[a_pos + (a_big ? l_index : a_size - 1 - l_index)]);
    }
    return l_value;
}

// The low a_size bytes of a_value in big-endian order or little-endian order.
std::string bytes_of(uint64 a_value, unsigned a_size, bool a_big)
{
    std::string l_bytes;
    for (unsigned l_index = 0; l_index < a_size; ++l_index) {
        l_bytes += static_cast<char>(a_value >> (8 * (a_big ? a_size - 1 - l_index : l_index)));
    }
    return l_bytes;
}

TEST(bytestream, typed_reads_in_both_orders)
{
    std::string const l_data("\x01\x02\x03\x04\x05\x06\x07\x08\x3f\x80\x00\x00\x00\x00\x80\x3f\xfe", 17);
    scripted_rd l_source(l_data);
    bytestream::rd l_cursor(l_source, 64);
    EXPECT_EQ(l_cursor.peek_u8(), 0x01u);
    EXPECT_EQ(l_cursor.peek_be<uint16>(), 0x0102u);
    EXPECT_EQ(l_cursor.peek_le<uint32>(), 0x04030201u);
    EXPECT_EQ(l_cursor.peek_be<uint64>(), 0x0102030405060708ull);
    EXPECT_EQ(l_cursor.read_le<uint64>(), 0x0807060504030201ull);
    EXPECT_EQ(l_cursor.read_be<float32>(), 1.0f);
    EXPECT_EQ(l_cursor.read_le<float32>(), 1.0f);
    EXPECT_EQ(l_cursor.read_be<sint8>(), -2);
    EXPECT_EQ(l_cursor.tell(), 17u);
}

// A random walk of reads, peeks and skips over sources that give their bytes in pieces of
// various lengths, with blocks of various sizes, checked against the plain data: refills that
// carry bytes over, skips across many blocks and bulk reads that bypass the block all have to
// keep every byte in its place and tell the right position.
TEST(bytestream, rd_random_walk_matches_the_data)
{
    std::string const l_data = pattern(5000);
    for (uint64 l_block : {0u, 1u, 8u, 13u, 64u, 4096u}) {
        for (uint64 l_piece : {1u, 3u, 8u, 11u, 0u}) {
            SCOPED_TRACE("block " + std::to_string(l_block) + " piece " + std::to_string(l_piece));
            std::vector<uint64> l_pieces;
            if (l_piece != 0) {
                l_pieces.push_back(l_piece);
            }
            scripted_rd l_source(l_data, l_pieces);
            bytestream::rd l_cursor(l_source, l_block);
            std::mt19937 l_random(static_cast<unsigned>(l_block * 31 + l_piece));
            uint64 l_pos = 0;
            while (l_pos + 200 < l_data.size()) {
                switch (l_random() % 9) {
                case 0:
                    ASSERT_EQ(l_cursor.read_u8(), value_at(l_data, l_pos++, 1, true));
                    break;
                case 1:
                    ASSERT_EQ(l_cursor.read_be<uint16>(), value_at(l_data, l_pos, 2, true));
                    l_pos += 2;
                    break;
                case 2:
                    ASSERT_EQ(l_cursor.read_le<uint32>(), value_at(l_data, l_pos, 4, false));
                    l_pos += 4;
                    break;
                case 3:
                    ASSERT_EQ(l_cursor.read_be<uint64>(), value_at(l_data, l_pos, 8, true));
                    l_pos += 8;
                    break;
                case 4:
                    ASSERT_EQ(l_cursor.peek_le<uint64>(), value_at(l_data, l_pos, 8, false));
                    ASSERT_EQ(l_cursor.peek_be<sint16>(), static_cast<sint16>(value_at(l_data, l_pos, 2, true)));
                    break;
                case 5: {
                    uint64 const l_count = l_random() % 40;
                    l_cursor.skip(l_count);
                    l_pos += l_count;
                    break;
                }
                case 6: {
                    uint64 const l_count = l_random() % 150;
                    std::string l_bytes(l_count + 1, '#');
                    ASSERT_EQ(l_cursor.read(reinterpret_cast<unsigned char *>(&l_bytes[0]), l_count), l_count);
                    ASSERT_EQ(l_bytes.substr(0, l_count), l_data.substr(l_pos, l_count));
                    ASSERT_EQ(l_bytes[l_count], '#');
                    l_pos += l_count;
                    break;
                }
                case 7: {
                    // One refill reads once: a source that gives less than an item at a time may
                    // leave too few for now, never losing any.
                    bool const l_has = l_cursor.has_bytes(1 + l_random() % 8);
                    if (l_piece == 0 || l_piece >= 8) {
                        ASSERT_TRUE(l_has);
                    }
                } break;
                default:
                    break;
                }
                ASSERT_EQ(l_cursor.tell(), l_pos);
            }
            // The tail: a skip to the last byte, which reads, then a demand past the end.
            l_cursor.skip(l_data.size() - 1 - l_pos);
            EXPECT_EQ(l_cursor.read_u8(), static_cast<unsigned char>(l_data.back()));
            EXPECT_THROW(l_cursor.read_u8(), es::uflow);
        }
    }
}

TEST(bytestream, rd_reads_nothing_before_the_first_demand_and_blocks_are_whole_words)
{
    struct row {
        uint64 requested, asked;
    } const l_rows[] = {{0, 8}, {1, 8}, {8, 8}, {9, 16}, {13, 16}, {100, 104}};
    for (row const &l_row : l_rows) {
        scripted_rd l_source(pattern(300));
        bytestream::rd l_cursor(l_source, l_row.requested);
        EXPECT_EQ(l_source.calls(), 0u);
        EXPECT_EQ(l_source.tell(), 0u);
        EXPECT_EQ(l_cursor.tell(), 0u);
        l_cursor.read_u8();
        EXPECT_EQ(l_source.asked(), std::vector<uint64>{l_row.asked}) << l_row.requested;
        EXPECT_EQ(l_cursor.tell(), 1u) << "tell does not jump with the refill";
    }
}

TEST(bytestream, rd_has_bytes_at_and_near_the_end)
{
    scripted_rd l_one("z");
    bytestream::rd l_cursor(l_one, 16);
    EXPECT_TRUE(l_cursor.has_bytes(1));
    l_cursor.skip(1);
    EXPECT_THROW(static_cast<void>(l_cursor.has_bytes(1)), es::uflow);
    EXPECT_EQ(l_cursor.tell(), 1u);

    // One byte unread and two more in the source: not enough for 4, and the 3 stay readable.
    scripted_rd l_short("abcd", {2});
    l_cursor.clear(l_short);
    EXPECT_EQ(l_cursor.read_u8(), 'a');
    EXPECT_FALSE(l_cursor.has_bytes(4));
    EXPECT_EQ(l_cursor.read_u8(), 'b');
    EXPECT_EQ(l_cursor.read_be<uint16>(), 0x6364u);
    EXPECT_EQ(l_cursor.tell(), 4u);

    // More than a block can hold: no, and nothing lost.
    scripted_rd l_long(pattern(100));
    bytestream::rd l_small(l_long, 8);
    EXPECT_EQ(l_small.read_u8(), 0u);
    EXPECT_FALSE(l_small.has_bytes(60));
    EXPECT_FALSE(l_small.has_bytes(1000));
    for (unsigned l_expected = 1; l_expected < 100; ++l_expected) {
        ASSERT_EQ(l_small.read_u8(), l_expected);
    }
}

TEST(bytestream, rd_an_item_cut_by_the_end_raises_and_keeps_its_bytes)
{
    scripted_rd l_source("\x11\x22\x33", {1});
    bytestream::rd l_cursor(l_source, 8);
    EXPECT_THROW(l_cursor.read_be<uint32>(), es::uflow);
    EXPECT_EQ(l_cursor.tell(), 0u);
    EXPECT_EQ(l_cursor.read_be<uint16>(), 0x1122u);
    EXPECT_EQ(l_cursor.read_u8(), 0x33u);
    EXPECT_THROW(static_cast<void>(l_cursor.peek_u8()), es::uflow);
}

TEST(bytestream, rd_skip_and_bulk_read_past_the_end_raise)
{
    for (uint64 l_count : {11u, 30u, 1000u}) {
        scripted_rd l_source(pattern(10), {3});
        bytestream::rd l_cursor(l_source, 8);
        EXPECT_EQ(l_cursor.read_u8(), 0u);
        EXPECT_THROW(l_cursor.skip(l_count), es::uflow) << l_count;
        EXPECT_EQ(l_cursor.tell(), 10u) << "the skip went as far as the data";
    }
    scripted_rd l_source(pattern(10));
    bytestream::rd l_cursor(l_source, 8);
    unsigned char l_bytes[16];
    EXPECT_THROW(l_cursor.read(l_bytes, 11), es::uflow);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_bytes), 10), pattern(10));
}

TEST(bytestream, rd_bulk_read_takes_the_block_then_bypasses_it)
{
    scripted_rd l_source(pattern(200));
    bytestream::rd l_cursor(l_source, 16);
    EXPECT_EQ(l_cursor.read_u8(), 0u);
    unsigned char l_bytes[100];
    EXPECT_EQ(l_cursor.read(l_bytes, 100), 100u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_bytes), 100), pattern(101).substr(1));
    // 15 came from the block and the other 85 in one read straight into the destination.
    EXPECT_EQ(l_source.asked(), (std::vector<uint64>{16, 85}));
    EXPECT_EQ(l_cursor.tell(), 101u);
    EXPECT_EQ(l_cursor.read_u8(), 101u);
}

TEST(bytestream, rd_alignment_is_reckoned_on_the_unread_bytes)
{
    scripted_rd l_source(pattern(64));
    bytestream::rd l_cursor(l_source, 8);
    l_cursor.skip(2);
    EXPECT_EQ(l_cursor.boundary(4), 2u) << "6 unread";
    EXPECT_EQ(l_cursor.boundary(8), 6u);
    EXPECT_EQ(l_cursor.boundary(1), 0u);
    l_cursor.align(4);
    EXPECT_EQ(l_cursor.boundary(4), 0u);
    EXPECT_EQ(l_cursor.tell(), 4u);
    EXPECT_EQ(l_cursor.read_u8(), 4u);

    // An aligned bulk read first drops the bytes up to the boundary.
    unsigned char l_bytes[4];
    EXPECT_EQ(l_cursor.read(l_bytes, 4, 8), 4u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_bytes), 4), pattern(12).substr(8));
    EXPECT_EQ(l_cursor.tell(), 12u);
    // An alignment of 0 aligns nothing instead of dividing by zero.
    EXPECT_EQ(l_cursor.boundary(0), 0u);
    l_cursor.align(0);
    EXPECT_EQ(l_cursor.tell(), 12u);
}

TEST(bytestream, rd_clear_drops_unread_bytes_and_set_changes_the_block)
{
    scripted_rd l_first("abcdefgh");
    scripted_rd l_second("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    bytestream::rd l_cursor(l_first, 8);
    EXPECT_EQ(l_cursor.read_u8(), 'a');
    l_cursor.clear(l_second);
    EXPECT_EQ(l_cursor.tell(), 0u);
    EXPECT_EQ(l_cursor.read_u8(), 'A');
    l_cursor.set(l_first, 24);
    EXPECT_EQ(l_cursor.tell(), 8u) << "the source's position, all read";
    EXPECT_THROW(l_cursor.read_u8(), es::uflow);
    l_cursor.set(l_second, 24);
    EXPECT_EQ(l_cursor.read_u8(), 'I');
    EXPECT_EQ(l_second.asked().back(), 24u);
}

TEST(bytestream, wr_delivers_the_block_at_destruction_in_one_write)
{
    recording_wr l_sink;
    {
        bytestream::wr l_cursor(l_sink, 64);
        l_cursor.write_u8('a');
        l_cursor.write_be<uint16>(0x6263);
        EXPECT_TRUE(l_sink.writes().empty());
        EXPECT_EQ(l_cursor.tell(), 3u);
    }
    EXPECT_EQ(l_sink.writes(), std::vector<std::string>{"abc"});
    EXPECT_EQ(l_sink.flushes(), 0) << "flushing the sink is the caller's";
}

TEST(bytestream, wr_skip_sends_zeros_in_whole_blocks)
{
    recording_wr l_sink;
    {
        bytestream::wr l_cursor(l_sink, 8);
        l_cursor.write(reinterpret_cast<unsigned char const *>("abc"), 3);
        l_cursor.skip(20);
        EXPECT_EQ(l_sink.writes(), (std::vector<std::string>{std::string("abc\0\0\0\0\0", 8), std::string(8, '\0')}));
        EXPECT_EQ(l_cursor.tell(), 23u);
    }
    EXPECT_EQ(l_sink.writes().size(), 3u);
    EXPECT_EQ(l_sink.all(), std::string("abc") + std::string(20, '\0'));
}

// Whatever the block size and the mix of items, the sink receives the items in order, and tell
// counts both what went out and what waits in the block. A block of 1 is one of 8 bytes, which
// items of 2, 4 and 8 bytes cross at its end.
TEST(bytestream, wr_random_items_arrive_in_order)
{
    for (uint64 l_block : {1u, 8u, 16u, 24u, 1000u}) {
        SCOPED_TRACE(l_block);
        recording_wr l_sink;
        std::string l_expected;
        std::mt19937 l_random(static_cast<unsigned>(l_block));
        {
            bytestream::wr l_cursor(l_sink, l_block);
            for (int l_step = 0; l_step < 2000; ++l_step) {
                uint64 const l_value = (uint64(l_random()) << 32) | l_random();
                switch (l_random() % 7) {
                case 0:
                    l_cursor.write_u8(static_cast<uint8>(l_value));
                    l_expected += bytes_of(l_value, 1, true);
                    break;
                case 1:
                    l_cursor.write_be<uint16>(static_cast<uint16>(l_value));
                    l_expected += bytes_of(l_value, 2, true);
                    break;
                case 2:
                    l_cursor.write_le<uint32>(static_cast<uint32>(l_value));
                    l_expected += bytes_of(l_value, 4, false);
                    break;
                case 3:
                    l_cursor.write_be<uint64>(l_value);
                    l_expected += bytes_of(l_value, 8, true);
                    break;
                case 4: {
                    std::string const l_bytes = pattern(l_random() % 70);
                    l_cursor.write(reinterpret_cast<unsigned char const *>(l_bytes.data()), l_bytes.size());
                    l_expected += l_bytes;
                    break;
                }
                case 5: {
                    uint64 const l_count = l_random() % 30;
                    l_cursor.skip(l_count);
                    l_expected += std::string(l_count, '\0');
                    break;
                }
                default:
                    break;
                }
                ASSERT_EQ(l_cursor.tell(), l_expected.size());
                if (l_step % 64 == 0) {
                    std::string const l_arrived = l_sink.all();
                    ASSERT_EQ(l_arrived, l_expected.substr(0, l_arrived.size()));
                }
            }
        }
        EXPECT_EQ(l_sink.all(), l_expected);
    }
}

TEST(bytestream, wr_large_write_sends_the_block_first)
{
    recording_wr l_sink;
    bytestream::wr l_cursor(l_sink, 16);
    l_cursor.write(reinterpret_cast<unsigned char const *>("0123456789"), 10);
    EXPECT_EQ(l_cursor.tell(), 10u);
    EXPECT_TRUE(l_sink.writes().empty());
    l_cursor.write(reinterpret_cast<unsigned char const *>("abcdefghij"), 10);
    EXPECT_EQ(l_sink.writes(), (std::vector<std::string>{"0123456789", "abcdefghij"}));
    EXPECT_EQ(l_cursor.tell(), 20u);
    l_cursor.write_u8('!');
    l_cursor.clear(l_sink);
    EXPECT_EQ(l_sink.all(), "0123456789abcdefghij!");
}

TEST(bytestream, wr_alignment_pads_with_zeros_even_in_a_reused_block)
{
    recording_wr l_sink;
    bytestream::wr l_cursor(l_sink, 16);
    for (int l_index = 0; l_index < 17; ++l_index) {
        l_cursor.write_u8(0xff);
    }
    EXPECT_EQ(l_cursor.boundary(8), 7u);
    l_cursor.align(8);
    EXPECT_EQ(l_cursor.boundary(8), 0u);
    EXPECT_EQ(l_cursor.tell(), 24u);
    l_cursor.write_u8(0xaa);
    // An aligned bulk write pads as well.
    l_cursor.write(reinterpret_cast<unsigned char const *>("\xbb"), 1, 4);
    l_cursor.clear(l_sink);
    std::string const l_expected =
        std::string(17, '\xff') + std::string(7, '\0') + "\xaa" + std::string(3, '\0') + "\xbb";
    EXPECT_EQ(l_sink.all(), l_expected);
}

TEST(bytestream, wr_set_and_clear_write_out_to_the_old_sink)
{
    recording_wr l_first;
    recording_wr l_second;
    bytestream::wr l_cursor(l_first, 8);
    l_cursor.write_u8('1');
    l_cursor.clear(l_second);
    EXPECT_EQ(l_first.all(), "1");
    l_cursor.write_u8('2');
    l_cursor.set(l_first, 32);
    EXPECT_EQ(l_second.all(), "2");
    l_cursor.write_be<uint16>(0x3334);
    EXPECT_EQ(l_cursor.tell(), 3u);
    l_cursor.clear(l_first);
    EXPECT_EQ(l_first.all(), "134");
}

TEST(bytestream, wr_a_failing_sink_is_reported_unless_unwinding)
{
    failing_wr l_sink;
    EXPECT_THROW(
        {
            bytestream::wr l_cursor(l_sink, 8);
            l_cursor.write_u8(1);
        },
        es::call);
    // While another exception unwinds, the destructor's failure is dropped, not fatal.
    EXPECT_THROW(
        {
            bytestream::wr l_cursor(l_sink, 8);
            l_cursor.write_u8(1);
            es::arg::raise(ORDWEL_HERE, "first");
        },
        es::arg);
    // A write that reaches the sink passes its failure through at once.
    bytestream::wr l_cursor(l_sink, 8);
    EXPECT_THROW(l_cursor.skip(8), es::call);
    EXPECT_EQ(l_cursor.tell(), 0u);
}

// What the writer writes, the reader reads back, whatever the two block sizes.
TEST(bytestream, round_trip_through_a_buffer_stream)
{
    for (uint64 l_block : {8u, 24u, 256u}) {
        buffer l_bytes;
        stream::buf l_stream(l_bytes);
        {
            bytestream::wr l_writer(l_stream, l_block);
            for (uint32 l_index = 0; l_index < 500; ++l_index) {
                l_writer.write_be<uint32>(l_index * 2654435761u);
                l_writer.write_le<float64>(l_index / 7.0);
                l_writer.write_u8(static_cast<uint8>(l_index));
            }
        }
        EXPECT_EQ(l_bytes.size(), 500u * 13);
        l_stream.seek(0, stream::begin);
        bytestream::rd l_reader(l_stream, l_block + 8);
        for (uint32 l_index = 0; l_index < 500; ++l_index) {
            ASSERT_EQ(l_reader.read_be<uint32>(), l_index * 2654435761u);
            ASSERT_EQ(l_reader.read_le<float64>(), l_index / 7.0);
            ASSERT_EQ(l_reader.read_u8(), static_cast<uint8>(l_index));
        }
        EXPECT_THROW(l_reader.read_u8(), es::uflow);
    }
}

} // namespace
