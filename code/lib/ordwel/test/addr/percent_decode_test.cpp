// SPDX-License-Identifier: MIT
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "addr/percent_decode.h"
#include "core/cpu_dispatch.h"
#include "support/simd_levels.h"

namespace {

using namespace ordwel;
using internal::simd_level;

// The decoding rules, byte by byte.
std::string decoded_by_loop(std::string const &a_text)
{
    auto const l_hex = [](char a_byte) -> unsigned {
        if (a_byte >= '0' && a_byte <= '9') {
            return static_cast<unsigned>(a_byte - '0');
        }
        if ((a_byte | 0x20) >= 'a' && (a_byte | 0x20) <= 'f') {
            return static_cast<unsigned>((a_byte | 0x20) - 'a' + 10);
        }
        return 0;
    };
    std::string l_out;
    for (std::size_t l_at = 0; l_at < a_text.size(); ++l_at) {
        unsigned const l_value = a_text[l_at] == '%' && l_at + 2 < a_text.size()
                                     ? 16 * l_hex(a_text[l_at + 1]) + l_hex(a_text[l_at + 2])
                                     : 0;
        l_out.push_back(l_value != 0 ? static_cast<char>(l_value) : a_text[l_at]);
        l_at += l_value != 0 ? 2 : 0;
    }
    return l_out;
}

// Texts from an alphabet in which '%' is frequent, so that escapes meet each other ("%%41"), block
// ends and the text's end; every density from none to all, at every length up to 300 bytes.
TEST(percent_decode, every_level_decodes_as_the_rules_say)
{
    std::mt19937 l_random(25);
    char const l_alphabet[] = "%%%%0123456789abcdefABCDEFxz/\xc3\x80";
    std::vector<simd_level> const l_levels = ordwel_test::simd_levels_here();
    for (int l_round = 0; l_round < 4000; ++l_round) {
        std::size_t const l_size = static_cast<std::size_t>(l_random() % 301);
        unsigned const l_density = l_random() % 101;
        std::string l_text;
        for (std::size_t l_at = 0; l_at < l_size; ++l_at) {
            l_text.push_back(l_random() % 100 < l_density ? '%' : l_alphabet[l_random() % (sizeof l_alphabet - 1)]);
        }
        std::string const l_expected = decoded_by_loop(l_text);
        for (simd_level const l_level : l_levels) {
            // An output of exactly the input's length: a write beyond it shows under AddressSanitizer.
            std::vector<char> l_out(l_size);
            std::size_t const l_written =
                internal::k_percent_decode.for_level(l_level)(l_out.data(), l_text.data(), l_size);
            ASSERT_EQ(std::string(l_out.data(), l_written), l_expected)
                << "level " << static_cast<unsigned>(l_level) << ", text " << l_text;
        }
    }
}

} // namespace
