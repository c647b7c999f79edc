// SPDX-License-Identifier: MIT
#include <ordwel/codecs.h>

#include <cstddef>
#include <cstring>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

using internal::k_base64_alphabet;

// Every 12-bit value as its two characters, so that three bytes take two look-ups.
struct pair_table {
    char m_pairs[4096][2];
};

constexpr pair_table pair_table_new()
{
    pair_table l_table{};
    for (unsigned l_value = 0; l_value < 4096; ++l_value) {
        l_table.m_pairs[l_value][0] = k_base64_alphabet[l_value >> 6];
        l_table.m_pairs[l_value][1] = k_base64_alphabet[l_value & 63];
    }
    return l_table;
}

constexpr pair_table k_table = pair_table_new();

inline void put_group(char *a_out, uint32 a_bits)
{
    std::memcpy(a_out, k_table.m_pairs[a_bits >> 12], 2);
    std::memcpy(a_out + 2, k_table.m_pairs[a_bits & 0xfff], 2);
}

std::size_t encoded_size(uint64 a_size)
{
    return static_cast<std::size_t>((a_size + 2) / 3 * 4);
}

} // namespace

std::size_t internal::base64_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    char *l_out = a_out;
    unsigned char const *l_in = a_bytes;
    unsigned char const *const l_end = a_bytes + a_size;
    // Two groups per round: the six bytes make one 48-bit value.
    while (l_end - l_in >= 6) {
        uint64 const l_word = (uint64(l_in[0]) << 56) | (uint64(l_in[1]) << 48) | (uint64(l_in[2]) << 40) |
                              (uint64(l_in[3]) << 32) | (uint64(l_in[4]) << 24) | (uint64(l_in[5]) << 16);
        put_group(l_out, static_cast<uint32>(l_word >> 40));
        put_group(l_out + 4, static_cast<uint32>(l_word >> 16) & 0xffffff);
        l_in += 6;
        l_out += 8;
    }
    while (l_end - l_in >= 3) {
        put_group(l_out, (uint32(l_in[0]) << 16) | (uint32(l_in[1]) << 8) | l_in[2]);
        l_in += 3;
        l_out += 4;
    }
    std::size_t const l_rest = static_cast<std::size_t>(l_end - l_in);
    if (l_rest == 1) {
        uint32 const l_bits = uint32(l_in[0]) << 4;
        l_out[0] = k_base64_alphabet[l_bits >> 6];
        l_out[1] = k_base64_alphabet[l_bits & 63];
        l_out[2] = '=';
        l_out[3] = '=';
        l_out += 4;
    } else if (l_rest == 2) {
        uint32 const l_bits = ((uint32(l_in[0]) << 8) | l_in[1]) << 2;
        l_out[0] = k_base64_alphabet[l_bits >> 12];
        l_out[1] = k_base64_alphabet[(l_bits >> 6) & 63];
        l_out[2] = k_base64_alphabet[l_bits & 63];
        l_out[3] = '=';
        l_out += 4;
    }
    return static_cast<std::size_t>(l_out - a_out);
}

buffer buffer_encode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(encoded_size(a_size) + 1);
    l_result.resize(internal::k_base64_encode.get()(reinterpret_cast<char *>(l_result.begin()), a_bytes,
                                                    static_cast<std::size_t>(a_size)));
    return l_result;
}

// Codes straight into the string rather than through a buffer: the same bytes, one copy fewer.
std::string string_encode_base64(unsigned char const *a_bytes, uint64 a_size)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(encoded_size(a_size));
    l_result.resize(internal::k_base64_encode.get()(&l_result[0], a_bytes, static_cast<std::size_t>(a_size)));
    return l_result;
}

} // namespace ordwel
