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
using split = std::vector<std::string>;

// A unit as "start,offset,size,header byte,header byte:payload in hex".
std::string text_of(annexb::unit const &a_unit, unsigned char const *a_payload)
{
    return std::to_string(a_unit.m_start) + "," + std::to_string(a_unit.m_offset) + "," +
           std::to_string(a_unit.m_size) + "," + std::to_string(a_unit.m_header[0]) + "," +
           std::to_string(a_unit.m_header[1]) + ":" + string_encode_hex(a_payload, a_unit.m_size);
}

// Rebuilds each unit from the pieces, which are at most a block long, and checks what begin told.
struct collector : annexb::unit_handler {
    collector(uint64 a_block, split &a_units) : m_block(a_block), m_units(&a_units) {}
    void begin(annexb::unit const &a_unit) override { m_begun = a_unit; }
    void data(unsigned char const *a_bytes, uint64 a_count) override
    {
        EXPECT_LE(a_count, m_block);
        m_payload.append(reinterpret_cast<char const *>(a_bytes), a_count);
    }
    void end(annexb::unit const &a_unit) override
    {
        EXPECT_TRUE(a_unit.m_start == m_begun.m_start && a_unit.m_offset == m_begun.m_offset &&
                    a_unit.m_data == nullptr &&
                    (a_unit.m_size < 2 || std::memcmp(a_unit.m_header, m_begun.m_header, 2) == 0));
        m_units->push_back(text_of(a_unit, reinterpret_cast<unsigned char const *>(m_payload.data())));
        m_payload.clear();
    }

    uint64 m_block;
    split *m_units;
    annexb::unit m_begun;
    std::string m_payload;
};

// The units of a reader, unit by unit into a buffer or through a handler, and last "leading N".
split split_stream(stream::rd &a_source, uint64 a_block, bool a_handler)
{
    annexb::unit_reader l_reader(a_source, a_block);
    split l_units;
    annexb::unit l_unit;
    buffer l_payload;
    if (a_handler) {
        collector l_collector(a_block, l_units);
        uint64 const l_count = l_reader.for_each(l_collector);
        EXPECT_EQ(l_count, l_units.size());
    }
    while (!a_handler && l_reader.next(l_unit, l_payload)) {
        EXPECT_EQ(l_unit.m_data, l_payload.begin());
        l_units.push_back(text_of(l_unit, l_payload.begin()));
    }
    l_units.push_back("leading " + std::to_string(l_reader.leading()));
    return l_units;
}

// The split of memory, which every reader gives too: over a memory stream (in place, from its
// position on), and over sources that hand out pieces of 1, 2, 3, 5, 7 bytes or whole blocks, with
// a small block and a large one, unit by unit and through a handler.
split split_every_way(std::string const &a_bytes)
{
    split l_memory;
    annexb::units l_units(a_bytes.data(), a_bytes.size());
    annexb::unit l_unit;
    while (l_units.next(l_unit)) {
        EXPECT_EQ(l_unit.m_data, reinterpret_cast<unsigned char const *>(a_bytes.data()) + l_unit.m_offset);
        l_memory.push_back(text_of(l_unit, l_unit.m_data));
    }
    l_memory.push_back("leading " + std::to_string(l_units.leading()));
    std::string l_shifted = "\x7f" + a_bytes;
    stream::mem l_in_place(&l_shifted[0], l_shifted.size());
    l_in_place.seek(1, stream::begin);
    EXPECT_EQ(split_stream(l_in_place, l_shifted.size(), true), l_memory);
    for (uint64 const l_piece : {1, 2, 3, 5, 7, 4096}) {
        for (uint64 const l_block : {16, 4096}) {
            for (bool const l_handler : {false, true}) {
                scripted_rd l_source(a_bytes, {l_piece});
                EXPECT_EQ(split_stream(l_source, l_block, l_handler), l_memory) << l_piece << " " << l_block;
            }
        }
    }
    return l_memory;
}

TEST(annexb, splits)
{
    std::string const l_zeros(600, '0');
    struct row {
        std::string hex;
        split units; // the last: the bytes before the first start code
    };
    row const l_rows[] = {
        {"", {"leading 0"}},
        {"aabb00", {"leading 3"}},
        {"00000000", {"leading 4"}},
        // A start code at the very end: an empty unit.
        {"000001", {"0,3,0,0,0:", "leading 0"}},
        {"aa00000001", {"1,5,0,0,0:", "leading 1"}},
        // 4- and 3-byte start codes.
        {"0000000167aa00000168bb", {"0,4,2,103,170:67aa", "6,9,2,104,187:68bb", "leading 0"}},
        // Garbage; zeros before a start code and at the end belong to no unit.
        {"1122000001650000000000014100009a0000", {"2,5,1,101,0:65", "8,12,4,65,0:4100009a", "leading 2"}},
        // Empty units back to back and behind a zero.
        {"00000100000100000000010900", {"0,3,0,0,0:", "3,6,0,0,0:", "7,11,1,9,0:09", "leading 0"}},
        // Emulation prevention bytes stay; a long run of zeros inside a unit is handed out whole.
        {"000001650000030000030100", {"0,3,8,101,0:6500000300000301", "leading 0"}},
        {"00000141" + l_zeros + "ff" + l_zeros + "000001",
         {"0,3,302,65,0:41" + l_zeros + "ff", "604,608,0,0,0:", "leading 0"}},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(split_every_way(string_decode_hex(l_row.hex)), l_row.units) << l_row.hex;
    }
}

TEST(annexb, random_streams)
{
    // Made-up streams of both codecs split into the units they were made of, every way, and with
    // random read scripts.
    std::mt19937 l_random(2024);
    for (unsigned int l_round = 0; l_round < 60; ++l_round) {
        bool const l_hevc = l_round % 2 == 1;
        ordwel_test::annexb_stream const l_stream =
            ordwel_test::make_annexb_stream(l_random, l_round % 7, 1 + l_round * 3, l_hevc, {1, 5, 7, 8, 19, 20});
        split l_expected;
        for (annexb::unit const &l_unit : l_stream.m_units) {
            l_expected.push_back(
                text_of(l_unit, reinterpret_cast<unsigned char const *>(l_stream.m_bytes.data()) + l_unit.m_offset));
        }
        l_expected.push_back("leading " + std::to_string(l_stream.m_leading));
        EXPECT_EQ(split_every_way(l_stream.m_bytes), l_expected);
        scripted_rd l_source(l_stream.m_bytes, {1 + l_random() % 9, 1 + l_random() % 9, 1 + l_random() % 9});
        EXPECT_EQ(split_stream(l_source, 16, l_round % 4 == 0), l_expected);
    }
}

TEST(annexb, header_fields)
{
    // The oracle test checks the fields against GStreamer; here the extremes and the names.
    unsigned char const l_idr[] = {0x65};
    unsigned char const l_trail[] = {0x01, 0xf8}; // TRAIL_N, layer 63, nuh_temporal_id_plus1 0
    unsigned char const l_last[] = {0x7f, 0x0f};  // type 63, layer 33, TemporalId 6
    EXPECT_EQ(annexb::h264_type(l_idr) * 10 + annexb::h264_ref_idc(l_idr), 53u);
    EXPECT_EQ(annexb::hevc_type(l_trail) * 100 + annexb::hevc_layer_id(l_trail), 63u);
    EXPECT_EQ(annexb::hevc_type(l_last) * 100 + annexb::hevc_layer_id(l_last), 6333u);
    EXPECT_EQ(annexb::hevc_temporal_id(l_trail) * 10 + annexb::hevc_temporal_id(l_last), -4);
    EXPECT_EQ(std::string(annexb::h264_type_name(5)) + "/" + annexb::h264_type_name(39) + "/" +
                  annexb::hevc_type_name(19) + "/" + annexb::hevc_type_name(39) + "/" + annexb::hevc_type_name(127),
              "IDR slice/SPS/IDR_W_RADL/prefix SEI/unspecified");
}

} // namespace
