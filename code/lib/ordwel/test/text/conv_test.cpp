// SPDX-License-Identifier: MIT
#include <ordwel/conv.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;

TEST(conv, percent_rounds_half_up_and_drops_the_sign)
{
    struct row {
        double value;
        unsigned int percent;
    } const l_rows[] = {
        {0.125, 13}, {1.0, 100}, {0.004, 0}, {0.005, 1}, {-0.5, 50}, {0.0, 0}, {-0.0, 0}, {2.5, 250}, {0.994, 99},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.value);
        EXPECT_EQ(conv::double_to_percent(l_row.value), l_row.percent);
        EXPECT_EQ(conv::float_to_percent(static_cast<float>(l_row.value)), l_row.percent);
    }
    // Float arithmetic is its own: 0.285f * 100 rounds up to 28.5 in float, not in double.
    EXPECT_EQ(conv::float_to_percent(0.285f), 29U);
    EXPECT_EQ(conv::double_to_percent(static_cast<double>(0.285f)), 28U);
    // Beyond the range: saturated, never undefined.
    unsigned int const l_max = std::numeric_limits<unsigned int>::max();
    EXPECT_EQ(conv::double_to_percent(1e300), l_max);
    EXPECT_EQ(conv::double_to_percent(-std::numeric_limits<double>::infinity()), l_max);
    EXPECT_EQ(conv::double_to_percent(std::nan("")), 0U);
    EXPECT_EQ(conv::float_to_percent(std::numeric_limits<float>::infinity()), l_max);
    EXPECT_EQ(conv::float_to_percent(std::nanf("")), 0U);
    EXPECT_EQ(conv::double_to_percent(42949672.94), 4294967294U);
}

TEST(conv, fourcc_pads_with_spaces_and_ignores_the_rest)
{
    EXPECT_EQ(conv::fourcc_with_string("ABCDE"), 0x41424344U);
    EXPECT_EQ(conv::fourcc_with_string(""), 0x20202020U);
    EXPECT_EQ(conv::fourcc_with_string("\xFF\x80"), 0xFF802020U);
    EXPECT_EQ(conv::fourcc_with_string(std::string("\0a", 2)), 0x00612020U);
}

TEST(conv, string_to_numbers_with_32_bit_long)
{
    struct row {
        char const *text;
        int base;
        sint32 as_long;
        uint32 as_ulong;
        sint64 as_longlong;
        uint64 as_ulonglong;
    } const l_rows[] = {
        {"42", 10, 42, 42U, 42, 42U},
        {"  -17xyz", 10, -17, 4294967279U, -17, 18446744073709551599ULL},
        {"abc", 10, 0, 0U, 0, 0U},
        {"0x1F", 0, 31, 31U, 31, 31U},
        {"017", 0, 15, 15U, 15, 15U},
        {"2147483647", 10, 2147483647, 2147483647U, 2147483647, 2147483647U},
        {"2147483648", 10, 2147483647, 2147483648U, 2147483648LL, 2147483648U},
        {"-2147483649", 10, -2147483647 - 1, 2147483647U, -2147483649LL, 18446744071562067967ULL},
        {"4294967295", 10, 2147483647, 4294967295U, 4294967295LL, 4294967295U},
        {"4294967296", 10, 2147483647, 4294967295U, 4294967296LL, 4294967296U},
        {"-1", 10, -1, 4294967295U, -1, 18446744073709551615ULL},
        {"-4294967295", 10, -2147483647 - 1, 1U, -4294967295LL, 18446744069414584321ULL},
        {"-4294967296", 10, -2147483647 - 1, 4294967295U, -4294967296LL, 18446744069414584320ULL},
        {"99999999999999999999", 10, 2147483647, 4294967295U, 9223372036854775807LL, 18446744073709551615ULL},
        {"-99999999999999999999", 10, -2147483647 - 1, 4294967295U, -9223372036854775807LL - 1,
         18446744073709551615ULL},
        {"z", 36, 35, 35U, 35, 35U},
        {"12", 1, 0, 0U, 0, 0U}, // no such base: 0, never the C runtime's error handler
        {"12", 37, 0, 0U, 0, 0U},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.text) + " base " + std::to_string(l_row.base));
        EXPECT_EQ(conv::string_to_long(l_row.text, l_row.base), l_row.as_long);
        EXPECT_EQ(conv::string_to_int(l_row.text, l_row.base), l_row.as_long);
        EXPECT_EQ(conv::string_to_longlong(l_row.text, l_row.base), l_row.as_longlong);
#ifdef _WIN32
        // A minus sign in front of a magnitude that overflows the unsigned type: Microsoft's runtime
        // gives all ones, Wine's gives 1. Out of range is the C runtime's to decide.
        bool const l_runtime_defined = l_row.text[0] == '-' && l_row.as_ulong == 4294967295U && l_row.as_long != -1;
        if (l_runtime_defined) {
            continue;
        }
#endif
        EXPECT_EQ(conv::string_to_ulong(l_row.text, l_row.base), l_row.as_ulong);
        EXPECT_EQ(conv::string_to_uint(l_row.text, l_row.base), l_row.as_ulong);
        EXPECT_EQ(conv::string_to_ulonglong(l_row.text, l_row.base), l_row.as_ulonglong);
    }
    EXPECT_EQ(conv::string_to_long(nullptr, 10), 0);
    EXPECT_EQ(conv::string_to_ulong(nullptr, 10), 0U);
    EXPECT_EQ(conv::string_to_longlong(nullptr, 10), 0);
    EXPECT_EQ(conv::string_to_ulonglong(nullptr, 10), 0U);
}

TEST(conv, string_to_floating_point_and_flags)
{
    EXPECT_DOUBLE_EQ(conv::string_to_double("2.5e3x"), 2500.0);
    EXPECT_DOUBLE_EQ(conv::string_to_double("nope"), 0.0);
    EXPECT_DOUBLE_EQ(conv::string_to_double(nullptr), 0.0);
    EXPECT_FLOAT_EQ(conv::string_to_float(" -0.25"), -0.25f);
    EXPECT_FLOAT_EQ(conv::string_to_float(nullptr), 0.0f);
    EXPECT_STREQ(conv::true_false_c_str(true), "true");
    EXPECT_STREQ(conv::true_false_c_str(false), "false");
    EXPECT_STREQ(conv::yes_no_c_str(true), "yes");
    EXPECT_STREQ(conv::yes_no_c_str(false), "no");
}

TEST(math, epsilon_and_random_ranges)
{
    EXPECT_EQ(math::float_epsilon(), 1.1920928955078125e-7);
    EXPECT_EQ(math::rand_max(), 32767);

    math::rand_seed(7);
    std::set<int> l_seen;
    int l_high_bits = 0;
    for (int l_round = 0; l_round < 3000; ++l_round) {
        EXPECT_EQ(math::rand_int(5, 5), 5);
        int const l_value = math::rand_int(1, 3);
        EXPECT_TRUE(l_value >= 1 && l_value <= 3) << l_value;
        l_seen.insert(l_value);
        // The full range 0..32767: every result stays in it, and the top bit shows up.
        int const l_full = math::rand_int(0, 32767);
        EXPECT_TRUE(l_full >= 0 && l_full <= 32767) << l_full;
        l_high_bits += l_full >= 16384 ? 1 : 0;
        // high below low: low + rand() % |high - low + 1|, so above low.
        int const l_reversed = math::rand_int(10, 7);
        EXPECT_TRUE(l_reversed >= 10 && l_reversed <= 11) << l_reversed;
        float const l_float = math::rand_float(2.0f, 4.0f);
        EXPECT_TRUE(l_float >= 2.0f && l_float <= 4.0f) << l_float;
        float const l_above = math::rand_float(4.0f, 2.0f);
        EXPECT_TRUE(l_above >= 4.0f && l_above <= 6.0f) << l_above;
    }
    EXPECT_EQ(l_seen, (std::set<int>{1, 2, 3}));
    EXPECT_GT(l_high_bits, 1000);
    EXPECT_LT(l_high_bits, 2000);

    // The same seed gives the same sequence.
    auto const l_sequence = [] {
        math::rand_seed(99);
        std::vector<int> l_values(10);
        for (int &l_value : l_values) {
            l_value = math::rand_int(0, 1000000);
        }
        return l_values;
    };
    EXPECT_EQ(l_sequence(), l_sequence());
    // A span of 2^31 + 1 wraps negative in 32 bits; its absolute value still exceeds every rand()
    // result, so the result lies in the first 32768 values from low.
    int const l_wide = math::rand_int(std::numeric_limits<int>::min(), 0);
    EXPECT_TRUE(l_wide >= std::numeric_limits<int>::min() && l_wide <= std::numeric_limits<int>::min() + 32767);
}

TEST(version, value_is_four_bytes_ored)
{
    struct row {
        char const *text;
        uint32 value;
    } const l_rows[] = {
        {"1.2.3.4", 0x01020304U},     {"1.2", 0x01020000U},   {"", 0U},
        {"1.2.3.4.5", 0x01020304U},   {"1a.2b", 0x01020000U}, {"x.2", 0x00020000U},
        {"1.256", 0x01000000U},       {"2.256", 0x03000000U}, {"1..3", 0x01000300U},
        {"0.0.0.65535", 0x0000FFFFU}, {"300", 0x2C000000U},   {"4294967295", 0xFF000000U},
        {"-1.0", 0xFF000000U},        {" 7.8", 0x07080000U},  {"0.0.0.4294967295", 0xFFFFFFFFU},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(version::value_with_string(l_row.text), l_row.value);
    }
}

TEST(version, orderings_run_from_the_highest_down)
{
    struct row {
        char const *first, *second;
        bool less, greater;
    } const l_rows[] = {
        {"2.0", "1.9", true, false},      {"1.9", "2.0", false, true},
        {"1.2", "1.2.0.0", false, false}, {"1.2.3.4.5", "1.2.3.4", false, false},
        {"1.256", "1.0", false, false},   {"2.256", "3.0", false, false},
        {"1.10", "1.9", true, false},     {"", "0", false, false},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.first) + " vs " + l_row.second);
        EXPECT_EQ(version::less()(l_row.first, l_row.second), l_row.less);
        EXPECT_EQ(version::greater()(l_row.first, l_row.second), l_row.greater);
    }
    std::map<std::string, int, version::less> l_versions{{"1.0", 1}, {"3.1", 3}, {"2.0.5", 2}};
    std::vector<std::string> l_order;
    for (auto const &l_entry : l_versions) {
        l_order.push_back(l_entry.first);
    }
    EXPECT_EQ(l_order, (std::vector<std::string>{"3.1", "2.0.5", "1.0"}));
}

TEST(utf8, signature)
{
    std::string const l_bom = "\xEF\xBB\xBF";
    EXPECT_TRUE(has_utf8_signature(l_bom));
    EXPECT_TRUE(has_utf8_signature(l_bom + "x"));
    EXPECT_FALSE(has_utf8_signature(std::string("\xEF\xBB")));
    EXPECT_FALSE(has_utf8_signature(std::string("x") + l_bom));
    EXPECT_TRUE(has_utf8_signature(ordwel_test::buffer_of(l_bom)));
    EXPECT_FALSE(has_utf8_signature(ordwel_test::buffer_of("\xEF\xBB")));
    EXPECT_FALSE(has_utf8_signature(buffer()));

    for (std::string const &l_rest : {std::string(), std::string("abc"), std::string("\xEF\xBB\xBF", 3)}) {
        std::string l_text = l_bom + l_rest;
        remove_utf8_signature_if_present(l_text);
        EXPECT_EQ(l_text, l_rest); // only one signature goes
        buffer l_bytes = ordwel_test::buffer_of(l_bom + l_rest);
        remove_utf8_signature_if_present(l_bytes);
        EXPECT_EQ(ordwel_test::text_of(l_bytes), l_rest);
    }
    std::string l_plain = "\xEF\xBB";
    remove_utf8_signature_if_present(l_plain);
    EXPECT_EQ(l_plain, "\xEF\xBB");
    buffer l_bytes = ordwel_test::buffer_of("plain");
    remove_utf8_signature_if_present(l_bytes);
    EXPECT_EQ(ordwel_test::text_of(l_bytes), "plain");
}

// The first and last byte of every range a sequence can start with, and of the two that start none.
TEST(utf8, sequence_lengths_at_the_edges_of_each_lead_byte_range)
{
    struct row {
        unsigned char byte;
        int length;
    } const l_rows[] = {
        {0x00, 1}, {0x7F, 1}, {0x80, 0}, {0xBF, 0}, {0xC0, 2}, {0xDF, 2},
        {0xE0, 3}, {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 0}, {0xFF, 0},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(static_cast<int>(l_row.byte));
        EXPECT_EQ(num_utf8_bytes(l_row.byte), l_row.length);
        EXPECT_EQ(is_multibyte_utf8_char(l_row.byte), l_row.length >= 2);
    }
}

TEST(utf8, safe_string_keeps_ascii_and_stops_at_nul)
{
    EXPECT_EQ(windows_make_safe_utf8_string("plain ascii 123"), "plain ascii 123");
    EXPECT_EQ(windows_make_safe_utf8_string(std::string("ab\0cd", 5)), "ab");
    EXPECT_EQ(windows_make_safe_utf8_string(""), "");
    // Whatever the code page, a text of letters with accents comes back as something of no more
    // bytes, with its ASCII neighbours intact.
    std::string const l_safe = windows_make_safe_utf8_string("a\xC3\xA9z");
    ASSERT_GE(l_safe.size(), 3U);
    EXPECT_EQ(l_safe.front(), 'a');
    EXPECT_EQ(l_safe.back(), 'z');
}

#ifndef _WIN32
// The codeset comes from the environment's locale, read anew at each call.
class safe_string_locale : public testing::Test {
protected:
    void SetUp() override
    {
        char const *const l_saved = std::getenv("LC_ALL");
        m_had = l_saved != nullptr;
        m_saved = m_had ? l_saved : "";
    }
    void TearDown() override
    {
        if (m_had) {
            setenv("LC_ALL", m_saved.c_str(), 1);
        } else {
            unsetenv("LC_ALL");
        }
    }
    bool m_had = false;
    std::string m_saved;
};

TEST_F(safe_string_locale, utf8_codeset_keeps_the_text_and_cleans_it)
{
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(windows_make_safe_utf8_string("a\xC3\xA9z \xF0\x9F\x98\x80"), "a\xC3\xA9z \xF0\x9F\x98\x80");
    EXPECT_EQ(windows_make_safe_utf8_string("a\xFFz"), "a\xEF\xBF\xBDz");
}

TEST_F(safe_string_locale, ascii_codeset_marks_what_it_cannot_write)
{
    setenv("LC_ALL", "C", 1);
    // "é" may be transliterated ("e") or replaced ("?"); the emoji has no ASCII form at all.
    std::string const l_safe = windows_make_safe_utf8_string("a\xC3\xA9z");
    EXPECT_TRUE(l_safe == "aez" || l_safe == "a?z") << l_safe;
    std::string const l_emoji = windows_make_safe_utf8_string("<\xF0\x9F\x98\x80>");
    EXPECT_EQ(l_emoji.front(), '<');
    EXPECT_EQ(l_emoji.back(), '>');
    EXPECT_NE(l_emoji.find('?'), std::string::npos) << l_emoji;
    for (char const l_byte : l_emoji) {
        EXPECT_LT(static_cast<unsigned char>(l_byte), 0x80U);
    }
    // A broken sequence is one "?" too, and the bytes behind it survive.
    EXPECT_EQ(windows_make_safe_utf8_string("x\xE2\x82y"), "x?y");
}
#endif

} // namespace
