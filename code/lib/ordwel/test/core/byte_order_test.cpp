// SPDX-License-Identifier: MIT
#include <ordwel/internal/byte_order.h>

#include <cstring>

#include <gtest/gtest.h>

#include "../../src/core/byte_tables.h"

namespace {

using namespace ordwel;

// The eight bytes that every case reads from and writes to, at an odd offset so that no access is
// aligned.
constexpr unsigned char k_pattern[] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

template <typename W> struct order_case {
    W m_big;
    W m_little;
};

template <typename W> void check_word(order_case<W> const &a_case)
{
    unsigned char l_place[1 + sizeof(W) + 1] = {};
    std::memcpy(l_place + 1, k_pattern, sizeof(W));
    EXPECT_EQ(internal::load_be<W>(l_place + 1), a_case.m_big);
    EXPECT_EQ(internal::load_le<W>(l_place + 1), a_case.m_little);
    EXPECT_EQ(internal::byte_swap(a_case.m_big), a_case.m_little);

    unsigned char l_written[1 + sizeof(W) + 1];
    std::memset(l_written, 0x5A, sizeof l_written);
    internal::store_be<W>(l_written + 1, a_case.m_big);
    EXPECT_EQ(std::memcmp(l_written + 1, k_pattern, sizeof(W)), 0);
    internal::store_le<W>(l_written + 1, a_case.m_little);
    EXPECT_EQ(std::memcmp(l_written + 1, k_pattern, sizeof(W)), 0);
    // Nothing outside the word is touched.
    EXPECT_EQ(l_written[0], 0x5A);
    EXPECT_EQ(l_written[1 + sizeof(W)], 0x5A);
}

TEST(byte_order, every_width_in_both_orders)
{
    check_word<uint8>({0x01, 0x01});
    check_word<uint16>({0x0123, 0x2301});
    check_word<uint32>({0x01234567U, 0x67452301U});
    check_word<uint64>({0x0123456789ABCDEFULL, 0xEFCDAB8967452301ULL});
}

TEST(byte_order, native_order_is_the_hosts)
{
    unsigned char l_bytes[4];
    internal::store_native<uint32>(l_bytes, 0x01020304U);
    if (internal::k_host_order == internal::host_order::little) {
        EXPECT_EQ(l_bytes[0], 0x04);
    } else if (internal::k_host_order == internal::host_order::big) {
        EXPECT_EQ(l_bytes[0], 0x01);
    }
    EXPECT_EQ(internal::load_native<uint32>(l_bytes), 0x01020304U);
}

TEST(byte_tables, hex_values_and_digits_agree)
{
    constexpr internal::byte_table l_values = internal::hex_value_table(255);
    constexpr internal::hex_pair_table l_pairs = internal::hex_pair_table_new();
    int l_digits = 0;
    for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
        unsigned const l_value = l_values[static_cast<unsigned char>(l_byte)];
        if (l_value != 255) {
            ++l_digits;
            EXPECT_EQ(internal::k_hex_digits_lower[l_value], static_cast<char>(l_byte | 0x20)) << l_byte;
        }
        char const *const l_pair = l_pairs[static_cast<unsigned char>(l_byte)];
        EXPECT_EQ(l_values[static_cast<unsigned char>(l_pair[0])] * 16U +
                      l_values[static_cast<unsigned char>(l_pair[1])],
                  l_byte);
    }
    EXPECT_EQ(l_digits, 22);
    EXPECT_EQ(internal::hex_value_table(0)['g'], 0);
    EXPECT_EQ(internal::hex_value_table(0)['F'], 15);
}

} // namespace
