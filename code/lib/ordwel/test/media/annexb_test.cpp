// SPDX-License-Identifier: MIT
#include <ordwel/annexb.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/codecs.h>

#include "support/annexb_streams.h"
#include "support/scripted_streams.h"

namespace {

using namespace ordwel;
using ordwel_test::scripted_rd;

// A unit as a comparable text: start, offset, size, header bytes, and the payload when known.
std::string text_of(annexb::unit const &a_unit, std::string const &a_payload)
{
    return std::to_string(a_unit.m_start) + "," + std::to_string(a_unit.m_offset) + "," +
           std::to_string(a_unit.m_size) + "," + std::to_string(a_unit.m_header[0]) + "," +
           std::to_string(a_unit.m_header[1]) + ":" + a_payload;
}

struct split {
    std::vector<std::string> m_units;
    uint64 m_leading;
};

split split_memory(std::string const &a_bytes)
{
    split l_split;
    annexb::units l_units(a_bytes.data(), a_bytes.size());
    annexb::unit l_unit;
    while (l_units.next(l_unit)) {
        EXPECT_EQ(l_unit.m_data, reinterpret_cast<unsigned char const *>(a_bytes.data()) + l_unit.m_offset);
        l_split.m_units.push_back(text_of(l_unit, a_bytes.substr(l_unit.m_offset, l_unit.m_size)));
    }
    l_split.m_leading = l_units.leading();
    return l_split;
}

// The handler that rebuilds each unit from its pieces and checks what begin told.
class collector : public annexb::unit_handler {
public:
    explicit collector(uint64 a_block) : m_block(a_block) {}

    void begin(annexb::unit const &a_unit) override
    {
        m_begun = a_unit;
        m_payload.clear();
    }
    void data(unsigned char const *a_bytes, uint64 a_count) override
    {
        EXPECT_LE(a_count, m_block);
        m_payload.append(reinterpret_cast<char const *>(a_bytes), a_count);
    }
    void end(annexb::unit const &a_unit) override
    {
        EXPECT_EQ(a_unit.m_start, m_begun.m_start);
        EXPECT_EQ(a_unit.m_offset, m_begun.m_offset);
        EXPECT_EQ(a_unit.m_data, nullptr);
        if (a_unit.m_size >= 2) {
            EXPECT_EQ(std::memcmp(a_unit.m_header, m_begun.m_header, 2), 0);
        }
        m_split.m_units.push_back(text_of(a_unit, m_payload));
    }

    split m_split;

private:
    uint64 m_block;
    annexb::unit m_begun;
    std::string m_payload;
};

// The split of a reader over a_bytes handed out in a_pieces, both ways: unit by unit into a buffer,
// and through a handler; both must agree.
split split_stream(std::string const &a_bytes, std::vector<uint64> const &a_pieces, uint64 a_block)
{
    scripted_rd l_source(a_bytes, a_pieces);
    annexb::unit_reader l_reader(l_source, a_block);
    split l_split;
    annexb::unit l_unit;
    buffer l_payload;
    while (l_reader.next(l_unit, l_payload)) {
        EXPECT_EQ(l_unit.m_data, l_payload.begin());
        l_split.m_units.push_back(text_of(l_unit, std::string(l_payload.begin(), l_payload.end())));
    }
    l_split.m_leading = l_reader.leading();

    scripted_rd l_again(a_bytes, a_pieces);
    annexb::unit_reader l_handed(l_again, a_block);
    collector l_collector(a_block);
    uint64 const l_count = l_handed.for_each(l_collector);
    EXPECT_EQ(l_count, l_collector.m_split.m_units.size());
    EXPECT_EQ(l_collector.m_split.m_units, l_split.m_units);
    EXPECT_EQ(l_handed.leading(), l_split.m_leading);
    return l_split;
}

// Every way of reading gives the same split: memory, and streams in pieces of 1, 2, 3, 5 and 7
// bytes or whole blocks, with a small block and a large one.
split split_every_way(std::string const &a_bytes)
{
    split const l_memory = split_memory(a_bytes);
    // A memory stream is scanned in place, from its position on.
    std::string l_shifted = "\x7f" + a_bytes;
    stream::mem l_in_place(&l_shifted[0], l_shifted.size());
    l_in_place.seek(1, stream::begin);
    annexb::unit_reader l_reader(l_in_place);
    collector l_collector(l_shifted.size());
    l_reader.for_each(l_collector);
    EXPECT_EQ(l_collector.m_split.m_units, l_memory.m_units);
    EXPECT_EQ(l_reader.leading(), l_memory.m_leading);
    for (uint64 const l_piece : {1, 2, 3, 5, 7, 0}) {
        for (uint64 const l_block : {16, 4096}) {
            SCOPED_TRACE(std::to_string(l_piece) + " byte pieces, block " + std::to_string(l_block));
            split const l_stream = split_stream(a_bytes, {l_piece == 0 ? l_block : l_piece}, l_block);
            EXPECT_EQ(l_stream.m_units, l_memory.m_units);
            EXPECT_EQ(l_stream.m_leading, l_memory.m_leading);
        }
    }
    return l_memory;
}

TEST(annexb, splits)
{
    struct row {
        char const *hex;
        uint64 leading;
        std::vector<std::string> units; // start, offset, size, header bytes
    };
    row const l_rows[] = {
        {"", 0, {}},
        {"aabb00", 3, {}},
        {"00000000", 4, {}},
        // A start code at the very end: an empty unit.
        {"000001", 0, {"0,3,0,0,0:"}},
        {"aa00000001", 1, {"1,5,0,0,0:"}},
        // 4- and 3-byte start codes.
        {"0000000167aa00000168bb", 0, {"0,4,2,103,170:", "6,9,2,104,187:"}},
        // Garbage and leading zeros; zeros before a start code and at the end belong to no unit.
        {"1122000001650000000000014100009a0000", 2, {"2,5,1,101,0:", "8,12,4,65,0:"}},
        // Empty units back to back and behind a zero.
        {"00000100000100000000010900", 0, {"0,3,0,0,0:", "3,6,0,0,0:", "7,11,1,9,0:"}},
        // Emulation prevention bytes stay in the payload.
        {"000001650000030000030100", 0, {"0,3,8,101,0:"}},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.hex);
        std::string const l_bytes = string_decode_hex(std::string(l_row.hex));
        split const l_split = split_every_way(l_bytes);
        std::vector<std::string> l_units;
        for (std::string const &l_unit : l_split.m_units) {
            l_units.push_back(l_unit.substr(0, l_unit.find(':') + 1));
        }
        EXPECT_EQ(l_units, l_row.units);
        EXPECT_EQ(l_split.m_leading, l_row.leading);
    }
}

TEST(annexb, random_streams)
{
    // Made-up streams of both codecs: memory and every stream reading give the units they were
    // made of, with a few hundred random read scripts.
    std::mt19937 l_random(2024);
    for (unsigned int l_round = 0; l_round < 60; ++l_round) {
        bool const l_hevc = l_round % 2 == 1;
        ordwel_test::annexb_stream const l_stream = ordwel_test::make_annexb_stream(
            l_random, l_round % 7, 1 + l_round * 3, l_hevc,
            l_hevc ? std::vector<unsigned int>{0, 1, 19, 32, 39} : std::vector<unsigned int>{1, 5, 7, 8});
        std::vector<std::string> l_expected;
        for (annexb::unit const &l_unit : l_stream.m_units) {
            l_expected.push_back(text_of(l_unit, l_stream.m_bytes.substr(l_unit.m_offset, l_unit.m_size)));
        }
        split const l_split = split_every_way(l_stream.m_bytes);
        EXPECT_EQ(l_split.m_units, l_expected);
        EXPECT_EQ(l_split.m_leading, l_stream.m_leading);
        std::vector<uint64> l_script;
        for (unsigned int l_index = 0; l_index < 5; ++l_index) {
            l_script.push_back(1 + l_random() % 9);
        }
        EXPECT_EQ(split_stream(l_stream.m_bytes, l_script, 16).m_units, l_expected);
    }
}

TEST(annexb, long_runs_in_bounded_pieces)
{
    // A payload of 100,000 bytes and a million zeros behind it go through a 64-byte block: the
    // handler sees pieces no longer than the block, the zeros are no unit's.
    std::string l_bytes("\0\0\1\x65", 4);
    for (unsigned int l_index = 0; l_index < 100000; ++l_index) {
        l_bytes += static_cast<char>(l_index % 7 == 0 ? 0 : 0x80 | (l_index & 0x7f));
    }
    l_bytes += '\x01';
    l_bytes.append(1000000, '\0');
    l_bytes.append("\1\x41", 2);
    scripted_rd l_source(l_bytes);
    annexb::unit_reader l_reader(l_source, 64);
    collector l_collector(64);
    EXPECT_EQ(l_reader.for_each(l_collector), 2u);
    EXPECT_EQ(l_collector.m_split.m_units.back(), "1100002,1100006,1,65,0:A");
    EXPECT_EQ(l_collector.m_split.m_units.front().substr(0, 17), "0,3,100002,101,0:");
}

TEST(annexb, header_fields)
{
    unsigned char const l_h264[] = {0x65};
    EXPECT_EQ(annexb::h264_type(l_h264), 5u);
    EXPECT_EQ(annexb::h264_ref_idc(l_h264), 3u);
    EXPECT_STREQ(annexb::h264_type_name(annexb::h264_type(l_h264)), "IDR slice");
    struct row {
        unsigned char header[2];
        unsigned int type;
        unsigned int layer;
        int temporal;
        char const *name;
    };
    row const l_rows[] = {
        {{0x40, 0x01}, 32, 0, 0, "VPS"},        {{0x4e, 0x01}, 39, 0, 0, "prefix SEI"},
        {{0x26, 0x07}, 19, 0, 6, "IDR_W_RADL"}, {{0x01, 0xf9}, 0, 63, 0, "TRAIL_N"},
        {{0x2a, 0x00}, 21, 0, -1, "CRA"},       {{0x7e, 0x0a}, 63, 1, 1, "unspecified"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(annexb::hevc_type(l_row.header), l_row.type);
        EXPECT_EQ(annexb::hevc_layer_id(l_row.header), l_row.layer);
        EXPECT_EQ(annexb::hevc_temporal_id(l_row.header), l_row.temporal);
        EXPECT_STREQ(annexb::hevc_type_name(l_row.type), l_row.name);
    }
    EXPECT_STREQ(annexb::h264_type_name(7), "SPS");
    EXPECT_STREQ(annexb::h264_type_name(39), "SPS");
    EXPECT_STREQ(annexb::hevc_type_name(36), "EOS");
}

} // namespace
