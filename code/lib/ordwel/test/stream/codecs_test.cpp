// SPDX-License-Identifier: MIT
#include <ordwel/codecs.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::bytes_of;
using ordwel_test::raised_at;
using ordwel_test::random_bytes;
using ordwel_test::text_of;

// RFC 4648, section 10.
struct base64_vector {
    char const *plain;
    char const *coded;
};
base64_vector const k_rfc4648[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
};

TEST(base64, rfc4648_vectors_both_ways_in_both_result_types)
{
    for (base64_vector const &l_vector : k_rfc4648) {
        std::string const l_plain = l_vector.plain;
        std::string const l_coded = l_vector.coded;
        EXPECT_EQ(string_encode_base64(bytes_of(l_plain), l_plain.size()), l_coded) << l_plain;
        EXPECT_EQ(text_of(buffer_encode_base64(bytes_of(l_plain), l_plain.size())), l_coded) << l_plain;
        EXPECT_EQ(string_decode_base64(bytes_of(l_coded), l_coded.size()), l_plain) << l_coded;
        EXPECT_EQ(text_of(buffer_decode_base64(bytes_of(l_coded), l_coded.size())), l_plain) << l_coded;
    }
}

// The 48 bytes whose code is the whole alphabet in order: every character at its place.
TEST(base64, the_alphabet_in_order)
{
    std::string const l_plain("\x00\x10\x83\x10\x51\x87\x20\x92\x8b\x30\xd3\x8f\x41\x14\x93\x51\x55\x97\x61\x96\x9b\x71"
                              "\xd7\x9f\x82\x18\xa3\x92\x59\xa7\xa2\x9a\xab\xb2\xdb\xaf\xc3\x1c\xb3\xd3\x5d\xb7\xe3\x9e"
                              "\xbb\xf3\xdf\xbf",
                              48);
    std::string const l_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(string_encode_base64(bytes_of(l_plain), 48), l_alphabet);
    EXPECT_EQ(string_decode_base64(bytes_of(l_alphabet), 64), l_plain);
}

TEST(base64, round_trip_of_every_length_and_tail)
{
    std::mt19937 l_random(4648);
    std::vector<std::size_t> l_sizes;
    for (std::size_t l_size = 0; l_size <= 70; ++l_size) {
        l_sizes.push_back(l_size);
    }
    l_sizes.insert(l_sizes.end(), {1023, 1024, 1025, 4095, 65536 + 1});
    for (std::size_t const l_size : l_sizes) {
        std::string const l_plain = random_bytes(l_random, l_size);
        std::string const l_coded = string_encode_base64(bytes_of(l_plain), l_plain.size());
        ASSERT_EQ(l_coded.size(), (l_size + 2) / 3 * 4);
        std::size_t const l_padding = (3 - l_size % 3) % 3;
        ASSERT_EQ(l_coded.find('='), l_padding == 0 ? std::string::npos : l_coded.size() - l_padding) << l_size;
        ASSERT_EQ(text_of(buffer_encode_base64(bytes_of(l_plain), l_plain.size())), l_coded);
        ASSERT_EQ(string_decode_base64(bytes_of(l_coded), l_coded.size()), l_plain) << l_size;
        ASSERT_EQ(text_of(buffer_decode_base64(bytes_of(l_coded), l_coded.size())), l_plain) << l_size;
    }
}

TEST(base64, decoding_a_length_that_is_no_multiple_of_four_raises)
{
    for (std::string const l_text : {"A", "AB", "ABC", "ABCDE", "Zm9vYg=", "Zm9vYg===", "Zm9vYmFy\n"}) {
        EXPECT_EQ(raised_at<es::arg>([&] { static_cast<void>(string_decode_base64(bytes_of(l_text), l_text.size())); }),
                  "n/a @ base64_dec.cpp")
            << l_text;
        EXPECT_EQ(raised_at<es::arg>([&] { static_cast<void>(buffer_decode_base64(bytes_of(l_text), l_text.size())); }),
                  "n/a @ base64_dec.cpp")
            << l_text;
    }
}

// Foreign characters are not reported: the number of them in a group gives its byte count (two:
// one byte, one: two bytes, none, three or four: three bytes), and the bytes come from the value
// 255 as the bit arithmetic takes it.
TEST(base64, foreign_characters_decode_by_their_count_in_the_group)
{
    struct row {
        std::string text;
        std::vector<unsigned> bytes;
    } const l_rows[] = {
        {"QQ==", {0x41}},
        {"QUI=", {0x41, 0x42}},
        {"====", {0xff, 0xff, 0xff}},
        {"Q===", {0x43, 0xff, 0xff}},
        {"=QQQ", {0xfd, 0x04}},
        {"QQ==QUI=", {0x41, 0x41, 0x42}}, // padding in the middle is taken as it comes
        {"Q\nQ=", {0x43}},                // a line break is one more foreign character
        {"QU\r\n", {0x41}},
        {"Q Q=", {0x43}},
        {"-_-_", {0xff, 0xff, 0xff}}, // the URL-safe alphabet is foreign
        {"QU-I", {0x41, 0x4f}},
        {std::string("QU\0I", 4), {0x41, 0x4f}},
        {"QU\xc3\xa9", {0x41}},
        {"Zm9v====", {'f', 'o', 'o', 0xff, 0xff, 0xff}},
    };
    for (row const &l_row : l_rows) {
        std::string l_expected;
        for (unsigned const l_byte : l_row.bytes) {
            l_expected += static_cast<char>(l_byte);
        }
        EXPECT_EQ(string_decode_base64(bytes_of(l_row.text), l_row.text.size()), l_expected) << l_row.text;
        EXPECT_EQ(text_of(buffer_decode_base64(bytes_of(l_row.text), l_row.text.size())), l_expected) << l_row.text;
    }
}

TEST(base64, every_foreign_byte_counts_as_foreign)
{
    std::string const l_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (unsigned l_value = 0; l_value < 256; ++l_value) {
        if (l_alphabet.find(static_cast<char>(l_value)) != std::string::npos) {
            continue;
        }
        std::string const l_text = std::string("QU") + static_cast<char>(l_value) + "=";
        ASSERT_EQ(string_decode_base64(bytes_of(l_text), 4).size(), 1u) << l_value;
    }
}

TEST(codecs, null_pointer_or_empty_input_gives_an_empty_result_without_a_check)
{
    unsigned char const *const l_bytes = nullptr;
    char const *const l_text = nullptr;
    EXPECT_TRUE(buffer_encode_base64(l_bytes, 5).empty());
    EXPECT_TRUE(string_encode_base64(l_bytes, 5).empty());
    EXPECT_TRUE(buffer_decode_base64(l_bytes, 5).empty()) << "the length check comes after the null test";
    EXPECT_TRUE(string_decode_base64(l_bytes, 5).empty());
    EXPECT_TRUE(buffer_encode_hex(l_bytes, 5).empty());
    EXPECT_TRUE(string_encode_hex(l_bytes, 5).empty());
    EXPECT_TRUE(buffer_decode_hex(l_bytes, 5).empty());
    EXPECT_TRUE(string_decode_hex(l_bytes, 5).empty());
    EXPECT_TRUE(buffer_encode_hex(l_text, 5).empty());
    EXPECT_TRUE(string_encode_hex(l_text, 5).empty());
    EXPECT_TRUE(buffer_decode_hex(l_text, 5).empty());
    EXPECT_TRUE(string_decode_hex(l_text, 5).empty());

    unsigned char const l_some[] = {'Q', 'Q', '=', '='};
    EXPECT_TRUE(string_decode_base64(l_some, 0).empty());
    EXPECT_TRUE(string_decode_hex(l_some, 0).empty());
    EXPECT_TRUE(string_decode_hex(std::string()).empty());
    EXPECT_TRUE(buffer_decode_hex(buffer()).empty());
}

TEST(codecs, buffer_results_start_from_a_default_buffer)
{
    unsigned char const l_bytes[] = {1, 2, 3};
    EXPECT_GE(buffer_encode_base64(l_bytes, 3).capacity(), 1024u);
    EXPECT_GE(buffer_decode_base64(bytes_of("AQID"), 4).capacity(), 1024u);
    EXPECT_GE(buffer_encode_hex(l_bytes, 3).capacity(), 1024u);
    EXPECT_GE(buffer_decode_hex("0102", 4).capacity(), 1024u);
    EXPECT_GE(buffer_encode_hex(static_cast<char const *>(nullptr), 0).capacity(), 1024u);
}

TEST(hex, encodes_every_byte_as_two_lowercase_digits)
{
    unsigned char const l_bytes[] = {0x00, 0xff, 0xab};
    EXPECT_EQ(string_encode_hex(l_bytes, 3), "00ffab");
    std::string l_all;
    std::string l_expected;
    for (unsigned l_value = 0; l_value < 256; ++l_value) {
        l_all += static_cast<char>(l_value);
        char l_digits[3];
        std::snprintf(l_digits, sizeof l_digits, "%02x", l_value);
        l_expected += l_digits;
    }
    EXPECT_EQ(string_encode_hex(l_all), l_expected);
    EXPECT_EQ(text_of(buffer_encode_hex(l_all)), l_expected);
    EXPECT_EQ(string_encode_hex(buffer_of(l_all)), l_expected);
    EXPECT_EQ(text_of(buffer_encode_hex(buffer_of(l_all))), l_expected);
    EXPECT_EQ(string_encode_hex(l_all.data(), l_all.size()), l_expected);
    EXPECT_EQ(text_of(buffer_encode_hex(l_all.data(), l_all.size())), l_expected);

    EXPECT_EQ(string_decode_hex(l_expected), l_all);
    EXPECT_EQ(text_of(buffer_decode_hex(l_expected)), l_all);
    EXPECT_EQ(string_decode_hex(buffer_of(l_expected)), l_all);
    EXPECT_EQ(text_of(buffer_decode_hex(buffer_of(l_expected))), l_all);
    EXPECT_EQ(string_decode_hex(l_expected.data(), l_expected.size()), l_all);
    EXPECT_EQ(text_of(buffer_decode_hex(bytes_of(l_expected), l_expected.size())), l_all);
}

TEST(hex, decoding_takes_every_digit_in_both_cases)
{
    EXPECT_EQ(string_decode_hex("0123456789ABCDEFabcdef"), "\x01\x23\x45\x67\x89\xab\xcd\xef\xab\xcd\xef");
}

// A foreign character sets every bit of its digit.
TEST(hex, foreign_characters_set_all_their_bits)
{
    struct row {
        std::string text;
        std::string bytes;
    } const l_rows[] = {
        {"gg", "\xff"}, {"g0", "\xf0"}, {"0g", "\xff"},        {"G1", "\xf1"}, {"1 ", "\xff"},
        {" 1", "\xf1"}, {"x7", "\xf7"}, {"0x7f", "\xff\x7f"},  {"-1", "\xf1"}, {"a:", "\xff"},
        {"@A", "\xfa"}, {"`a", "\xfa"}, {"Ff\nF", "\xff\xff"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(string_decode_hex(l_row.text), l_row.bytes) << l_row.text;
        EXPECT_EQ(text_of(buffer_decode_hex(l_row.text)), l_row.bytes) << l_row.text;
    }
    std::string const l_digits = "0123456789abcdefABCDEF";
    for (unsigned l_value = 0; l_value < 256; ++l_value) {
        if (l_digits.find(static_cast<char>(l_value)) != std::string::npos) {
            continue;
        }
        std::string const l_high = {static_cast<char>(l_value), '5'};
        std::string const l_low = {'5', static_cast<char>(l_value)};
        ASSERT_EQ(string_decode_hex(l_high), "\xf5") << l_value;
        ASSERT_EQ(string_decode_hex(l_low), "\xff") << l_value;
    }
}

TEST(hex, decoding_an_odd_length_raises)
{
    for (std::string const &l_text : std::vector<std::string>{"0", "abc", "00ffa", std::string("\0\0\0", 3)}) {
        std::function<void()> const l_calls[] = {
            [&] { static_cast<void>(string_decode_hex(l_text)); },
            [&] { static_cast<void>(buffer_decode_hex(l_text)); },
            [&] { static_cast<void>(string_decode_hex(buffer_of(l_text))); },
            [&] { static_cast<void>(buffer_decode_hex(bytes_of(l_text), l_text.size())); }};
        for (auto const &l_call : l_calls) {
            EXPECT_EQ(raised_at<es::arg>(l_call), "n/a @ hex_dec.cpp") << l_text;
        }
    }
}

} // namespace
