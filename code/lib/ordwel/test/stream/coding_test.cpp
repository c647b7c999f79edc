#include <ordwel/coding.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::text_of;

buffer bytes(std::vector<unsigned> const &a_values)
{
    buffer l_bytes;
    for (unsigned const l_value : a_values) {
        l_bytes.append(1, static_cast<unsigned char>(l_value));
    }
    return l_bytes;
}

// Runs a_call and expects es::arg with a_text, raised in coding.cpp.
void expect_arg(std::function<void()> const &a_call, char const *a_text, std::string const &a_what = std::string())
{
    try {
        a_call();
        ADD_FAILURE() << a_what << ": no exception";
    } catch (es::arg const &l_error) {
        EXPECT_STREQ(l_error.what(), a_text) << a_what;
        EXPECT_STREQ(l_error.file(), "coding.cpp") << a_what;
    }
}

char const *const k_out_of_range = "buffer offset out of range";

// Each item with the bytes it must give on the wire.
TEST(coding, items_on_the_wire)
{
    struct row {
        char const *name;
        std::function<void(encoder_network &)> encode;
        std::vector<unsigned> wire;
    } const l_rows[] = {
        {"buffer",
         [](encoder_network &a_e) {
             buffer_encode_network(bytes({1, 2, 3}), a_e);
         },
         {0, 0, 0, 3, 1, 2, 3}},
        {"string", [](encoder_network &a_e) { string_encode_network("abc", a_e); }, {0, 0, 0, 3, 0x61, 0x62, 0x63}},
        {"empty string", [](encoder_network &a_e) { string_encode_network("", a_e); }, {0, 0, 0, 0}},
        {"empty buffer", [](encoder_network &a_e) { buffer_encode_network(buffer(), a_e); }, {0, 0, 0, 0}},
        {"string with a zero byte",
         [](encoder_network &a_e) { string_encode_network(std::string("a\0b", 3), a_e); },
         {0, 0, 0, 3, 0x61, 0, 0x62}},
        {"uint8", [](encoder_network &a_e) { uint8_encode_network(0xab, a_e); }, {0xab}},
        {"uint16", [](encoder_network &a_e) { uint16_encode_network(0x1234, a_e); }, {0x12, 0x34}},
        {"uint32", [](encoder_network &a_e) { uint32_encode_network(0x12345678, a_e); }, {0x12, 0x34, 0x56, 0x78}},
        {"uint64",
         [](encoder_network &a_e) { uint64_encode_network(0x0102030405060708ull, a_e); },
         {1, 2, 3, 4, 5, 6, 7, 8}},
        {"sint8", [](encoder_network &a_e) { sint8_encode_network(-2, a_e); }, {0xfe}},
        {"sint16", [](encoder_network &a_e) { sint16_encode_network(-2, a_e); }, {0xff, 0xfe}},
        {"sint32", [](encoder_network &a_e) { sint32_encode_network(-256, a_e); }, {0xff, 0xff, 0xff, 0x00}},
        {"sint64",
         [](encoder_network &a_e) { sint64_encode_network(std::numeric_limits<sint64>::min(), a_e); },
         {0x80, 0, 0, 0, 0, 0, 0, 0}},
        {"float32", [](encoder_network &a_e) { float32_encode_network(1.0f, a_e); }, {0x3f, 0x80, 0, 0}},
        {"float64", [](encoder_network &a_e) { float64_encode_network(-2.0, a_e); }, {0xc0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (row const &l_row : l_rows) {
        buffer l_message;
        encoder_network l_encoder(l_message);
        l_row.encode(l_encoder);
        EXPECT_EQ(l_message, bytes(l_row.wire)) << l_row.name;
        EXPECT_EQ(l_encoder.size(), l_row.wire.size()) << l_row.name;
        EXPECT_EQ(l_encoder.end() - l_encoder.begin(), static_cast<long>(l_row.wire.size())) << l_row.name;
    }
}

// One message of every item type, several times over, so that the items stand at every offset
// modulo 8; taken apart again, it gives every value back and nothing is left.
struct sample {
    buffer blob = bytes({0, 1, 0xfe, 0xff, 0x80});
    std::string text = std::string("na\0me", 5);
    uint8 u8 = 0xfe;
    uint16 u16 = 0xfedc;
    uint32 u32 = 0xfedcba98u;
    uint64 u64 = 0xfedcba9876543210ull;
    sint8 s8 = -128;
    sint16 s16 = -30000;
    sint32 s32 = -2000000000;
    sint64 s64 = -9000000000000000000ll;
    float32 f32 = -1.5e-7f;
    float64 f64 = 6.02214076e23;
};

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
    sample l_sample;
    l_sample.blob.clear();
    l_sample.text.clear();
    l_sample.u8 = 0;
    l_sample.u16 = 0;
    l_sample.u32 = 0;
    l_sample.u64 = 0;
    l_sample.s8 = 0;
    l_sample.s16 = 0;
    l_sample.s32 = 0;
    l_sample.s64 = 0;
    l_sample.f32 = 0;
    l_sample.f64 = 0;
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

void expect_same(sample const &a_left, sample const &a_right)
{
    EXPECT_EQ(a_left.blob, a_right.blob);
    EXPECT_EQ(a_left.text, a_right.text);
    EXPECT_EQ(a_left.u8, a_right.u8);
    EXPECT_EQ(a_left.u16, a_right.u16);
    EXPECT_EQ(a_left.u32, a_right.u32);
    EXPECT_EQ(a_left.u64, a_right.u64);
    EXPECT_EQ(a_left.s8, a_right.s8);
    EXPECT_EQ(a_left.s16, a_right.s16);
    EXPECT_EQ(a_left.s32, a_right.s32);
    EXPECT_EQ(a_left.s64, a_right.s64);
    EXPECT_EQ(a_left.f32, a_right.f32);
    EXPECT_EQ(a_left.f64, a_right.f64);
}

TEST(coding, every_item_type_round_trips)
{
    buffer l_message;
    encoder_network l_encoder(l_message);
    sample const l_sample;
    for (int l_round = 0; l_round < 8; ++l_round) {
        encode_sample(l_sample, l_encoder);
        uint8_encode_network(static_cast<uint8>(l_round), l_encoder);
    }
    decoder_network l_decoder(l_message);
    for (int l_round = 0; l_round < 8; ++l_round) {
        expect_same(decode_sample(l_decoder), l_sample);
        uint8 l_round_tag = 0;
        uint8_decode_network(l_round_tag, l_decoder);
        EXPECT_EQ(l_round_tag, l_round);
    }
    EXPECT_EQ(l_decoder.left(), 0u);
    EXPECT_TRUE(l_decoder.have(0));
    EXPECT_FALSE(l_decoder.have(1));

    l_decoder.clear();
    EXPECT_EQ(l_decoder.left(), l_message.size()) << "clear decodes the same data afresh";
    expect_same(decode_sample(l_decoder), l_sample);

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
    encode_sample(sample(), l_encoder);
    buffer const l_whole = l_message;
    for (uint64 l_size = 0; l_size < l_whole.size(); ++l_size) {
        // A block of exactly the truncated size, so that a read past it is seen by the sanitizers.
        buffer l_truncated(l_whole.begin(), l_whole.begin() + l_size);
        decoder_network l_decoder(l_truncated);
        expect_arg([&] { decode_sample(l_decoder); }, k_out_of_range, std::to_string(l_size));
        EXPECT_LE(l_decoder.left(), 8u) << l_size;
    }
}

TEST(coding, decoding_a_zero_length_leaves_the_destination)
{
    buffer l_message = bytes({0, 0, 0, 0, 0, 0, 0, 0});
    decoder_network l_decoder(l_message);
    buffer l_blob = buffer_of("full");
    buffer_decode_network(l_blob, l_decoder);
    EXPECT_EQ(text_of(l_blob), "full");
    EXPECT_EQ(l_decoder.left(), 4u);
    std::string l_text = "full";
    string_decode_network(l_text, l_decoder);
    EXPECT_EQ(l_text, "full");
    EXPECT_EQ(l_decoder.left(), 0u);
}

TEST(coding, decoding_replaces_the_destination)
{
    buffer l_message = bytes({0, 0, 0, 2, 'x', 'y', 0, 0, 0, 1, 'z'});
    decoder_network l_decoder(l_message);
    buffer l_blob = buffer_of("longer content");
    buffer_decode_network(l_blob, l_decoder);
    EXPECT_EQ(text_of(l_blob), "xy");
    std::string l_text = "longer content";
    string_decode_network(l_text, l_decoder);
    EXPECT_EQ(l_text, "z");
}

TEST(coding, lengths_need_four_bytes_and_their_bytes_behind_them)
{
    buffer l_short = bytes({0, 0, 0});
    decoder_network l_decoder(l_short);
    buffer l_blob;
    expect_arg([&] { buffer_decode_network(l_blob, l_decoder); }, k_out_of_range, "3 bytes");
    EXPECT_EQ(l_decoder.left(), 3u) << "nothing is taken by a failed length";

    buffer l_long = bytes({0, 0, 0, 10, 1, 2, 3, 4});
    l_decoder.set(l_long);
    std::string l_text = "kept";
    expect_arg([&] { string_decode_network(l_text, l_decoder); }, k_out_of_range, "length 10, 4 bytes");
    EXPECT_EQ(l_decoder.left(), 4u) << "the length has been consumed";
    EXPECT_EQ(l_text, "kept");

    buffer l_huge = bytes({0xff, 0xff, 0xff, 0xff, 1});
    l_decoder.set(l_huge);
    expect_arg([&] { buffer_decode_network(l_blob, l_decoder); }, k_out_of_range, "length 2^32 - 1");
}

TEST(coding, have_compares_with_the_bytes_left)
{
    buffer l_empty;
    decoder_network l_decoder(l_empty);
    EXPECT_TRUE(l_decoder.have(0));
    EXPECT_FALSE(l_decoder.have(1));
    buffer l_five = bytes({1, 2, 3, 4, 5});
    l_decoder.set(l_five);
    EXPECT_TRUE(l_decoder.have(5));
    EXPECT_FALSE(l_decoder.have(6));
    l_decoder.skip(2);
    EXPECT_TRUE(l_decoder.have(3));
    EXPECT_FALSE(l_decoder.have(4));
    EXPECT_TRUE(l_decoder.have(0));
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
    expect_arg([&] { l_decoder.peek(l_out, 3, 4); }, k_out_of_range, "peek");
    expect_arg([&] { l_decoder.peek(l_out, 0, 7); }, k_out_of_range, "peek behind the end");
    EXPECT_EQ(l_decoder.here(0, 6), l_decoder.end());
    EXPECT_EQ(*l_decoder.here(1, 5), 17);
    expect_arg([&] { l_decoder.here(2, 5); }, k_out_of_range, "here");
    expect_arg([&] { l_decoder.here(~uint64(0), 2); }, k_out_of_range, "here with a sum past 64 bits");
    expect_arg([&] { l_decoder.here(2, ~uint64(0)); }, k_out_of_range, "here with a sum past 64 bits");
    expect_arg([&] { l_decoder.read(l_out, 7); }, k_out_of_range, "read");
    expect_arg([&] { l_decoder.advance(4, 3); }, k_out_of_range, "advance");
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
    expect_arg([&] { l_decoder.skip(1); }, "skipping buffer past end");
    l_decoder.clear();
    expect_arg([&] { l_decoder.skip(6); }, "skipping buffer past end");
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
    expect_arg([&] { l_encoder.cut(5); }, "cutting buffer past end");
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
    expect_arg([&] { uint8_decode_network(l_value, l_decoder); }, k_out_of_range);
    l_decoder.normalize();
    EXPECT_TRUE(l_data.empty());
    EXPECT_EQ(l_decoder.left(), 0u);
}

} // namespace
