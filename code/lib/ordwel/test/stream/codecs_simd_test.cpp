// SPDX-License-Identifier: MIT
// The vector kernels of the Base64 and hex codecs against the scalar ones, on every level that this
// processor has: the same bytes for every input, valid or not. Input and output sit in buffers of
// their exact size, so that a sanitizer sees any access beyond them.

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/cpu_dispatch.h"
#include "stream/codec_kernels.h"
#include "support/simd_levels.h"

namespace {

using namespace ordwel;
using internal::simd_level;
using bytes = std::vector<unsigned char>;

bytes random_bytes(std::mt19937 &a_random, std::size_t a_size)
{
    bytes l_bytes(a_size);
    for (unsigned char &l_byte : l_bytes) {
        l_byte = static_cast<unsigned char>(a_random() & 0xff);
    }
    return l_bytes;
}

bytes base64_encode(simd_level a_level, bytes const &a_bytes)
{
    bytes l_text((a_bytes.size() + 2) / 3 * 4);
    std::size_t const l_size = internal::k_base64_encode.for_level(a_level)(reinterpret_cast<char *>(l_text.data()),
                                                                            a_bytes.data(), a_bytes.size());
    EXPECT_EQ(l_size, l_text.size());
    return l_text;
}

bytes base64_decode(simd_level a_level, bytes const &a_text)
{
    bytes l_bytes(a_text.size() / 4 * 3);
    l_bytes.resize(internal::k_base64_decode.for_level(a_level)(l_bytes.data(), a_text.data(), a_text.size()));
    return l_bytes;
}

bytes hex_encode(simd_level a_level, bytes const &a_bytes)
{
    bytes l_text(2 * a_bytes.size());
    internal::k_hex_encode.for_level(a_level)(reinterpret_cast<char *>(l_text.data()), a_bytes.data(), a_bytes.size());
    return l_text;
}

bytes hex_decode(simd_level a_level, bytes const &a_text)
{
    bytes l_bytes(a_text.size() / 2);
    internal::k_hex_decode.for_level(a_level)(l_bytes.data(), a_text.data(), l_bytes.size());
    return l_bytes;
}

// The hex decoders to hold against the scalar one: each level's from SSE4.1 up, and where the
// processor runs AVX-512, the AVX-512 decoder of processors without VBMI as well.
std::vector<internal::hex_decode_kernel> hex_decoders_here()
{
    std::vector<internal::hex_decode_kernel> l_kernels;
    std::vector<simd_level> const l_levels = ordwel_test::simd_levels_here(simd_level::sse41);
    for (simd_level const l_level : l_levels) {
        l_kernels.push_back(internal::k_hex_decode.for_level(l_level));
    }
    if (!l_levels.empty() && l_levels.back() == simd_level::avx512 && internal::k_hex_decode_avx512_ranges != nullptr) {
        l_kernels.push_back(internal::k_hex_decode_avx512_ranges);
    }
    return l_kernels;
}

// Every kernel of each codec gives the scalar kernel's bytes for a_input.
void expect_base64_decoders_agree(bytes const &a_text)
{
    bytes const l_expected = base64_decode(simd_level::scalar, a_text);
    for (simd_level const l_level : ordwel_test::simd_levels_here(simd_level::sse41)) {
        ASSERT_EQ(base64_decode(l_level, a_text), l_expected)
            << "level " << static_cast<unsigned>(l_level) << ", text of " << a_text.size();
    }
}

void expect_hex_decoders_agree(bytes const &a_text)
{
    bytes const l_expected = hex_decode(simd_level::scalar, a_text);
    std::vector<internal::hex_decode_kernel> const l_kernels = hex_decoders_here();
    for (std::size_t l_kernel = 0; l_kernel < l_kernels.size(); ++l_kernel) {
        bytes l_bytes(a_text.size() / 2);
        l_kernels[l_kernel](l_bytes.data(), a_text.data(), l_bytes.size());
        ASSERT_EQ(l_bytes, l_expected) << "kernel " << l_kernel << ", text of " << a_text.size();
    }
}

void expect_all_agree(bytes const &a_bytes, std::mt19937 &a_random)
{
    bytes const l_base64 = base64_encode(simd_level::scalar, a_bytes);
    bytes l_hex = hex_encode(simd_level::scalar, a_bytes);
    for (simd_level const l_level : ordwel_test::simd_levels_here(simd_level::sse41)) {
        ASSERT_EQ(base64_encode(l_level, a_bytes), l_base64)
            << "level " << static_cast<unsigned>(l_level) << ", bytes " << a_bytes.size();
        ASSERT_EQ(hex_encode(l_level, a_bytes), l_hex)
            << "level " << static_cast<unsigned>(l_level) << ", bytes " << a_bytes.size();
    }
    expect_base64_decoders_agree(l_base64);
    ASSERT_EQ(base64_decode(simd_level::scalar, l_base64), a_bytes);
    // Digits in either case.
    for (unsigned char &l_digit : l_hex) {
        if ((a_random() & 1) != 0) {
            l_digit = static_cast<unsigned char>(std::toupper(l_digit));
        }
    }
    expect_hex_decoders_agree(l_hex);
    ASSERT_EQ(hex_decode(simd_level::scalar, l_hex), a_bytes);
}

TEST(codecs_simd, every_length_up_to_1024_codes_alike)
{
    std::mt19937 l_random(1024u);
    for (std::size_t l_size = 0; l_size <= 1024; ++l_size) {
        expect_all_agree(random_bytes(l_random, l_size), l_random);
    }
}

TEST(codecs_simd, large_random_input_codes_alike)
{
    std::mt19937 l_random(20u);
    for (std::size_t const l_size : {std::size_t(1) << 20, (std::size_t(1) << 20) + 47}) {
        expect_all_agree(random_bytes(l_random, l_size), l_random);
    }
}

// Bytes just outside the alphabet's ranges and the classes that a vector classifier tells apart.
constexpr unsigned char k_base64_foreign[] = {'=', '\n', '\r', ' ', '\0', '-',  '_',  '.',  ':',  '@',
                                              '[', '`',  '{',  '*', ',',  0x7f, 0x80, 0xab, 0xc1, 0xff};

TEST(codecs_simd, base64_foreign_character_at_every_offset_decodes_alike)
{
    std::mt19937 l_random(64u);
    for (std::size_t const l_size : {std::size_t(192), std::size_t(200)}) {
        bytes const l_valid = base64_encode(simd_level::scalar, random_bytes(l_random, l_size));
        for (std::size_t l_offset = 0; l_offset < l_valid.size(); ++l_offset) {
            for (unsigned char const l_foreign : k_base64_foreign) {
                bytes l_text = l_valid;
                l_text[l_offset] = l_foreign;
                expect_base64_decoders_agree(l_text);
            }
        }
    }
}

TEST(codecs_simd, base64_padding_inside_the_text_decodes_alike)
{
    std::mt19937 l_random(4648u);
    bytes const l_valid = base64_encode(simd_level::scalar, random_bytes(l_random, 3 * 80));
    // "=", "==", "===" and "====" ending each group: the groups yield two, one, three, three bytes.
    for (std::size_t l_group = 0; l_group < l_valid.size(); l_group += 4) {
        for (std::size_t l_count = 1; l_count <= 4; ++l_count) {
            bytes l_text = l_valid;
            std::fill_n(l_text.begin() + static_cast<std::ptrdiff_t>(l_group + 4 - l_count), l_count, '=');
            expect_base64_decoders_agree(l_text);
        }
    }
    // Padding that ends a long text, after whole vector blocks.
    bytes const l_long = base64_encode(simd_level::scalar, random_bytes(l_random, 4096 + 1));
    ASSERT_EQ(l_long.back(), '=');
    expect_base64_decoders_agree(l_long);
}

TEST(codecs_simd, base64_text_of_foreign_characters_only_decodes_alike)
{
    std::mt19937 l_random(255u);
    for (std::size_t const l_size : {std::size_t(4), std::size_t(64), std::size_t(256), std::size_t(1028)}) {
        bytes l_text = random_bytes(l_random, l_size);
        expect_base64_decoders_agree(l_text);
        std::fill(l_text.begin(), l_text.end(), '=');
        expect_base64_decoders_agree(l_text);
    }
}

// a_text at a_shift in a block of its exact size, so that a sanitizer sees any access beyond it,
// with a foreign character from a_foreign at a_foreign_at if that lies in the first 128 places.
template <std::size_t t_count>
bytes text_at(bytes const &a_text, std::size_t a_shift, std::size_t a_foreign_at,
              unsigned char const (&a_foreign)[t_count])
{
    bytes l_block(a_shift + a_text.size());
    std::copy(a_text.begin(), a_text.end(), l_block.begin() + static_cast<std::ptrdiff_t>(a_shift));
    if (a_foreign_at < 128) {
        l_block[a_shift + a_foreign_at] = a_foreign[a_foreign_at % t_count];
    }
    return l_block;
}

// Whether a_block holds a_expected from a_shift on.
bool holds_at(bytes const &a_block, std::size_t a_shift, bytes const &a_expected)
{
    return std::equal(a_expected.begin(), a_expected.end(), a_block.begin() + static_cast<std::ptrdiff_t>(a_shift));
}

// The vector kernels first take the groups up to the next cache line, and then whole lines: text
// and room at every position within a line, with a foreign character anywhere in the first two
// lines or none. Each sits at the end of a block of its exact size.
TEST(codecs_simd, base64_codes_alike_from_every_position_in_a_cache_line)
{
    std::mt19937 l_random(6464u);
    bytes const l_bytes = random_bytes(l_random, 3 * 100);
    bytes const l_valid = base64_encode(simd_level::scalar, l_bytes);
    for (std::size_t l_shift = 0; l_shift < 64; ++l_shift) {
        for (simd_level const l_level : ordwel_test::simd_levels_here(simd_level::sse41)) {
            bytes l_room(l_shift + l_valid.size());
            char *const l_text = reinterpret_cast<char *>(l_room.data() + l_shift);
            ASSERT_EQ(internal::k_base64_encode.for_level(l_level)(l_text, l_bytes.data(), l_bytes.size()),
                      l_valid.size());
            ASSERT_TRUE(holds_at(l_room, l_shift, l_valid))
                << "level " << static_cast<unsigned>(l_level) << ", room at " << l_shift;
        }
        for (std::size_t l_foreign_at = 0; l_foreign_at <= 128; ++l_foreign_at) {
            bytes const l_text = text_at(l_valid, l_shift, l_foreign_at, k_base64_foreign);
            unsigned char const *const l_at = l_text.data() + l_shift;
            bytes l_expected(l_valid.size() / 4 * 3);
            l_expected.resize(
                internal::k_base64_decode.for_level(simd_level::scalar)(l_expected.data(), l_at, l_valid.size()));
            for (simd_level const l_level : ordwel_test::simd_levels_here(simd_level::sse41)) {
                bytes l_decoded(l_valid.size() / 4 * 3);
                l_decoded.resize(internal::k_base64_decode.for_level(l_level)(l_decoded.data(), l_at, l_valid.size()));
                ASSERT_EQ(l_decoded, l_expected) << "level " << static_cast<unsigned>(l_level) << ", text at "
                                                 << l_shift << ", foreign character at " << l_foreign_at;
            }
        }
    }
}

constexpr unsigned char k_hex_foreign[] = {'g', 'G', '/', ':', '@', '`', '\0', ' ', 'x', 0x80, 0xc1, 0xe6, 0xff};

TEST(codecs_simd, hex_foreign_character_at_every_offset_decodes_alike)
{
    std::mt19937 l_random(16u);
    for (std::size_t const l_size : {std::size_t(128), std::size_t(141)}) {
        bytes const l_valid = hex_encode(simd_level::scalar, random_bytes(l_random, l_size));
        for (std::size_t l_offset = 0; l_offset < l_valid.size(); ++l_offset) {
            for (unsigned char const l_foreign : k_hex_foreign) {
                bytes l_text = l_valid;
                l_text[l_offset] = l_foreign;
                expect_hex_decoders_agree(l_text);
            }
        }
    }
}

// As for Base64: digits and room at every position within a cache line, with a foreign character
// anywhere in the first two lines or none.
TEST(codecs_simd, hex_codes_alike_from_every_position_in_a_cache_line)
{
    std::mt19937 l_random(1664u);
    bytes const l_bytes = random_bytes(l_random, 200);
    bytes const l_valid = hex_encode(simd_level::scalar, l_bytes);
    for (std::size_t l_shift = 0; l_shift < 64; ++l_shift) {
        for (simd_level const l_level : ordwel_test::simd_levels_here(simd_level::sse41)) {
            bytes l_room(l_shift + l_valid.size());
            internal::k_hex_encode.for_level(l_level)(reinterpret_cast<char *>(l_room.data() + l_shift), l_bytes.data(),
                                                      l_bytes.size());
            ASSERT_TRUE(holds_at(l_room, l_shift, l_valid))
                << "level " << static_cast<unsigned>(l_level) << ", room at " << l_shift;
        }
        for (std::size_t l_foreign_at = 0; l_foreign_at <= 128; ++l_foreign_at) {
            bytes const l_text = text_at(l_valid, l_shift, l_foreign_at, k_hex_foreign);
            unsigned char const *const l_at = l_text.data() + l_shift;
            bytes l_expected(l_bytes.size());
            internal::k_hex_decode.for_level(simd_level::scalar)(l_expected.data(), l_at, l_expected.size());
            std::vector<internal::hex_decode_kernel> const l_kernels = hex_decoders_here();
            for (std::size_t l_kernel = 0; l_kernel < l_kernels.size(); ++l_kernel) {
                bytes l_decoded(l_bytes.size());
                l_kernels[l_kernel](l_decoded.data(), l_at, l_decoded.size());
                ASSERT_EQ(l_decoded, l_expected)
                    << "kernel " << l_kernel << ", text at " << l_shift << ", foreign character at " << l_foreign_at;
            }
        }
    }
}

TEST(codecs_simd, hex_digits_of_both_cases_and_every_byte_decode_alike)
{
    // Every pair of characters, so every byte value in both digit positions.
    bytes l_text;
    for (unsigned l_high = 0; l_high < 256; ++l_high) {
        for (unsigned l_low = 0; l_low < 256; ++l_low) {
            l_text.push_back(static_cast<unsigned char>(l_high));
            l_text.push_back(static_cast<unsigned char>(l_low));
        }
    }
    expect_hex_decoders_agree(l_text);
    bytes const l_upper = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
    bytes l_repeated;
    for (int l_round = 0; l_round < 16; ++l_round) {
        l_repeated.insert(l_repeated.end(), l_upper.begin(), l_upper.end());
    }
    expect_hex_decoders_agree(l_repeated);
    EXPECT_EQ(hex_decode(simd_level::avx2, l_repeated)[5], 0xab);
}

} // namespace
