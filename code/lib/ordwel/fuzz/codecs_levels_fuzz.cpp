// SPDX-License-Identifier: MIT
// The Base64 and hex kernels of every level that this processor has, run side by side with the
// scalar kernels: on the input as bytes to encode, as text to decode, and as valid encoded text
// with one character of the input planted in it. Any difference traps.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "core/cpu_dispatch.h"
#include "stream/codec_kernels.h"
#include "support/simd_levels.h"

#include "fuzz_check.h"

namespace {

using namespace ordwel;
using internal::simd_level;
using bytes = std::vector<unsigned char>;

// The vector levels this processor runs, each compared with the scalar kernels.
std::vector<simd_level> const &vector_levels()
{
    static std::vector<simd_level> const s_levels = ordwel_test::simd_levels_here(simd_level::sse41);
    return s_levels;
}

bytes base64_encode(simd_level a_level, unsigned char const *a_bytes, std::size_t a_size)
{
    bytes l_text((a_size + 2) / 3 * 4);
    std::size_t const l_size =
        internal::k_base64_encode.for_level(a_level)(reinterpret_cast<char *>(l_text.data()), a_bytes, a_size);
    check(l_size == l_text.size());
    return l_text;
}

bytes base64_decode(simd_level a_level, bytes const &a_text)
{
    bytes l_bytes(a_text.size() / 4 * 3);
    l_bytes.resize(internal::k_base64_decode.for_level(a_level)(l_bytes.data(), a_text.data(), a_text.size()));
    return l_bytes;
}

bytes hex_encode(simd_level a_level, unsigned char const *a_bytes, std::size_t a_size)
{
    bytes l_text(2 * a_size);
    internal::k_hex_encode.for_level(a_level)(reinterpret_cast<char *>(l_text.data()), a_bytes, a_size);
    return l_text;
}

bytes hex_decode(simd_level a_level, bytes const &a_text)
{
    bytes l_bytes(a_text.size() / 2);
    internal::k_hex_decode.for_level(a_level)(l_bytes.data(), a_text.data(), l_bytes.size());
    return l_bytes;
}

void decoders_agree(bytes const &a_base64, bytes const &a_hex)
{
    bytes const l_base64 = base64_decode(simd_level::scalar, a_base64);
    bytes const l_hex = hex_decode(simd_level::scalar, a_hex);
    for (simd_level const l_level : vector_levels()) {
        check(base64_decode(l_level, a_base64) == l_base64);
        check(hex_decode(l_level, a_hex) == l_hex);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    bytes const l_base64 = base64_encode(simd_level::scalar, a_data, a_size);
    bytes l_hex = hex_encode(simd_level::scalar, a_data, a_size);
    for (simd_level const l_level : vector_levels()) {
        check(base64_encode(l_level, a_data, a_size) == l_base64);
        check(hex_encode(l_level, a_data, a_size) == l_hex);
    }

    // The input as text, cut to a length that each decoder takes.
    decoders_agree(bytes(a_data, a_data + a_size / 4 * 4), bytes(a_data, a_data + a_size / 2 * 2));
    if (a_size < 3) {
        return 0;
    }

    // Valid text with the first byte planted where the next two point, the hex digits in the case
    // that the input's bits choose.
    std::size_t const l_where = a_data[1] | (std::size_t(a_data[2]) << 8);
    bytes l_planted = l_base64;
    l_planted[l_where % l_planted.size()] = a_data[0];
    for (std::size_t l_index = 0; l_index < l_hex.size(); ++l_index) {
        if (l_hex[l_index] >= 'a' && ((a_data[l_index % a_size] >> (l_index % 8)) & 1) != 0) {
            l_hex[l_index] = static_cast<unsigned char>(l_hex[l_index] - 'a' + 'A');
        }
    }
    l_hex[l_where % l_hex.size()] = a_data[0];
    decoders_agree(l_planted, l_hex);
    return 0;
}
