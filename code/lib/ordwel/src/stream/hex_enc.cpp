// SPDX-License-Identifier: MIT
#include <ordwel/codecs.h>

#include <cstddef>
#include <cstring>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

namespace ordwel {

namespace {

constexpr internal::hex_pair_table k_table = internal::hex_pair_table_new();

} // namespace

void internal::hex_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    for (std::size_t l_index = 0; l_index < a_size; ++l_index) {
        std::memcpy(a_out + 2 * l_index, k_table[a_bytes[l_index]], 2);
    }
}

buffer buffer_encode_hex(unsigned char const *a_bytes, uint64 a_size)
{
    buffer l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(2 * a_size);
    internal::k_hex_encode.get()(reinterpret_cast<char *>(l_result.begin()), a_bytes, static_cast<std::size_t>(a_size));
    return l_result;
}

buffer buffer_encode_hex(char const *a_text, uint64 a_size)
{
    return buffer_encode_hex(reinterpret_cast<unsigned char const *>(a_text), a_size);
}

buffer buffer_encode_hex(buffer const &a_bytes)
{
    return buffer_encode_hex(a_bytes.begin(), a_bytes.size());
}

buffer buffer_encode_hex(std::string const &a_text)
{
    return buffer_encode_hex(a_text.data(), a_text.size());
}

// Codes straight into the string rather than through a buffer: the same bytes, one copy fewer.
std::string string_encode_hex(unsigned char const *a_bytes, uint64 a_size)
{
    std::string l_result;
    if (a_bytes == nullptr || a_size == 0) {
        return l_result;
    }
    l_result.resize(static_cast<std::size_t>(2 * a_size));
    internal::k_hex_encode.get()(&l_result[0], a_bytes, static_cast<std::size_t>(a_size));
    return l_result;
}

std::string string_encode_hex(char const *a_text, uint64 a_size)
{
    return string_encode_hex(reinterpret_cast<unsigned char const *>(a_text), a_size);
}

std::string string_encode_hex(buffer const &a_bytes)
{
    return string_encode_hex(a_bytes.begin(), a_bytes.size());
}

std::string string_encode_hex(std::string const &a_text)
{
    return string_encode_hex(a_text.data(), a_text.size());
}

} // namespace ordwel
