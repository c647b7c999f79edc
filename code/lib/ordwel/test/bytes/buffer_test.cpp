// SPDX-License-Identifier: MIT
#include <ordwel/buffer.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::text_of;

// A buffer's size and capacity, for one expectation on both.
using sizes = std::pair<uint64, uint64>;
sizes sizes_of(buffer const &a_buffer)
{
    return {a_buffer.size(), a_buffer.capacity()};
}

TEST(buffer, constructors_set_size_and_capacity)
{
    EXPECT_EQ(sizes_of(buffer()), sizes(0, 1024));
    EXPECT_TRUE(buffer().empty());
    EXPECT_EQ(sizes_of(buffer(100)), sizes(0, 200));
    buffer const l_filled(100, 7);
    EXPECT_EQ(sizes_of(l_filled), sizes(100, 200));
    EXPECT_EQ(text_of(l_filled), std::string(100, '\7'));
    buffer const l_zero(0);
    EXPECT_EQ(l_zero.capacity(), 0u);
    EXPECT_NE(l_zero.begin(), nullptr);

    unsigned char const l_bytes[] = {1, 2, 3};
    buffer const l_copied(3, l_bytes);
    EXPECT_EQ(sizes_of(l_copied), sizes(3, 6));
    EXPECT_EQ(buffer(l_bytes, l_bytes + 3), l_copied);

    buffer l_big(10);
    l_big.resize(15);
    EXPECT_EQ(sizes_of(buffer(l_big)), sizes(15, 30)) << "a copy takes 2 x size, not the other's capacity";
    EXPECT_EQ(buffer::max_size(), 18446744073709551615ull);
}

// The growth rule at its boundaries: a capacity of 0 doubles the wanted size, small ones double
// strictly above it, a wanted capacity above 10,000,000 is taken exactly.
TEST(buffer, growth_rule_table)
{
    struct row {
        uint64 capacity, wanted, expected;
    } const l_rows[] = {
        {0, 0, 0},
        {0, 10, 20},
        {0, 20000000, 40000000},
        {1024, 1024, 2048},
        {1024, 1025, 2048},
        {1024, 2048, 4096},
        {1024, 5000, 8192},
        {1024, 100, 1024},
        {1024, 10000000, 16777216},
        {1024, 10000001, 10000001},
        {20000000, 20000001, 20000001},
        {16777216, 10000001, 16777216},
        {10000001, 10000001, 20000002},
        {~uint64(0) / 2 + 1, ~uint64(0), ~uint64(0)},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(buffer::grown_capacity(l_row.capacity, l_row.wanted), l_row.expected)
            << l_row.capacity << " -> " << l_row.wanted;
    }
}

TEST(buffer, reserve_and_adjust)
{
    buffer l_buffer;
    l_buffer.reserve(1024);
    EXPECT_EQ(l_buffer.capacity(), 1024u);
    l_buffer.reserve(1025);
    EXPECT_EQ(l_buffer.capacity(), 2048u);
    buffer l_adjusted;
    l_adjusted.adjust(1024);
    EXPECT_EQ(l_adjusted.capacity(), 2048u);

    // adjust moves the bytes into new storage of the grown capacity, keeping those below the size.
    buffer l_moved(512, 9);
    l_moved.resize(1024);
    l_moved.adjust(100);
    EXPECT_EQ(sizes_of(l_moved), sizes(100, 1024));
    EXPECT_EQ(l_moved[99], 9);
}

TEST(buffer, resize_aggressive_only_changes_large_growth)
{
    buffer l_plain(10000000);
    l_plain.resize(20000001);
    EXPECT_EQ(l_plain.capacity(), 20000001u);

    buffer l_aggressive(10000000);
    l_aggressive.set_aggressive(true);
    l_aggressive.resize(20000001);
    EXPECT_EQ(sizes_of(l_aggressive), sizes(20000001, 30000000));

    buffer l_small;
    l_small.set_aggressive(true);
    l_small.resize(1025);
    EXPECT_EQ(l_small.capacity(), 2048u) << "max(1025, 1536) doubles from 1024 to 2048";
    l_small.resize(3);
    EXPECT_EQ(l_small.capacity(), 2048u) << "shrinking keeps the storage";
}

TEST(buffer, resize_with_fill_touches_only_new_bytes)
{
    buffer l_buffer = buffer_of("abcdef");
    l_buffer.resize(3, 'z');
    EXPECT_EQ(text_of(l_buffer), "abc");
    l_buffer.resize(6, 'z');
    EXPECT_EQ(text_of(l_buffer), "abczzz") << "bytes past the size are refilled, not revealed";

    buffer l_two = buffer_of("ab");
    l_two.append(3, 0xff);
    ASSERT_EQ(l_two.size(), 5u);
    EXPECT_EQ(l_two[2], 0xff);
    EXPECT_EQ(l_two[4], 0xff);
}

TEST(buffer, append_and_assign)
{
    buffer l_buffer(2);
    for (int l_round = 0; l_round < 100; ++l_round) {
        l_buffer.append(reinterpret_cast<unsigned char const *>("xy"), 2);
    }
    EXPECT_EQ(l_buffer.size(), 200u);
    EXPECT_EQ(text_of(l_buffer).substr(196), "xyxy");

    buffer l_target = buffer_of("old content");
    l_target.assign(buffer_of("new"));
    EXPECT_EQ(text_of(l_target), "new");
    l_target += buffer_of("er");
    EXPECT_EQ(text_of(l_target), "newer");
    l_target = l_target;
    EXPECT_EQ(text_of(l_target), "newer");

    l_target.clear();
    EXPECT_TRUE(l_target.empty());
    EXPECT_EQ(l_target.capacity(), 22u) << "clear keeps the capacity of \"old content\"";
    l_target.append(nullptr, uint64(0));
    EXPECT_TRUE(l_target.empty());
}

TEST(buffer, self_overlapping_append_and_assign)
{
    buffer l_buffer = buffer_of("abcd");
    ASSERT_EQ(l_buffer.capacity(), 8u);
    l_buffer.append(l_buffer.begin(), l_buffer.end()); // fits: 8 bytes
    EXPECT_EQ(text_of(l_buffer), "abcdabcd");
    l_buffer.append(l_buffer.begin(), l_buffer.end()); // grows while reading itself
    EXPECT_EQ(text_of(l_buffer), "abcdabcdabcdabcd");
    l_buffer.append(l_buffer);
    EXPECT_EQ(l_buffer.size(), 32u);

    l_buffer.assign(l_buffer.begin() + 4, l_buffer.begin() + 8);
    EXPECT_EQ(text_of(l_buffer), "abcd");

    buffer l_small = buffer_of("xy");
    l_small.clear();
    buffer l_source = buffer_of("0123456789");
    l_small.assign(l_source.begin(), l_source.end());
    EXPECT_EQ(text_of(l_small), "0123456789");
    EXPECT_EQ(l_small.capacity(), 16u);
}

// The inline moves behind small appends and decoded items act as memmove at every length across
// their size classes, with the two ranges apart or overlapping either way: exactly the a_count
// bytes land, as they stood before the move, and the bytes around them stay.
TEST(buffer, inline_moves_act_as_memmove_at_every_length_and_overlap)
{
    std::vector<unsigned char> l_pattern(640);
    for (std::size_t l_index = 0; l_index < l_pattern.size(); ++l_index) {
        l_pattern[l_index] = static_cast<unsigned char>(l_index * 131 + 7);
    }
    for (std::size_t l_count = 0; l_count <= 130; ++l_count) {
        for (int const l_shift : {-200, -70, -33, -9, -1, 1, 2, 5, 16, 40, 64, 65, 200}) {
            std::vector<unsigned char> l_moved = l_pattern;
            std::vector<unsigned char> l_expected = l_pattern;
            std::size_t const l_source = 250;
            std::size_t const l_target = static_cast<std::size_t>(static_cast<int>(l_source) + l_shift);
            std::memmove(l_expected.data() + l_target, l_expected.data() + l_source, l_count);
            internal::move_bytes(l_moved.data() + l_target, l_moved.data() + l_source, l_count);
            ASSERT_EQ(l_moved, l_expected) << "count " << l_count << ", shift " << l_shift;
        }
    }
}

// Appends of every small length from the buffer's own bytes, also from bytes that the append
// itself overwrites (the room behind the size), come out as a memmove would make them.
TEST(buffer, small_appends_from_its_own_bytes)
{
    for (uint64 l_count = 0; l_count <= 80; ++l_count) {
        buffer l_buffer(uint64(256));
        for (uint64 l_index = 0; l_index < 256; ++l_index) {
            l_buffer[l_index] = static_cast<unsigned char>(l_index);
        }
        l_buffer.resize(100);
        std::vector<unsigned char> l_expected(l_buffer.begin(), l_buffer.begin() + 256);
        std::memmove(l_expected.data() + 100, l_expected.data() + 90, static_cast<std::size_t>(l_count));
        l_buffer.append(l_buffer.begin() + 90, l_count);
        ASSERT_EQ(l_buffer.size(), 100 + l_count);
        EXPECT_TRUE(std::equal(l_buffer.begin(), l_buffer.end(), l_expected.begin())) << l_count;
    }
}

TEST(buffer, comparisons_are_unsigned_bytewise)
{
    struct row {
        std::string left, right;
        bool less;
    } const l_rows[] = {
        {"ab", "abc", true},    {"abc", "abd", true},  {"\x80", "\x01", false},
        {"\x01", "\x80", true}, {"", "", false},       {"", "a", true},
        {"b", "abc", false},    {"abc", "abc", false}, {std::string("\0", 1), "", false},
    };
    for (row const &l_row : l_rows) {
        buffer const l_left = buffer_of(l_row.left);
        buffer const l_right = buffer_of(l_row.right);
        bool const l_equal = l_row.left == l_row.right;
        SCOPED_TRACE(l_row.left + " vs " + l_row.right);
        EXPECT_EQ(l_left < l_right, l_row.less);
        EXPECT_EQ(l_left == l_right, l_equal);
        EXPECT_EQ(l_left != l_right, !l_equal);
        EXPECT_EQ(l_left <= l_right, l_row.less || l_equal);
        EXPECT_EQ(l_left > l_right, !l_row.less && !l_equal);
        EXPECT_EQ(l_left >= l_right, !l_row.less);
    }
}

TEST(buffer, swap_keeps_each_aggressive_flag)
{
    buffer l_aggressive(10000000);
    l_aggressive.set_aggressive(true);
    buffer l_plain(10000000);
    l_plain.resize(1, 'p');
    l_aggressive.swap(l_plain);
    EXPECT_EQ(text_of(l_aggressive), "p");
    l_aggressive.resize(20000001);
    EXPECT_EQ(l_aggressive.capacity(), 30000000u);
    l_plain.resize(20000001);
    EXPECT_EQ(l_plain.capacity(), 20000001u);
}

TEST(buffer, shared_empty_buffer)
{
    EXPECT_EQ(sizes_of(buffer_empty_buffer()), sizes(0, 1024));
    EXPECT_EQ(&buffer_empty_buffer(), &buffer_empty_buffer());
}

TEST(buffer, front_back_and_at_address_the_same_bytes)
{
    buffer l_buffer = buffer_of("xyz");
    l_buffer.front() = 'a';
    l_buffer.back() = 'c';
    l_buffer.at(1) = 'b';
    EXPECT_EQ(text_of(l_buffer), "abc");
    EXPECT_EQ(&l_buffer.at(2), &l_buffer[2]);
    EXPECT_EQ(l_buffer.end() - l_buffer.begin(), 3);
}

} // namespace
