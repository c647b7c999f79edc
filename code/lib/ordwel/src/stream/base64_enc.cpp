// SPDX-License-Identifier: MIT
#include <ordwel/base64.h>
#include <ordwel/codecs.h>

#include <cstddef>
#include <cstring>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

// Every 12-bit value as its two characters, so that three bytes take two look-ups; and the alphabet.
struct pair_table {
    char m_pairs[4096][2];
    char const *m_alphabet;
};

constexpr pair_table pair_table_new(char const *a_alphabet)
{
    pair_table l_table{};
    for (unsigned l_value = 0; l_value < 4096; ++l_value) {
        l_table.m_pairs[l_value][0] = a_alphabet[l_value >> 6];
        l_table.m_pairs[l_value][1] = a_alphabet[l_value & 63];
    }
    l_table.m_alphabet = a_alphabet;
    return l_table;
}

constexpr pair_table k_standard_table = pair_table_new(internal::k_base64_alphabet);
constexpr pair_table k_url_table = pair_table_new(internal::k_base64url_alphabet);

inline void put_group(pair_table const &a_table, char *a_out, uint32 a_bits)
{
    std::memcpy(a_out, a_table.m_pairs[a_bits >> 12], 2);
    std::memcpy(a_out + 2, a_table.m_pairs[a_bits & 0xfff], 2);
}

std::size_t encoded_size(uint64 a_size)
{
    return static_cast<std::size_t>((a_size + 2) / 3 * 4);
}

inline std::size_t encode_scalar(pair_table const &a_table, char *a_out, unsigned char const *a_bytes,
                                 std::size_t a_size)
{
    char const *const l_alphabet = a_table.m_alphabet;
    char *l_out = a_out;
    unsigned char const *l_in = a_bytes;
    unsigned char const *const l_end = a_bytes + a_size;
    // Two groups per round: the six bytes make one 48-bit value.
    while (l_end - l_in >= 6) {
        uint64 const l_word = (uint64(l_in[0]) << 56) | (uint64(l_in[1]) << 48) | (uint64(l_in[2]) << 40) |
                              (uint64(l_in[3]) << 32) | (uint64(l_in[4]) << 24) | (uint64(l_in[5]) << 16);
        put_group(a_table, l_out, static_cast<uint32>(l_word >> 40));
        put_group(a_table, l_out + 4, static_cast<uint32>(l_word >> 16) & 0xffffff);
        l_in += 6;
        l_out += 8;
    }
    while (l_end - l_in >= 3) {
        put_group(a_table, l_out, (uint32(l_in[0]) << 16) | (uint32(l_in[1]) << 8) | l_in[2]);
        l_in += 3;
        l_out += 4;
    }
    std::size_t const l_rest = static_cast<std::size_t>(l_end - l_in);
    if (l_rest == 1) {
        uint32 const l_bits = uint32(l_in[0]) << 4;
        l_out[0] = l_alphabet[l_bits >> 6];
        l_out[1] = l_alphabet[l_bits & 63];
        l_out[2] = '=';
        l_out[3] = '=';
        l_out += 4;
    } else if (l_rest == 2) {
        uint32 const l_bits = ((uint32(l_in[0]) << 8) | l_in[1]) << 2;
        l_out[0] = l_alphabet[l_bits >> 12];
        l_out[1] = l_alphabet[(l_bits >> 6) & 63];
        l_out[2] = l_alphabet[l_bits & 63];
        l_out[3] = '=';
        l_out += 4;
    }
    return static_cast<std::size_t>(l_out - a_out);
}

// The characters of a_size bytes in a_format: the padded count, less the padding when the format
// leaves it out.
std::size_t format_size(uint64 a_size, base64_format a_format)
{
    if (a_format.m_padding == base64_padding::required) {
        return encoded_size(a_size);
    }
    return static_cast<std::size_t>(a_size / 3 * 4 + (a_size % 3 == 0 ? 0 : a_size % 3 + 1));
}

} // namespace

std::size_t internal::base64_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    return encode_scalar(k_standard_table, a_out, a_bytes, a_size);
}

std::size_t internal::base64url_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    return encode_scalar(k_url_table, a_out, a_bytes, a_size);
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

// The kernels write the padding; where the format has none, the result is cut before it.
buffer buffer_encode_base64(unsigned char const *a_bytes, uint64 a_size, base64_format a_format)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(encoded_size(a_size) + 1);
    (void)internal::base64_kernels_of(a_format.m_alphabet)
        .m_encode.get()(reinterpret_cast<char *>(l_result.begin()), a_bytes, static_cast<std::size_t>(a_size));
    l_result.resize(format_size(a_size, a_format));
    return l_result;
}

std::string string_encode_base64(unsigned char const *a_bytes, uint64 a_size, base64_format a_format)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(encoded_size(a_size));
    (void)internal::base64_kernels_of(a_format.m_alphabet)
        .m_encode.get()(&l_result[0], a_bytes, static_cast<std::size_t>(a_size));
    l_result.resize(format_size(a_size, a_format));
    return l_result;
}

} // namespace ordwel
