// SPDX-License-Identifier: MIT
// The vector kernels of hex and the choice among them. Each kernel is compiled for its own
// instruction set (ORDWEL_TARGET), so the rest of the build assumes no more than the baseline.

#include <cstddef>
#include <cstdint>

#include <ordwel/internal/attributes.h>

#include "stream/codec_kernels.h"

#include "core/x86_intrinsics.h"

namespace ordwel {
namespace internal {

namespace {

#if defined(ORDWEL_X86_KERNELS)

// --- SSSE3 and SSE4.1: 16 bytes to 32 digits, 32 digits to 16 bytes ---------------------------------

ORDWEL_TARGET("ssse3,sse4.1") void hex_encode_sse41(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    __m128i const l_digits =
        _mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f');
    __m128i const l_mask_0f = _mm_set1_epi8(0x0f);
    std::size_t l_index = 0;
    for (; a_size - l_index >= 16; l_index += 16) {
        __m128i const l_bytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(a_bytes + l_index));
        __m128i const l_high = _mm_shuffle_epi8(l_digits, _mm_and_si128(_mm_srli_epi16(l_bytes, 4), l_mask_0f));
        __m128i const l_low = _mm_shuffle_epi8(l_digits, _mm_and_si128(l_bytes, l_mask_0f));
        char *const l_out = a_out + 2 * l_index;
        _mm_storeu_si128(reinterpret_cast<__m128i *>(l_out), _mm_unpacklo_epi8(l_high, l_low));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(l_out + 16), _mm_unpackhi_epi8(l_high, l_low));
    }
    hex_encode_scalar(a_out + 2 * l_index, a_bytes + l_index, a_size - l_index);
}

// The values of 16 digits, or false where any of them is no digit; as values_of_digits below.
ORDWEL_TARGET("ssse3,sse4.1") ORDWEL_ALWAYS_INLINE bool values_of_digits_128(__m128i a_chars, __m128i &a_values)
{
    __m128i const l_decimal = _mm_sub_epi8(a_chars, _mm_set1_epi8('0'));
    __m128i const l_is_decimal = _mm_cmpeq_epi8(_mm_min_epu8(l_decimal, _mm_set1_epi8(9)), l_decimal);
    __m128i const l_letter = _mm_sub_epi8(_mm_or_si128(a_chars, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
    __m128i const l_is_letter = _mm_cmpeq_epi8(_mm_min_epu8(l_letter, _mm_set1_epi8(5)), l_letter);
    if (_mm_movemask_epi8(_mm_or_si128(l_is_decimal, l_is_letter)) != 0xffff) {
        return false;
    }
    a_values = _mm_blendv_epi8(_mm_add_epi8(l_letter, _mm_set1_epi8(10)), l_decimal, l_is_decimal);
    return true;
}

ORDWEL_TARGET("ssse3,sse4.1")
void hex_decode_sse41(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    __m128i const l_weights = _mm_set1_epi16(0x0110);
    std::size_t l_index = 0;
    for (; a_count - l_index >= 16; l_index += 16) {
        unsigned char const *const l_in = a_text + 2 * l_index;
        __m128i l_first;
        __m128i l_second;
        if (!values_of_digits_128(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in)), l_first) ||
            !values_of_digits_128(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in + 16)), l_second)) {
            break;
        }
        _mm_storeu_si128(
            reinterpret_cast<__m128i *>(a_out + l_index),
            _mm_packus_epi16(_mm_maddubs_epi16(l_first, l_weights), _mm_maddubs_epi16(l_second, l_weights)));
    }
    hex_decode_scalar(a_out + l_index, a_text + 2 * l_index, a_count - l_index);
}

// --- AVX2: 32 bytes to 64 digits, 64 digits to 32 bytes --------------------------------------------

ORDWEL_TARGET("avx2") void hex_encode_avx2(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    __m256i const l_digits =
        _mm256_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f', '0', '1', '2',
                         '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f');
    __m256i const l_mask_0f = _mm256_set1_epi8(0x0f);
    std::size_t l_index = 0;
    for (; a_size - l_index >= 32; l_index += 32) {
        // Bytes 0-7 and 16-23 in the low lane, 8-15 and 24-31 in the high one: the interleaving
        // unpacks, which work per lane, then give the digits of bytes 0-15 and of 16-31.
        __m256i const l_bytes =
            _mm256_permute4x64_epi64(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_bytes + l_index)), 0xd8);
        __m256i const l_high =
            _mm256_shuffle_epi8(l_digits, _mm256_and_si256(_mm256_srli_epi16(l_bytes, 4), l_mask_0f));
        __m256i const l_low = _mm256_shuffle_epi8(l_digits, _mm256_and_si256(l_bytes, l_mask_0f));
        char *const l_out = a_out + 2 * l_index;
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(l_out), _mm256_unpacklo_epi8(l_high, l_low));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(l_out + 32), _mm256_unpackhi_epi8(l_high, l_low));
    }
    hex_encode_scalar(a_out + 2 * l_index, a_bytes + l_index, a_size - l_index);
}

// The values of 32 digits, or false where any of them is no digit. A digit is "0" to "9", or,
// with the bit of lower case set, "a" to "f".
ORDWEL_TARGET("avx2") ORDWEL_ALWAYS_INLINE bool values_of_digits(__m256i a_chars, __m256i &a_values)
{
    __m256i const l_decimal = _mm256_sub_epi8(a_chars, _mm256_set1_epi8('0'));
    __m256i const l_is_decimal = _mm256_cmpeq_epi8(_mm256_min_epu8(l_decimal, _mm256_set1_epi8(9)), l_decimal);
    __m256i const l_letter = _mm256_sub_epi8(_mm256_or_si256(a_chars, _mm256_set1_epi8(0x20)), _mm256_set1_epi8('a'));
    __m256i const l_is_letter = _mm256_cmpeq_epi8(_mm256_min_epu8(l_letter, _mm256_set1_epi8(5)), l_letter);
    if (_mm256_movemask_epi8(_mm256_or_si256(l_is_decimal, l_is_letter)) != -1) {
        return false;
    }
    a_values = _mm256_blendv_epi8(_mm256_add_epi8(l_letter, _mm256_set1_epi8(10)), l_decimal, l_is_decimal);
    return true;
}

ORDWEL_TARGET("avx2") void hex_decode_avx2(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    // Each 16-bit pair of values as high × 16 + low.
    __m256i const l_weights = _mm256_set1_epi16(0x0110);
    std::size_t l_index = 0;
    for (; a_count - l_index >= 32; l_index += 32) {
        unsigned char const *const l_in = a_text + 2 * l_index;
        __m256i l_first;
        __m256i l_second;
        if (!values_of_digits(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_in)), l_first) ||
            !values_of_digits(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_in + 32)), l_second)) {
            break;
        }
        // The pack works per lane: its 64-bit quarters come out in the order 0, 2, 1, 3.
        __m256i const l_bytes =
            _mm256_packus_epi16(_mm256_maddubs_epi16(l_first, l_weights), _mm256_maddubs_epi16(l_second, l_weights));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(a_out + l_index), _mm256_permute4x64_epi64(l_bytes, 0xd8));
    }
    hex_decode_scalar(a_out + l_index, a_text + 2 * l_index, a_count - l_index);
}

// The digits once per 128-bit lane.
constexpr char k_digits_4x[] = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";

// --- AVX-512: 64 bytes to 128 digits, 128 digits to 64 bytes ----------------------------------------

// The digits of 64 bytes: those of bytes 0-31 in a_first, of 32-63 in a_second.
ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE void digits_of_bytes_512(__m512i a_bytes, __m512i &a_first, __m512i &a_second)
{
    __m512i const l_digits = _mm512_loadu_si512(k_digits_4x);
    __m512i const l_mask_0f = _mm512_set1_epi8(0x0f);
    // Lane i holds the 64-bit quarters i and i + 4, so that the per-lane unpacks give the digits
    // of bytes 0-31 and of 32-63.
    __m512i const l_ordered = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), a_bytes);
    __m512i const l_high = _mm512_shuffle_epi8(l_digits, _mm512_and_si512(_mm512_srli_epi16(l_ordered, 4), l_mask_0f));
    __m512i const l_low = _mm512_shuffle_epi8(l_digits, _mm512_and_si512(l_ordered, l_mask_0f));
    a_first = _mm512_unpacklo_epi8(l_high, l_low);
    a_second = _mm512_unpackhi_epi8(l_high, l_low);
}

ORDWEL_TARGET("avx512f,avx512bw") void hex_encode_avx512(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    std::size_t l_index = 0;
    __m512i l_first;
    __m512i l_second;
    // Room that starts at an even place within its line, as an allocated block does, first takes
    // the digits up to the next line with a masked load and store, and the loop's stores then
    // fill a line each.
    std::size_t const l_head = bytes_to_next_line(a_out, 2);
    if (l_head != 0 && a_size >= 96) {
        l_index = l_head / 2;
        digits_of_bytes_512(_mm512_maskz_loadu_epi8((std::uint64_t(1) << l_index) - 1, a_bytes), l_first, l_second);
        _mm512_mask_storeu_epi8(a_out, (std::uint64_t(1) << (2 * l_index)) - 1, l_first);
    }
    for (; a_size - l_index >= 64; l_index += 64) {
        digits_of_bytes_512(_mm512_loadu_si512(a_bytes + l_index), l_first, l_second);
        char *const l_out = a_out + 2 * l_index;
        _mm512_storeu_si512(l_out, l_first);
        _mm512_storeu_si512(l_out + 64, l_second);
    }
    hex_encode_avx2(a_out + 2 * l_index, a_bytes + l_index, a_size - l_index);
}

ORDWEL_TARGET("avx512f,avx512bw") ORDWEL_ALWAYS_INLINE bool values_of_digits_512(__m512i a_chars, __m512i &a_values)
{
    __m512i const l_decimal = _mm512_sub_epi8(a_chars, _mm512_set1_epi8('0'));
    __mmask64 const l_is_decimal = _mm512_cmple_epu8_mask(l_decimal, _mm512_set1_epi8(9));
    __m512i const l_letter = _mm512_sub_epi8(_mm512_or_si512(a_chars, _mm512_set1_epi8(0x20)), _mm512_set1_epi8('a'));
    __mmask64 const l_is_letter = _mm512_cmple_epu8_mask(l_letter, _mm512_set1_epi8(5));
    if ((l_is_decimal | l_is_letter) != ~__mmask64(0)) {
        return false;
    }
    a_values = _mm512_mask_blend_epi8(l_is_decimal, _mm512_add_epi8(l_letter, _mm512_set1_epi8(10)), l_decimal);
    return true;
}

// The 64 bytes of two vectors of digit values, in order.
ORDWEL_TARGET("avx512f,avx512bw") ORDWEL_ALWAYS_INLINE __m512i bytes_of_values_512(__m512i a_first, __m512i a_second)
{
    __m512i const l_weights = _mm512_set1_epi16(0x0110);
    // The pack works per lane: its 64-bit quarters come out in the order 0, 2, 4, 6, 1, 3, 5, 7.
    __m512i const l_order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    __m512i const l_bytes =
        _mm512_packus_epi16(_mm512_maddubs_epi16(a_first, l_weights), _mm512_maddubs_epi16(a_second, l_weights));
    return _mm512_permutexvar_epi64(l_order, l_bytes);
}

ORDWEL_TARGET("avx512f,avx512bw")
void hex_decode_avx512bw(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    std::size_t l_index = 0;
    for (; a_count - l_index >= 64; l_index += 64) {
        unsigned char const *const l_in = a_text + 2 * l_index;
        __m512i l_first;
        __m512i l_second;
        if (!values_of_digits_512(_mm512_loadu_si512(l_in), l_first) ||
            !values_of_digits_512(_mm512_loadu_si512(l_in + 64), l_second)) {
            break;
        }
        _mm512_storeu_si512(a_out + l_index, bytes_of_values_512(l_first, l_second));
    }
    hex_decode_avx2(a_out + l_index, a_text + 2 * l_index, a_count - l_index);
}

// Each character 0 to 127 as the value of its digit, 0x80 where it is none: the 128 entries of
// vpermi2b, so that one look-up both checks and converts 64 digits.
struct vbmi_digit_values {
    unsigned char m_values[128];
};

constexpr vbmi_digit_values vbmi_digit_values_new()
{
    vbmi_digit_values l_table{};
    for (unsigned l_char = 0; l_char < 128; ++l_char) {
        l_table.m_values[l_char] = 0x80;
    }
    for (unsigned l_value = 0; l_value < 16; ++l_value) {
        l_table.m_values[static_cast<unsigned char>("0123456789abcdef"[l_value])] = static_cast<unsigned char>(l_value);
        l_table.m_values[static_cast<unsigned char>("0123456789ABCDEF"[l_value])] = static_cast<unsigned char>(l_value);
    }
    return l_table;
}

constexpr vbmi_digit_values k_vbmi_digit_values = vbmi_digit_values_new();

// The values of the digits through the table; false if one in the lanes a_lanes is no digit (its
// table entry, or for a byte above 127 the byte itself, has the top bit set).
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
ORDWEL_ALWAYS_INLINE bool values_of_digits_vbmi(__m512i a_low, __m512i a_high, __m512i a_chars, __mmask64 a_lanes,
                                                __m512i &a_values)
{
    a_values = _mm512_permutex2var_epi8(a_low, a_chars, a_high);
    return (_mm512_movepi8_mask(_mm512_or_si512(a_chars, a_values)) & a_lanes) == 0;
}

ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
void hex_decode_vbmi(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    __m512i const l_low = _mm512_loadu_si512(k_vbmi_digit_values.m_values);
    __m512i const l_high = _mm512_loadu_si512(k_vbmi_digit_values.m_values + 64);
    std::size_t l_index = 0;
    // Digits that start at an even place within their line, as text in an allocated block does,
    // first decode up to the next line with a masked load and store, and the loop's loads then
    // start on a line each. A head with a foreign byte is left to the code after the loop.
    std::size_t const l_head_digits = bytes_to_next_line(a_text, 2);
    if (l_head_digits != 0 && a_count >= 96) {
        std::size_t const l_head = l_head_digits / 2;
        __mmask64 const l_lanes = (std::uint64_t(1) << l_head_digits) - 1;
        __m512i l_values;
        if (values_of_digits_vbmi(l_low, l_high, _mm512_maskz_loadu_epi8(l_lanes, a_text), l_lanes, l_values)) {
            _mm512_mask_storeu_epi8(a_out, (std::uint64_t(1) << l_head) - 1,
                                    bytes_of_values_512(l_values, _mm512_setzero_si512()));
            l_index = l_head;
        }
    }
    for (; a_count - l_index >= 64; l_index += 64) {
        unsigned char const *const l_in = a_text + 2 * l_index;
        __m512i l_first;
        __m512i l_second;
        if (!values_of_digits_vbmi(l_low, l_high, _mm512_loadu_si512(l_in), ~__mmask64(0), l_first) ||
            !values_of_digits_vbmi(l_low, l_high, _mm512_loadu_si512(l_in + 64), ~__mmask64(0), l_second)) {
            break;
        }
        _mm512_storeu_si512(a_out + l_index, bytes_of_values_512(l_first, l_second));
    }
    hex_decode_avx2(a_out + l_index, a_text + 2 * l_index, a_count - l_index);
}

// The AVX-512 level does not promise VBMI; without it the digits are checked by their ranges.
void hex_decode_avx512(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count)
{
    if (cpu_features_detected().m_avx512vbmi) {
        hex_decode_vbmi(a_out, a_text, a_count);
    } else {
        hex_decode_avx512bw(a_out, a_text, a_count);
    }
}

#endif

} // namespace

#if defined(ORDWEL_X86_KERNELS)
dispatch<hex_encode_kernel> const k_hex_encode{&hex_encode_scalar, &hex_encode_sse41, &hex_encode_avx2,
                                               &hex_encode_avx512};
dispatch<hex_decode_kernel> const k_hex_decode{&hex_decode_scalar, &hex_decode_sse41, &hex_decode_avx2,
                                               &hex_decode_avx512};
hex_decode_kernel const k_hex_decode_avx512_ranges = &hex_decode_avx512bw;
#else
dispatch<hex_encode_kernel> const k_hex_encode{&hex_encode_scalar};
dispatch<hex_decode_kernel> const k_hex_decode{&hex_decode_scalar};
hex_decode_kernel const k_hex_decode_avx512_ranges = nullptr;
#endif

} // namespace internal
} // namespace ordwel
