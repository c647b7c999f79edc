// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_CORE_BYTE_TABLES_H
#define ORDWEL_SRC_CORE_BYTE_TABLES_H

// The digit alphabets and byte look-up tables of the text codings (hex, Base64, percent coding,
// dumps). Every table is built at compile time; a source keeps its own constexpr instance.

namespace ordwel {
namespace internal {

constexpr char k_hex_digits_lower[] = "0123456789abcdef";
constexpr char k_base64_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// The alphabet that is safe in URLs and file names: "-" and "_" for 62 and 63.
constexpr char k_base64url_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// One byte of information for each of the 256 byte values.
struct byte_table {
    unsigned char m_value[256];

    constexpr unsigned char operator[](unsigned char a_byte) const { return m_value[a_byte]; }
};

// Each hex digit's value (0 to 15), in both cases; a_other for every other byte. Decoders choose
// a_other for the way that a foreign character is to blend into the value.
constexpr byte_table hex_value_table(unsigned char a_other)
{
    byte_table l_table{};
    for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
        l_table.m_value[l_byte] = a_other;
    }
    for (unsigned l_value = 0; l_value < 10; ++l_value) {
        l_table.m_value['0' + l_value] = static_cast<unsigned char>(l_value);
    }
    for (unsigned l_value = 0; l_value < 6; ++l_value) {
        l_table.m_value['a' + l_value] = static_cast<unsigned char>(10 + l_value);
        l_table.m_value['A' + l_value] = static_cast<unsigned char>(10 + l_value);
    }
    return l_table;
}

// Every byte as its two lowercase hex digits, high digit first.
struct hex_pair_table {
    char m_pairs[256][2];

    constexpr char const *operator[](unsigned char a_byte) const { return m_pairs[a_byte]; }
};

constexpr hex_pair_table hex_pair_table_new()
{
    hex_pair_table l_table{};
    for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
        l_table.m_pairs[l_byte][0] = k_hex_digits_lower[l_byte >> 4];
        l_table.m_pairs[l_byte][1] = k_hex_digits_lower[l_byte & 15];
    }
    return l_table;
}

} // namespace internal
} // namespace ordwel

#endif
