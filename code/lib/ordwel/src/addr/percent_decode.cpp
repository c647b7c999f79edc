// SPDX-License-Identifier: MIT
#include "addr/percent_decode.h"

#include <cstring>

#include <ordwel/internal/attributes.h>
#include <ordwel/types.h>

#include "core/byte_tables.h"
#include "core/x86_intrinsics.h"

namespace ordwel {
namespace internal {

namespace {

// A foreign character counts as the digit 0, so that "%zz" (value 0) stays as it is.
constexpr byte_table k_hex_value = hex_value_table(0);

// Whether one of the eight bytes of a_word is a '%': a byte of a_word ^ 0x25... is zero exactly
// there, and (x - 0x01...) & ~x & 0x80... is non-zero exactly when a byte of x is zero.
ORDWEL_ALWAYS_INLINE bool has_percent(uint64 a_word)
{
    uint64 const l_x = a_word ^ 0x2525252525252525ULL;
    return ((l_x - 0x0101010101010101ULL) & ~l_x & 0x8080808080808080ULL) != 0;
}

// Decodes from a_read while it is in front of a_stop, which is at most a_end - 2: from there on a
// '%' has no two bytes behind it. Runs without a '%' go eight bytes at a time, so a_read may end
// up to seven bytes behind a_stop, having copied those bytes as they are.
ORDWEL_ALWAYS_INLINE void decode_run(char *&a_out, char const *&a_read, char const *a_stop, char const *a_end)
{
    while (a_read < a_stop) {
        if (a_end - a_read >= 8) {
            uint64 l_word;
            std::memcpy(&l_word, a_read, sizeof l_word);
            // The output never runs ahead of the input, so it has room for the eight bytes too.
            std::memcpy(a_out, &l_word, sizeof l_word);
            if (!has_percent(l_word)) {
                a_out += 8;
                a_read += 8;
                continue;
            }
            while (*a_read != '%') {
                ++a_out;
                ++a_read;
            }
            if (a_read >= a_stop) {
                return;
            }
        } else if (*a_read != '%') {
            *a_out++ = *a_read++;
            continue;
        }
        unsigned const l_value = 16U * k_hex_value[static_cast<unsigned char>(a_read[1])] +
                                 k_hex_value[static_cast<unsigned char>(a_read[2])];
        if (l_value != 0) {
            *a_out++ = static_cast<char>(l_value);
            a_read += 3;
        } else {
            *a_out++ = '%';
            ++a_read;
        }
    }
}

std::size_t percent_decode_scalar(char *a_out, char const *a_text, std::size_t a_size)
{
    char *l_out = a_out;
    char const *l_read = a_text;
    char const *const l_end = a_text + a_size;
    if (a_size > 2) {
        decode_run(l_out, l_read, l_end - 2, l_end);
    }
    std::size_t const l_rest = static_cast<std::size_t>(l_end - l_read);
    if (l_rest != 0) {
        std::memcpy(l_out, l_read, l_rest);
    }
    return static_cast<std::size_t>(l_out - a_out) + l_rest;
}

#if defined(ORDWEL_X86_KERNELS)

// The hex values of the bytes 0 to 127, as two 64-byte tables for a two-table permute.
struct hex_value_lanes {
    alignas(64) unsigned char m_value[128];
};

constexpr hex_value_lanes hex_value_lanes_new()
{
    hex_value_lanes l_lanes{};
    for (unsigned l_byte = 0; l_byte < 128; ++l_byte) {
        l_lanes.m_value[l_byte] = k_hex_value[static_cast<unsigned char>(l_byte)];
    }
    return l_lanes;
}

constexpr hex_value_lanes k_hex_lanes = hex_value_lanes_new();

// The low a_count bits set (all of them from 64 on).
ORDWEL_ALWAYS_INLINE uint64 low_bits(std::size_t a_count)
{
    return a_count >= 64 ? ~uint64(0) : (uint64(1) << a_count) - 1;
}

// A block of 64 positions a step. With three loads, at offsets 0, 1 and 2, each position sees the
// two bytes behind it, and a '%' with a value not 0 is an escape: its byte takes the value, the two
// bytes behind it go, and a compress packs what is left. Escapes closer than three bytes to each
// other (as in "%%41", where the first swallows the second) depend on each other; such a block
// goes through the scalar loop. An escape in the block's last two positions takes bytes of the next
// block, which then starts behind them.
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi,avx512vbmi2")
std::size_t percent_decode_vbmi2(char *a_out, char const *a_text, std::size_t a_size)
{
    __m512i const l_table_low = _mm512_load_si512(k_hex_lanes.m_value);
    __m512i const l_table_high = _mm512_load_si512(k_hex_lanes.m_value + 64);
    __m512i const l_percent = _mm512_set1_epi8('%');
    char *l_out = a_out;
    std::size_t l_at = 0;
    // Escapes start in front of l_last; the block needs at least three bytes.
    std::size_t const l_last = a_size > 2 ? a_size - 2 : 0;
    while (l_at < l_last) {
        std::size_t const l_left = a_size - l_at;
        char const *const l_block = a_text + l_at;
        __mmask64 const l_bytes = low_bits(l_left);
        __m512i const l_zero = _mm512_maskz_loadu_epi8(l_bytes, l_block);
        __mmask64 const l_percents =
            _mm512_mask_cmpeq_epi8_mask(static_cast<__mmask64>(low_bits(l_last - l_at)), l_zero, l_percent);
        if (l_percents == 0) {
            _mm512_mask_storeu_epi8(l_out, l_bytes, l_zero);
            std::size_t const l_copied = l_left < 64 ? l_left : 64;
            l_out += l_copied;
            l_at += l_copied;
            continue;
        }
        __m512i const l_one = _mm512_maskz_loadu_epi8(low_bits(l_left - 1), l_block + 1);
        __m512i const l_two = _mm512_maskz_loadu_epi8(low_bits(l_left - 2), l_block + 2);
        // Bytes from 128 on index the tables by their low seven bits; they are no digits.
        __m512i const l_high =
            _mm512_maskz_permutex2var_epi8(~_mm512_movepi8_mask(l_one), l_table_low, l_one, l_table_high);
        __m512i const l_low =
            _mm512_maskz_permutex2var_epi8(~_mm512_movepi8_mask(l_two), l_table_low, l_two, l_table_high);
        // Each digit is below 16, so the shift of 16-bit words moves no bit into the next byte.
        __m512i const l_value = _mm512_or_si512(_mm512_slli_epi16(l_high, 4), l_low);
        uint64 const l_escapes = _mm512_mask_test_epi8_mask(l_percents, l_value, l_value);
        uint64 const l_taken = (l_escapes << 1) | (l_escapes << 2);
        if ((l_escapes & l_taken) != 0) {
            char const *l_read = l_block;
            decode_run(l_out, l_read, a_text + (l_left > 64 + 2 ? l_at + 64 : l_last), a_text + a_size);
            l_at = static_cast<std::size_t>(l_read - a_text);
            continue;
        }
        __m512i const l_decoded = _mm512_mask_mov_epi8(l_zero, l_escapes, l_value);
        __mmask64 const l_keep = l_bytes & ~l_taken;
        auto const l_kept = static_cast<std::size_t>(__builtin_popcountll(l_keep));
        _mm512_mask_storeu_epi8(l_out, low_bits(l_kept), _mm512_maskz_compress_epi8(l_keep, l_decoded));
        l_out += l_kept;
        l_at += 64 + ((l_escapes >> 63) != 0 ? 2 : (l_escapes >> 62));
    }
    if (l_at < a_size) {
        std::memcpy(l_out, a_text + l_at, a_size - l_at);
        l_out += a_size - l_at;
    }
    return static_cast<std::size_t>(l_out - a_out);
}

// The AVX-512 level doesn't promise VBMI and VBMI2; without them the scalar kernel serves. The
// answer is asked once, as the program starts: a call before that reads false and decodes with
// the scalar kernel, which gives the same result.
bool const k_has_vbmi2 = cpu_features_detected().m_avx512vbmi && cpu_features_detected().m_avx512vbmi2;

std::size_t percent_decode_avx512(char *a_out, char const *a_text, std::size_t a_size)
{
    return k_has_vbmi2 ? percent_decode_vbmi2(a_out, a_text, a_size) : percent_decode_scalar(a_out, a_text, a_size);
}

#endif

} // namespace

#if defined(ORDWEL_X86_KERNELS)
dispatch<percent_decode_kernel> const k_percent_decode(percent_decode_scalar, nullptr, nullptr, percent_decode_avx512);
#else
dispatch<percent_decode_kernel> const k_percent_decode(percent_decode_scalar);
#endif

} // namespace internal
} // namespace ordwel
