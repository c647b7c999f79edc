// SPDX-License-Identifier: MIT
#include <ordwel/codecs.h>

#include <cstddef>

#include <ordwel/es.h>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

// Each digit's value, both cases; 255 for every other byte.
constexpr internal::byte_table k_table = internal::hex_value_table(255);

// The byte count of a_size characters, after the length check.
std::size_t decoded_size(uint64 a_size)
{
    if (a_size % 2 != 0) {
        es::arg::raise(ORDWEL_HERE, nullptr);
    }
    return static_cast<std::size_t>(a_size / 2);
}

} // namespace

// A foreign character's 255 sets every bit it touches: "g0" is 0xf0, "0g" is 0xff.
void internal::hex_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    for (std::size_t l_index = 0; l_index < a_count; ++l_index) {
        unsigned const l_high = k_table[a_text[2 * l_index]];
        unsigned const l_low = k_table[a_text[2 * l_index + 1]];
        a_out[l_index] = static_cast<unsigned char>((l_high << 4) | l_low);
    }
}

buffer buffer_decode_hex(unsigned char const *a_bytes, uint64 a_size)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    std::size_t const l_count = decoded_size(a_size);
    l_result.resize(l_count);
    internal::k_hex_decode.get()(l_result.begin(), a_bytes, l_count);
    return l_result;
}

buffer buffer_decode_hex(char const *a_text, uint64 a_size)
{
    return buffer_decode_hex(reinterpret_cast<unsigned char const *>(a_text), a_size);
}

buffer buffer_decode_hex(buffer const &a_bytes)
{
    return buffer_decode_hex(a_bytes.begin(), a_bytes.size());
}

buffer buffer_decode_hex(std::string const &a_text)
{
    return buffer_decode_hex(a_text.data(), a_text.size());
}

// Codes straight into the string rather than through a buffer: the same bytes, one copy fewer.
std::string string_decode_hex(unsigned char const *a_bytes, uint64 a_size)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    std::size_t const l_count = decoded_size(a_size);
    l_result.resize(l_count);
    internal::k_hex_decode.get()(reinterpret_cast<unsigned char *>(&l_result[0]), a_bytes, l_count);
    return l_result;
}

std::string string_decode_hex(char const *a_text, uint64 a_size)
{
    return string_decode_hex(reinterpret_cast<unsigned char const *>(a_text), a_size);
}

std::string string_decode_hex(buffer const &a_bytes)
{
    return string_decode_hex(a_bytes.begin(), a_bytes.size());
}

std::string string_decode_hex(std::string const &a_text)
{
    return string_decode_hex(a_text.data(), a_text.size());
}

} // namespace ordwel
