// SPDX-License-Identifier: MIT
#include <ordwel/coding.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::raised_at;
using ordwel_test::text_of;

buffer bytes(std::vector<unsigned> const &a_values)
{
    buffer l_bytes;
    for (unsigned const l_value : a_values) {
        l_bytes.append(1, static_cast<unsigned char>(l_value));
    }
    return l_bytes;
}

std::string const k_out_of_range = "buffer offset out of range @ coding.cpp";

// Every item type in one message, with the bytes it must give on the wire.
TEST(coding, items_on_the_wire)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    buffer_encode_network(bytes({1, 2, 3}), l_encoder);
    string_encode_network("abc", l_encoder);
    string_encode_network("", l_encoder);
    buffer_encode_network(buffer(), l_encoder);
    string_encode_network(std::string("a\0b", 3), l_encoder);
    uint8_encode_network(0xab, l_encoder);
    uint16_encode_network(0x1234, l_encoder);
    uint32_encode_network(0x12345678, l_encoder);
    uint64_encode_network(0x0102030405060708ull, l_encoder);
    sint8_encode_network(-2, l_encoder);
    sint16_encode_network(-2, l_encoder);
    sint32_encode_network(-256, l_encoder);
    sint64_encode_network(std::numeric_limits<sint64>::min(), l_encoder);
    float32_encode_network(1.0f, l_encoder);
    float64_encode_network(-2.0, l_encoder);
    buffer const l_wire =
        bytes({0, 0, 0, 3, 1, 2,    3,    0, 0,    0,    3,    0x61, 0x62, 0x63, 0,    0,    0,    0,
               0, 0, 0, 0, 0, 0,    0,    3, 0x61, 0,    0x62, 0xab, 0x12, 0x34, 0x12, 0x34, 0x56, 0x78,
               1, 2, 3, 4, 5, 6,    7,    8, 0xfe, 0xff, 0xfe, 0xff, 0xff, 0xff, 0x00, 0x80, 0,    0,
               0, 0, 0, 0, 0, 0x3f, 0x80, 0, 0,    0xc0, 0,    0,    0,    0,    0,    0,    0});
    EXPECT_EQ(l_message, l_wire);
    EXPECT_EQ(l_encoder.size(), l_wire.size());
    EXPECT_EQ(l_encoder.end() - l_encoder.begin(), static_cast<long>(l_wire.size()));
}

// One message of every item type, several times over, so that the items stand at every offset
// modulo 8; taken apart again, it gives every value back and nothing is left.
struct sample {
    buffer blob;
    std::string text;
    uint8 u8;
    uint16 u16;
    uint32 u32;
    uint64 u64;
    sint8 s8;
    sint16 s16;
    sint32 s32;
    sint64 s64;
    float32 f32;
    float64 f64;

    auto fields() const { return std::tie(blob, text, u8, u16, u32, u64, s8, s16, s32, s64, f32, f64); }
};

sample const k_sample = {bytes({0, 1, 0xfe, 0xff, 0x80}),
                         std::string("na\0me", 5),
                         0xfe,
                         0xfedc,
                         0xfedcba98u,
                         0xfedcba9876543210ull,
                         -128,
                         -30000,
                         -2000000000,
                         -9000000000000000000ll,
                         -1.5e-7f,
                         6.02214076e23};

void encode_sample(sample const &a_sample, encoder_network &a_encoder)
{
    buffer_encode_network(a_sample.blob, a_encoder);
    uint8_encode_network(a_sample.u8, a_encoder);
    string_encode_network(a_sample.text, a_encoder);
    uint16_encode_network(a_sample.u16, a_encoder);
    sint8_encode_network(a_sample.s8, a_encoder);
    uint32_encode_network(a_sample.u32, a_encoder);
    sint16_encode_network(a_sample.s16, a_encoder);
    uint64_encode_network(a_sample.u64, a_encoder);
    sint32_encode_network(a_sample.s32, a_encoder);
    sint64_encode_network(a_sample.s64, a_encoder);
    float32_encode_network(a_sample.f32, a_encoder);
    float64_encode_network(a_sample.f64, a_encoder);
    string_encode_network(std::string(), a_encoder);
}

sample decode_sample(decoder_network &a_decoder)
{
    sample l_sample{};
    buffer_decode_network(l_sample.blob, a_decoder);
    uint8_decode_network(l_sample.u8, a_decoder);
    string_decode_network(l_sample.text, a_decoder);
    uint16_decode_network(l_sample.u16, a_decoder);
    sint8_decode_network(l_sample.s8, a_decoder);
    uint32_decode_network(l_sample.u32, a_decoder);
    sint16_decode_network(l_sample.s16, a_decoder);
    uint64_decode_network(l_sample.u64, a_decoder);
    sint32_decode_network(l_sample.s32, a_decoder);
    sint64_decode_network(l_sample.s64, a_decoder);
    float32_decode_network(l_sample.f32, a_decoder);
    float64_decode_network(l_sample.f64, a_decoder);
    std::string l_empty = "kept";
    string_decode_network(l_empty, a_decoder);
    EXPECT_EQ(l_empty, "kept");
    return l_sample;
}

TEST(coding, every_item_type_round_trips)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    sample const &l_sample = k_sample;
    for (int l_round = 0; l_round < 8; ++l_round) {
        encode_sample(l_sample, l_encoder);
        uint8_encode_network(static_cast<uint8>(l_round), l_encoder);
    }
    decoder_network l_decoder(l_message);
    for (int l_round = 0; l_round < 8; ++l_round) {
        EXPECT_EQ(decode_sample(l_decoder).fields(), l_sample.fields());
        uint8 l_round_tag = 0;
        uint8_decode_network(l_round_tag, l_decoder);
        EXPECT_EQ(l_round_tag, l_round);
    }
    EXPECT_EQ(l_decoder.left(), 0u);
    EXPECT_TRUE(l_decoder.have(0));
    EXPECT_FALSE(l_decoder.have(1));

    l_decoder.clear();
    EXPECT_EQ(l_decoder.left(), l_message.size()) << "clear decodes the same data afresh";
    EXPECT_EQ(decode_sample(l_decoder).fields(), l_sample.fields());

    float64 l_nan = 0;
    buffer l_special;
    encoder_network l_special_encoder(l_special);
    float64_encode_network(std::numeric_limits<float64>::quiet_NaN(), l_special_encoder);
    float32_encode_network(-0.0f, l_special_encoder);
    decoder_network l_special_decoder(l_special);
    float64_decode_network(l_nan, l_special_decoder);
    EXPECT_TRUE(std::isnan(l_nan));
    float32 l_zero = 1;
    float32_decode_network(l_zero, l_special_decoder);
    EXPECT_TRUE(std::signbit(l_zero));
}

// Every truncation of a message raises "buffer offset out of range" at the first item that does
// not fit, never reads beyond the end, and every item before it came out whole.
TEST(coding, truncated_messages_raise_where_the_data_ends)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    encode_sample(k_sample, l_encoder);
    buffer const l_whole = l_message;
    for (uint64 l_size = 0; l_size < l_whole.size(); ++l_size) {
        // A block of exactly the truncated size, so that a read past it is seen by the sanitizers.
        buffer l_truncated(l_whole.begin(), l_whole.begin() + l_size);
        decoder_network l_decoder(l_truncated);
        EXPECT_EQ(raised_at<es::arg>([&] { decode_sample(l_decoder); }), k_out_of_range) << l_size;
        EXPECT_LE(l_decoder.left(), 8u) << l_size;
    }
}

// A decoded buffer or string replaces the destination, except a zero length, which leaves it.
TEST(coding, decoding_replaces_the_destination_unless_empty)
{
    buffer l_message = bytes({0, 0, 0, 2, 'x', 'y', 0, 0, 0, 1, 'z', 0, 0, 0, 0, 0, 0, 0, 0});
    decoder_network l_decoder(l_message);
    buffer l_blob = buffer_of("longer content");
    buffer_decode_network(l_blob, l_decoder);
    EXPECT_EQ(text_of(l_blob), "xy");
    std::string l_text = "longer content";
    string_decode_network(l_text, l_decoder);
    EXPECT_EQ(l_text, "z");
    buffer_decode_network(l_blob, l_decoder);
    EXPECT_EQ(text_of(l_blob), "xy");
    EXPECT_EQ(l_decoder.left(), 4u);
    string_decode_network(l_text, l_decoder);
    EXPECT_EQ(l_text, "z");
    EXPECT_EQ(l_decoder.left(), 0u);
}

TEST(coding, lengths_need_four_bytes_and_their_bytes_behind_them)
{
    buffer l_short = bytes({0, 0, 0});
    decoder_network l_decoder(l_short);
    buffer l_blob;
    EXPECT_EQ(raised_at<es::arg>([&] { buffer_decode_network(l_blob, l_decoder); }), k_out_of_range);
    EXPECT_EQ(l_decoder.left(), 3u) << "nothing is taken by a failed length";

    buffer l_long = bytes({0, 0, 0, 10, 1, 2, 3, 4});
    l_decoder.set(l_long);
    std::string l_text = "kept";
    EXPECT_EQ(raised_at<es::arg>([&] { string_decode_network(l_text, l_decoder); }), k_out_of_range);
    EXPECT_EQ(l_decoder.left(), 4u) << "the length has been consumed";
    EXPECT_EQ(l_text, "kept");

    buffer l_huge = bytes({0xff, 0xff, 0xff, 0xff, 1});
    l_decoder.set(l_huge);
    EXPECT_EQ(raised_at<es::arg>([&] { buffer_decode_network(l_blob, l_decoder); }), k_out_of_range);
}

// The range checks at their limits: exactly enough bytes work, one more raises and moves nothing.
TEST(coding, range_checks_at_their_limits)
{
    buffer l_data = bytes({10, 11, 12, 13, 14, 15, 16, 17});
    decoder_network l_decoder(l_data);
    l_decoder.skip(2);
    ASSERT_EQ(l_decoder.left(), 6u);
    unsigned char l_out[8] = {};

    l_decoder.peek(l_out, 2, 4);
    EXPECT_EQ(l_out[0], 16);
    EXPECT_EQ(l_out[1], 17);
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.peek(l_out, 3, 4); }), k_out_of_range);
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.peek(l_out, 0, 7); }), k_out_of_range);
    EXPECT_EQ(l_decoder.here(0, 6), l_decoder.end());
    EXPECT_EQ(*l_decoder.here(1, 5), 17);
    EXPECT_EQ(raised_at<es::arg>([&] { static_cast<void>(l_decoder.here(2, 5)); }), k_out_of_range);
    EXPECT_EQ(raised_at<es::arg>([&] { static_cast<void>(l_decoder.here(~uint64(0), 2)); }), k_out_of_range);
    EXPECT_EQ(raised_at<es::arg>([&] { static_cast<void>(l_decoder.here(2, ~uint64(0))); }), k_out_of_range);
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.read(l_out, 7); }), k_out_of_range);
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.advance(4, 3); }), k_out_of_range);
    EXPECT_EQ(l_decoder.left(), 6u) << "a failed operation moves nothing";

    EXPECT_EQ(*l_decoder.advance(1, 2), 14);
    EXPECT_EQ(l_decoder.left(), 3u);
    l_decoder.read(l_out, 3);
    EXPECT_EQ(l_out[0], 15);
    EXPECT_EQ(l_out[2], 17);
    EXPECT_EQ(l_decoder.left(), 0u);
    l_decoder.read(nullptr, 0);
    EXPECT_EQ(l_decoder.advance(0, 0), l_decoder.end());
}

TEST(coding, skip_to_the_end_and_not_past_it)
{
    buffer l_data = bytes({1, 2, 3, 4, 5});
    decoder_network l_decoder(l_data);
    EXPECT_EQ(*l_decoder.skip(1), 2);
    EXPECT_EQ(l_decoder.skip(l_decoder.left()), l_decoder.end());
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.skip(1); }), "skipping buffer past end @ coding.cpp");
    l_decoder.clear();
    EXPECT_EQ(raised_at<es::arg>([&] { l_decoder.skip(6); }), "skipping buffer past end @ coding.cpp");
    EXPECT_EQ(l_decoder.left(), 5u);
    EXPECT_EQ(l_decoder.skip(0), l_decoder.begin());
}

TEST(coding, cut_takes_back_the_end)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    uint32_encode_network(0x01020304, l_encoder);
    l_encoder.cut(4);
    EXPECT_EQ(l_message, bytes({1, 2, 3, 4}));
    EXPECT_EQ(raised_at<es::arg>([&] { l_encoder.cut(5); }), "cutting buffer past end @ coding.cpp");
    EXPECT_EQ(l_message, bytes({1, 2, 3, 4}));
    l_encoder.cut(1);
    EXPECT_EQ(l_message, bytes({1}));
    l_encoder.cut(0);
    EXPECT_EQ(l_encoder.size(), 0u);
}

TEST(coding, encoder_empties_its_buffer_and_decoder_leaves_it)
{
    buffer l_data = buffer_of("filled");
    uint64 const l_capacity = l_data.capacity();
    {
        decoder_network l_decoder(l_data);
        EXPECT_EQ(l_decoder.size(), 6u);
        EXPECT_EQ(l_decoder.left(), 6u);
    }
    EXPECT_EQ(text_of(l_data), "filled");
    {
        encoder_network l_encoder(l_data);
        EXPECT_EQ(l_data.size(), 0u);
        EXPECT_EQ(l_data.capacity(), l_capacity);
        string_encode_network("x", l_encoder);
    }
    EXPECT_EQ(l_data, bytes({0, 0, 0, 1, 'x'})) << "the encoder leaves its message behind";

    buffer l_other = buffer_of("other");
    encoder_network l_encoder(l_data);
    l_encoder.set(l_other);
    EXPECT_TRUE(l_other.empty());
    uint8_encode_network(7, l_encoder);
    EXPECT_EQ(l_other, bytes({7}));
    l_encoder.clear();
    EXPECT_TRUE(l_other.empty());
}

TEST(coding, encoder_advance_and_at_give_room_and_mend_bytes)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    l_encoder.reserve(5000);
    EXPECT_GE(l_message.capacity(), 5000u);
    uint32_encode_network(0, l_encoder);
    unsigned char *const l_room = l_encoder.advance(3);
    EXPECT_EQ(l_room, l_message.begin() + 4);
    l_room[0] = 'a';
    l_room[1] = 'b';
    l_room[2] = 'c';
    l_encoder.at(3) = 3;
    EXPECT_EQ(l_message, bytes({0, 0, 0, 3, 'a', 'b', 'c'}));
    decoder_network l_decoder(l_message);
    std::string l_text;
    string_decode_network(l_text, l_decoder);
    EXPECT_EQ(l_text, "abc");
}

// One string and one buffer take items that grow and shrink, within their capacity and past it;
// each ends as exactly the item. A buffer may also take an item from its own block.
TEST(coding, reused_destinations_take_items_of_every_length)
{
    std::vector<std::string> l_items;
    for (std::size_t const l_length : {40, 3, 17, 16, 60, 1, 33, 5000, 2, 0, 31, 2500}) {
        l_items.emplace_back(l_length, static_cast<char>('a' + l_items.size()));
    }
    buffer l_message;
    encoder_network l_encoder(l_message);
    for (std::string const &l_item : l_items) {
        string_encode_network(l_item, l_encoder);
        buffer_encode_network(buffer_of(l_item), l_encoder);
    }
    decoder_network l_decoder(l_message);
    std::string l_text;
    buffer l_blob(uint64(8));
    for (std::string const &l_item : l_items) {
        std::string const l_before = l_text;
        string_decode_network(l_text, l_decoder);
        buffer_decode_network(l_blob, l_decoder);
        // A zero length leaves both as they were.
        EXPECT_EQ(l_text, l_item.empty() ? l_before : l_item);
        EXPECT_EQ(text_of(l_blob), l_item.empty() ? l_before : l_item);
    }
    EXPECT_EQ(l_decoder.left(), 0u);

    buffer l_own = bytes({0, 0, 0, 3, 'x', 'y', 'z', 9});
    decoder_network l_own_decoder(l_own);
    buffer_decode_network(l_own, l_own_decoder);
    EXPECT_EQ(text_of(l_own), "xyz");
    EXPECT_EQ(l_own_decoder.left(), 0u);
}

// Bytes that differ from their neighbours and from those 64 and 256 places away, so that a block
// copied to the wrong place shows.
std::string pattern(std::size_t a_length, unsigned a_seed)
{
    std::string l_text(a_length, '\0');
    for (std::size_t l_index = 0; l_index < a_length; ++l_index) {
        l_text[l_index] = static_cast<char>(l_index * 131 + (l_index >> 8) * 17 + a_seed);
    }
    return l_text;
}

// The item copy at every length across its size classes (1 to 3, 4, 8, 16, 32 and 64 bytes at a
// time, four blocks of 64, the C library beyond 256): exactly the a_count bytes land, in order, and
// the bytes on either side stay as they were.
TEST(coding, item_copy_writes_exactly_its_bytes_at_every_length)
{
    std::string const l_source = pattern(320, 1);
    for (uint32 l_count = 0; l_count <= 300; ++l_count) {
        std::string l_target(l_count + 64, '\xee');
        coding_detail::copy_item(&l_target[32], l_source.data() + 3, l_count);
        EXPECT_EQ(l_target.substr(0, 32), std::string(32, '\xee')) << l_count;
        EXPECT_EQ(l_target.substr(32, l_count), l_source.substr(3, l_count)) << l_count;
        EXPECT_EQ(l_target.substr(32 + l_count), std::string(32, '\xee')) << l_count;
    }
}

// A string takes items of every length up to past the inline copies, when it was longer before
// (cut in place), empty with room enough (appended to) and empty without room (assigned); each time
// it ends as exactly the item, terminated.
TEST(coding, strings_take_items_of_every_length_from_every_start)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    for (std::size_t l_length = 0; l_length <= 300; ++l_length) {
        string_encode_network(pattern(l_length, static_cast<unsigned>(l_length)), l_encoder);
    }
    struct start {
        std::string m_text;
        std::size_t m_room;
    };
    start const l_starts[] = {{pattern(300, 99), 300}, {std::string(), 400}, {std::string(), 0}};
    for (start const &l_start : l_starts) {
        decoder_network l_decoder(l_message);
        for (std::size_t l_length = 0; l_length <= 300; ++l_length) {
            std::string l_text = l_start.m_text;
            l_text.reserve(l_start.m_room);
            string_decode_network(l_text, l_decoder);
            EXPECT_EQ(l_text, l_length == 0 ? l_start.m_text : pattern(l_length, static_cast<unsigned>(l_length)))
                << l_start.m_text.size() << " " << l_length;
            EXPECT_EQ(l_text.c_str()[l_text.size()], '\0');
        }
        EXPECT_EQ(l_decoder.left(), 0u);
    }
}

// Appending the buffer's own bytes works even when the append moves the block.
TEST(coding, encoder_appends_its_own_bytes_across_growth)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    for (unsigned l_index = 0; l_index < 1000; ++l_index) {
        uint8_encode_network(static_cast<uint8>(l_index), l_encoder);
    }
    ASSERT_LT(l_message.capacity(), 2000u);
    l_encoder.write(l_message.begin(), 1000);
    buffer_encode_network(l_message, l_encoder);
    ASSERT_EQ(l_message.size(), 2000u + 4u + 2000u);
    for (unsigned l_index = 0; l_index < 2000; ++l_index) {
        ASSERT_EQ(l_message[l_index], static_cast<unsigned char>(l_index % 1000)) << l_index;
        ASSERT_EQ(l_message[2004 + l_index], static_cast<unsigned char>(l_index % 1000)) << l_index;
    }
    EXPECT_EQ(l_message[2002], 0x07);
    EXPECT_EQ(l_message[2003], 0xd0);
}

TEST(coding, encoder_normalize_drops_the_front)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    string_encode_network("abcdef", l_encoder);
    l_encoder.normalize(0);
    EXPECT_EQ(l_encoder.size(), 10u);
    l_encoder.normalize(6);
    EXPECT_EQ(text_of(l_message), "cdef");
    l_encoder.normalize(4);
    EXPECT_TRUE(l_message.empty());
    string_encode_network("ab", l_encoder);
    l_encoder.normalize(100);
    EXPECT_TRUE(l_message.empty()) << "a count beyond the size empties the buffer";
}

// A stream of bytes arriving in pieces: fill appends, have tells whether an item is whole, and
// normalize drops what has been taken.
TEST(coding, decoder_takes_in_bytes_and_decodes_in_turns)
{
    buffer l_wire;
    encoder_network l_encoder(l_wire);
    std::vector<std::string> l_sent;
    for (unsigned l_index = 0; l_index < 50; ++l_index) {
        l_sent.push_back(std::string(l_index * 7 % 23, static_cast<char>('a' + l_index % 26)));
        string_encode_network(l_sent.back(), l_encoder);
    }

    buffer l_inbox;
    decoder_network l_decoder(l_inbox);
    std::vector<std::string> l_received;
    uint64 l_at = 0;
    for (uint64 l_piece = 1; l_at < l_wire.size(); l_piece = l_piece % 9 + 1) {
        uint64 const l_count = std::min<uint64>(l_piece, l_wire.size() - l_at);
        unsigned char *const l_filled = l_decoder.fill(l_count, l_wire.begin() + l_at);
        EXPECT_EQ(l_filled, l_decoder.end() - l_count);
        l_at += l_count;
        for (;;) {
            uint32 l_length = 0;
            if (!l_decoder.have(4)) {
                break;
            }
            uint32_peek_network(l_length, l_decoder, 0);
            if (!l_decoder.have(4 + l_length)) {
                break;
            }
            std::string l_text;
            string_decode_network(l_text, l_decoder);
            l_received.push_back(l_text);
        }
        l_decoder.normalize();
        EXPECT_LT(l_inbox.size(), 4u + 23u);
    }
    EXPECT_EQ(l_received.size(), l_sent.size());
    for (std::size_t l_index = 0; l_index < l_sent.size(); ++l_index) {
        if (!l_sent[l_index].empty()) {
            EXPECT_EQ(l_received[l_index], l_sent[l_index]) << l_index;
        }
    }
}

TEST(coding, decoder_fill_normalize_and_reserve)
{
    buffer l_data = bytes({1, 2});
    decoder_network l_decoder(l_data);
    l_decoder.skip(1);
    unsigned char *const l_room = l_decoder.fill(3, nullptr);
    EXPECT_EQ(l_data.size(), 5u);
    EXPECT_EQ(l_room, l_data.begin() + 2);
    l_room[0] = 3;
    l_room[1] = 4;
    l_room[2] = 5;
    EXPECT_EQ(l_decoder.left(), 4u) << "the read position stays";

    l_decoder.fill(l_data.size(), l_data.begin()); // its own bytes
    EXPECT_EQ(l_data, bytes({1, 2, 3, 4, 5, 1, 2, 3, 4, 5}));

    l_decoder.reserve(3000);
    EXPECT_GE(l_data.capacity(), 3001u);

    l_decoder.clear();
    l_decoder.normalize();
    EXPECT_EQ(l_data.size(), 10u) << "offset 0: nothing to drop";
    l_decoder.skip(3);
    l_decoder.normalize();
    EXPECT_EQ(l_data, bytes({4, 5, 1, 2, 3, 4, 5}));
    EXPECT_EQ(l_decoder.left(), 7u);
    l_decoder.skip(7);
    l_decoder.normalize();
    EXPECT_TRUE(l_data.empty());
    EXPECT_EQ(l_decoder.left(), 0u);
}

// Someone else shortens the buffer under the read position: the decoder sees nothing left and
// raises instead of reading outside the buffer.
TEST(coding, decoder_over_a_buffer_shortened_behind_its_back)
{
    buffer l_data = bytes({1, 2, 3, 4, 5, 6});
    decoder_network l_decoder(l_data);
    l_decoder.skip(5);
    l_data.resize(2);
    EXPECT_EQ(l_decoder.left(), 0u);
    EXPECT_FALSE(l_decoder.have(1));
    uint8 l_value = 0;
    EXPECT_EQ(raised_at<es::arg>([&] { uint8_decode_network(l_value, l_decoder); }), k_out_of_range);
    l_decoder.normalize();
    EXPECT_TRUE(l_data.empty());
    EXPECT_EQ(l_decoder.left(), 0u);
}

} // namespace
