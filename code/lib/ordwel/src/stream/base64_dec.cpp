// SPDX-License-Identifier: MIT
#include <ordwel/codecs.h>

#include <cstddef>

#include <ordwel/es.h>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

using internal::k_base64_alphabet;
constexpr unsigned char k_bad = 255;
// Set in every shifted entry of a foreign character: no valid group ever has it.
constexpr uint32 k_bad_flag = 0x01000000;

struct decode_table {
    // Each character's value, 0 to 63, or k_bad.
    unsigned char m_value[256];
    // The value already in place for position 0 to 3 of a group, or k_bad_flag.
    uint32 m_shifted[4][256];
};

constexpr decode_table decode_table_new()
{
    decode_table l_table{};
    for (unsigned l_byte = 0; l_byte < 256; ++l_byte) {
        l_table.m_value[l_byte] = k_bad;
        for (unsigned l_position = 0; l_position < 4; ++l_position) {
            l_table.m_shifted[l_position][l_byte] = k_bad_flag;
        }
    }
    for (unsigned l_value = 0; l_value < 64; ++l_value) {
        auto const l_byte = static_cast<unsigned char>(k_base64_alphabet[l_value]);
        l_table.m_value[l_byte] = static_cast<unsigned char>(l_value);
        for (unsigned l_position = 0; l_position < 4; ++l_position) {
            l_table.m_shifted[l_position][l_byte] = l_value << (18 - 6 * l_position);
        }
    }
    return l_table;
}

constexpr decode_table k_table = decode_table_new();

// A group with a foreign character: the number of foreign characters alone decides how many bytes
// it gives (two: one, one: two, none, three or four: three); the bytes come from the values, 255
// included, with the low-end operand taken as a 6-bit value and the result cut to 8 bits.
unsigned char *decode_odd_group(unsigned char *a_out, unsigned char const *a_group)
{
    unsigned const l_a = k_table.m_value[a_group[0]];
    unsigned const l_b = k_table.m_value[a_group[1]];
    unsigned const l_c = k_table.m_value[a_group[2]];
    unsigned const l_d = k_table.m_value[a_group[3]];
    unsigned const l_bad = (l_a == k_bad) + (l_b == k_bad) + (l_c == k_bad) + (l_d == k_bad);
    *a_out++ = static_cast<unsigned char>((l_a << 2) | ((l_b & 63) >> 4));
    if (l_bad == 2) {
        return a_out;
    }
    *a_out++ = static_cast<unsigned char>((l_b << 4) | ((l_c & 63) >> 2));
    if (l_bad == 1) {
        return a_out;
    }
    *a_out++ = static_cast<unsigned char>((l_c << 6) | (l_d & 63));
    return a_out;
}

// The room for a_size characters, after the length check.
std::size_t decoded_room(uint64 a_size)
{
    if (a_size % 4 != 0) {
        es::arg::raise(ORDWEL_HERE, nullptr);
    }
    return static_cast<std::size_t>(a_size / 4 * 3);
}

} // namespace

std::size_t internal::base64_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    unsigned char *l_out = a_out;
    unsigned char const *l_in = a_text;
    unsigned char const *const l_end = a_text + a_size;
    for (; l_in != l_end; l_in += 4) {
        uint32 const l_bits = k_table.m_shifted[0][l_in[0]] | k_table.m_shifted[1][l_in[1]] |
                              k_table.m_shifted[2][l_in[2]] | k_table.m_shifted[3][l_in[3]];
        if ((l_bits & k_bad_flag) == 0) {
            l_out[0] = static_cast<unsigned char>(l_bits >> 16);
            l_out[1] = static_cast<unsigned char>(l_bits >> 8);
            l_out[2] = static_cast<unsigned char>(l_bits);
            l_out += 3;
        } else {
            l_out = decode_odd_group(l_out, l_in);
        }
    }
    return static_cast<std::size_t>(l_out - a_out);
}

buffer buffer_decode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(decoded_room(a_size) + 1);
    l_result.resize(internal::k_base64_decode.get()(l_result.begin(), a_bytes, static_cast<std::size_t>(a_size)));
    return l_result;
}

// Codes straight into the string rather than through a buffer: the same bytes, one copy fewer.
std::string string_decode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(decoded_room(a_size));
    l_result.resize(internal::k_base64_decode.get()(reinterpret_cast<unsigned char *>(&l_result[0]), a_bytes,
                                                    static_cast<std::size_t>(a_size)));
    return l_result;
}

} // namespace ordwel
