// SPDX-License-Identifier: MIT
// The vector kernels of Base64 and the choice among them. Each kernel is compiled for its own
// instruction set (ORDWEL_TARGET), so the rest of the build assumes no more than the baseline.
// Each kernel is a template over the alphabet: the two alphabets differ in the characters of 62 and
// 63 alone, which change the constants of the kernels and not their instructions.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <ordwel/internal/attributes.h>

#include "core/byte_tables.h"
#include "stream/codec_kernels.h"

#include "core/x86_intrinsics.h"

namespace ordwel {
namespace internal {

namespace {

constexpr char const *alphabet_of(base64_alphabet a_alphabet)
{
    return a_alphabet == base64_alphabet::url ? k_base64url_alphabet : k_base64_alphabet;
}

#if defined(ORDWEL_X86_KERNELS)

std::size_t bytes_between(void const *a_from, void const *a_to)
{
    return static_cast<std::size_t>(static_cast<unsigned char const *>(a_to) -
                                    static_cast<unsigned char const *>(a_from));
}

// --- AVX2: 24 bytes to 32 characters, 32 characters to 24 bytes ------------------------------------

// Each 128-bit lane holds 12 bytes in its low end; gives the 16 sextets of each lane, one per byte.
// Every 3 bytes (a, b, c) are spread over a 32-bit word as b a c b, and two multiplications
// move each sextet to the low end of its own byte.
ORDWEL_TARGET("avx2") ORDWEL_ALWAYS_INLINE __m256i sextets_of_bytes(__m256i a_bytes)
{
    __m256i const l_spread =
        _mm256_shuffle_epi8(a_bytes, _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10, 1, 0, 2, 1, 4,
                                                      3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    __m256i const l_first_and_third =
        _mm256_mulhi_epu16(_mm256_and_si256(l_spread, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    __m256i const l_second_and_fourth =
        _mm256_mullo_epi16(_mm256_and_si256(l_spread, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(l_first_and_third, l_second_and_fourth);
}

// 16 bytes of a table in both lanes.
ORDWEL_TARGET("avx2") ORDWEL_ALWAYS_INLINE __m256i both_lanes(signed char const (&a_table)[16])
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_table)));
}

// The offsets from sextets to characters, indexed by a sextet's range (0-25 "A", 26-51 "a", 52-61
// "0", 62 and 63 the alphabet's own) as the encoders number the ranges.
struct encoding_offsets {
    signed char m_offsets[16];
};

constexpr encoding_offsets encoding_offsets_of(base64_alphabet a_alphabet)
{
    char const *const l_alphabet = alphabet_of(a_alphabet);
    return {{'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
             '0' - 52, static_cast<signed char>(l_alphabet[62] - 62), static_cast<signed char>(l_alphabet[63] - 63),
             'A', 0, 0}};
}

// Each sextet as its character: the sextet plus an offset that depends on its range only, the
// offset found by pshufb.
template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE __m256i characters_of_sextets(__m256i a_sextets)
{
    static constexpr encoding_offsets k_offsets = encoding_offsets_of(t_alphabet);
    // 0-51 become 0, 52-61 become 1 to 10, 62 and 63 become 11 and 12; then 0-25 become 13.
    __m256i l_range = _mm256_subs_epu8(a_sextets, _mm256_set1_epi8(51));
    __m256i const l_upper = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), a_sextets);
    l_range = _mm256_or_si256(l_range, _mm256_and_si256(l_upper, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(a_sextets, _mm256_shuffle_epi8(both_lanes(k_offsets.m_offsets), l_range));
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx2")
std::size_t base64_encode_avx2(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    unsigned char const *l_in = a_bytes;
    unsigned char const *const l_end = a_bytes + a_size;
    char *l_out = a_out;
    // Each round loads 16 bytes at l_in and 16 at l_in + 12, and codes the first 12 of each.
    while (bytes_between(l_in, l_end) >= 28) {
        __m128i const l_low = _mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in));
        __m128i const l_high = _mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in + 12));
        __m256i const l_bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(l_low), l_high, 1);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(l_out),
                            characters_of_sextets<t_alphabet>(sextets_of_bytes(l_bytes)));
        l_in += 24;
        l_out += 32;
    }
    auto const l_scalar = t_alphabet == base64_alphabet::url ? &base64url_encode_scalar : &base64_encode_scalar;
    return bytes_between(a_out, l_out) + l_scalar(l_out, l_in, bytes_between(l_in, l_end));
}

// The nibble classes and sextet offsets of an alphabet's decoders (one 16-byte table each, in every
// 128-bit lane). A character is classified by
// its low and its high nibble through two tables whose entries share a bit only for foreign
// characters; the offset to its sextet then depends on the high nibble alone, except for the
// character of 63, which shares its high nibble with letters ("/" with "+", "_" with "P" to "Z"),
// so its index moves by m_slot to an entry of its own.
struct lane_decoding {
    signed char m_low_classes[16];
    signed char m_high_classes[16];
    signed char m_offsets[16];
    signed char m_slot;
};

constexpr lane_decoding lane_decoding_of(base64_alphabet a_alphabet)
{
    if (a_alphabet == base64_alphabet::url) {
        // "-" is alone in its high nibble 2; "_" goes to entry 8. Nibble 7 gets a class of its own,
        // since "_" is valid in 5 and DEL in 7 is not.
        return {{0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x3b, 0x3b, 0x3a, 0x3b, 0x33},
                {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x20, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10},
                {0, 0, 17, 4, -65, -65, -71, -71, -32, 0, 0, 0, 0, 0, 0, 0},
                3};
    }
    // "/" goes to entry 1, "+" is alone in its high nibble 2 with "/".
    return {{0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a},
            {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10},
            {0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0},
            -1};
}

// The 32 characters as sextets, or false where any of them is outside the alphabet.
template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE bool sextets_of_characters(__m256i a_chars, __m256i &a_sextets)
{
    static constexpr lane_decoding k_decoding = lane_decoding_of(t_alphabet);
    // The mask keeps each nibble and clears bit 7, so that pshufb never zeroes.
    __m256i const l_mask_2f = _mm256_set1_epi8(0x2f);
    __m256i const l_high = _mm256_and_si256(_mm256_srli_epi32(a_chars, 4), l_mask_2f);
    __m256i const l_low = _mm256_and_si256(a_chars, l_mask_2f);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(both_lanes(k_decoding.m_low_classes), l_low),
                            _mm256_shuffle_epi8(both_lanes(k_decoding.m_high_classes), l_high))) {
        return false;
    }
    __m256i const l_63 = _mm256_cmpeq_epi8(a_chars, _mm256_set1_epi8(alphabet_of(t_alphabet)[63]));
    __m256i const l_index = _mm256_add_epi8(l_high, _mm256_and_si256(l_63, _mm256_set1_epi8(k_decoding.m_slot)));
    a_sextets = _mm256_add_epi8(a_chars, _mm256_shuffle_epi8(both_lanes(k_decoding.m_offsets), l_index));
    return true;
}

// Joins each 4 sextets to 3 bytes: the 24 bytes end up in the low 24 bytes of the result.
ORDWEL_TARGET("avx2") ORDWEL_ALWAYS_INLINE __m256i bytes_of_sextets(__m256i a_sextets)
{
    __m256i const l_pairs = _mm256_maddubs_epi16(a_sextets, _mm256_set1_epi32(0x01400140));
    __m256i const l_groups = _mm256_madd_epi16(l_pairs, _mm256_set1_epi32(0x00011000));
    __m256i const l_packed =
        _mm256_shuffle_epi8(l_groups, _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0,
                                                       6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    return _mm256_permutevar8x32_epi32(l_packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx2")
std::size_t base64_prefix_avx2(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    unsigned char const *l_in = a_text;
    unsigned char const *const l_end = a_text + a_size;
    unsigned char *l_out = a_out;
    while (bytes_between(l_in, l_end) >= 32) {
        __m256i l_sextets;
        if (!sextets_of_characters<t_alphabet>(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_in)),
                                               l_sextets)) {
            break;
        }
        __m256i const l_bytes = bytes_of_sextets(l_sextets);
        // 24 bytes: the room ends there, so no 32-byte store.
        _mm_storeu_si128(reinterpret_cast<__m128i *>(l_out), _mm256_castsi256_si128(l_bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(l_out + 16), _mm256_extracti128_si256(l_bytes, 1));
        l_in += 32;
        l_out += 24;
    }
    return bytes_between(a_text, l_in);
}

// --- SSSE3 and SSE4.1: 12 bytes to 16 characters, 16 characters to 12 bytes -------------------------
// The AVX2 kernels on one 128-bit lane: the same shuffles, multiplications and tables.

// The 12 bytes in the low end as the 16 sextets, one per byte.
ORDWEL_TARGET("ssse3,sse4.1") ORDWEL_ALWAYS_INLINE __m128i sextets_of_bytes_sse41(__m128i a_bytes)
{
    __m128i const l_spread =
        _mm_shuffle_epi8(a_bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    __m128i const l_first_and_third =
        _mm_mulhi_epu16(_mm_and_si128(l_spread, _mm_set1_epi32(0x0fc0fc00)), _mm_set1_epi32(0x04000040));
    __m128i const l_second_and_fourth =
        _mm_mullo_epi16(_mm_and_si128(l_spread, _mm_set1_epi32(0x003f03f0)), _mm_set1_epi32(0x01000010));
    return _mm_or_si128(l_first_and_third, l_second_and_fourth);
}

ORDWEL_TARGET("ssse3,sse4.1") ORDWEL_ALWAYS_INLINE __m128i table_sse41(signed char const (&a_table)[16])
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const *>(a_table));
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("ssse3,sse4.1")
ORDWEL_ALWAYS_INLINE __m128i characters_of_sextets_sse41(__m128i a_sextets)
{
    static constexpr encoding_offsets k_offsets = encoding_offsets_of(t_alphabet);
    __m128i l_range = _mm_subs_epu8(a_sextets, _mm_set1_epi8(51));
    __m128i const l_upper = _mm_cmpgt_epi8(_mm_set1_epi8(26), a_sextets);
    l_range = _mm_or_si128(l_range, _mm_and_si128(l_upper, _mm_set1_epi8(13)));
    return _mm_add_epi8(a_sextets, _mm_shuffle_epi8(table_sse41(k_offsets.m_offsets), l_range));
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("ssse3,sse4.1")
std::size_t base64_encode_sse41(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    unsigned char const *l_in = a_bytes;
    unsigned char const *const l_end = a_bytes + a_size;
    char *l_out = a_out;
    // Each round loads 16 bytes and codes the first 12.
    while (bytes_between(l_in, l_end) >= 16) {
        __m128i const l_bytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(l_out),
                         characters_of_sextets_sse41<t_alphabet>(sextets_of_bytes_sse41(l_bytes)));
        l_in += 12;
        l_out += 16;
    }
    auto const l_scalar = t_alphabet == base64_alphabet::url ? &base64url_encode_scalar : &base64_encode_scalar;
    return bytes_between(a_out, l_out) + l_scalar(l_out, l_in, bytes_between(l_in, l_end));
}

// The 16 characters as sextets, or false where any of them is outside the alphabet.
template <base64_alphabet t_alphabet>
ORDWEL_TARGET("ssse3,sse4.1")
ORDWEL_ALWAYS_INLINE bool sextets_of_characters_sse41(__m128i a_chars, __m128i &a_sextets)
{
    static constexpr lane_decoding k_decoding = lane_decoding_of(t_alphabet);
    __m128i const l_mask_2f = _mm_set1_epi8(0x2f);
    __m128i const l_high = _mm_and_si128(_mm_srli_epi32(a_chars, 4), l_mask_2f);
    __m128i const l_low = _mm_and_si128(a_chars, l_mask_2f);
    if (!_mm_testz_si128(_mm_shuffle_epi8(table_sse41(k_decoding.m_low_classes), l_low),
                         _mm_shuffle_epi8(table_sse41(k_decoding.m_high_classes), l_high))) {
        return false;
    }
    __m128i const l_63 = _mm_cmpeq_epi8(a_chars, _mm_set1_epi8(alphabet_of(t_alphabet)[63]));
    __m128i const l_index = _mm_add_epi8(l_high, _mm_and_si128(l_63, _mm_set1_epi8(k_decoding.m_slot)));
    a_sextets = _mm_add_epi8(a_chars, _mm_shuffle_epi8(table_sse41(k_decoding.m_offsets), l_index));
    return true;
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("ssse3,sse4.1")
std::size_t base64_prefix_sse41(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    unsigned char const *l_in = a_text;
    unsigned char const *const l_end = a_text + a_size;
    unsigned char *l_out = a_out;
    while (bytes_between(l_in, l_end) >= 16) {
        __m128i l_sextets;
        if (!sextets_of_characters_sse41<t_alphabet>(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_in)),
                                                     l_sextets)) {
            break;
        }
        // Each 4 sextets to 3 bytes, the 12 bytes in the low end.
        __m128i const l_pairs = _mm_maddubs_epi16(l_sextets, _mm_set1_epi32(0x01400140));
        __m128i const l_groups = _mm_madd_epi16(l_pairs, _mm_set1_epi32(0x00011000));
        __m128i const l_bytes =
            _mm_shuffle_epi8(l_groups, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
        // 12 bytes: the room ends there, so no 16-byte store.
        _mm_storel_epi64(reinterpret_cast<__m128i *>(l_out), l_bytes);
        auto const l_last = static_cast<uint32>(_mm_extract_epi32(l_bytes, 2));
        std::memcpy(l_out + 8, &l_last, 4);
        l_in += 16;
        l_out += 12;
    }
    return bytes_between(a_text, l_in);
}

// --- AVX-512 VBMI: 48 bytes to 64 characters, 64 characters to 48 bytes -----------------------------

// Byte look-ups of 64 entries for vpermb.
struct vbmi_tables {
    // For each 32-bit word of the input to the multishift, the bytes b a c b of its group.
    unsigned char m_spread[64];
    // Where each output byte sits among the 32-bit words of joined groups (low byte first).
    unsigned char m_pack[64];
};

// Each character 0 to 127 as its sextet in an alphabet, 0x80 where it is foreign: the 128 entries
// of vpermi2b.
struct vbmi_sextets {
    unsigned char m_sextets[128];
};

constexpr vbmi_sextets vbmi_sextets_new(char const *a_alphabet)
{
    vbmi_sextets l_table{};
    for (unsigned l_char = 0; l_char < 128; ++l_char) {
        l_table.m_sextets[l_char] = 0x80;
    }
    for (unsigned l_value = 0; l_value < 64; ++l_value) {
        l_table.m_sextets[static_cast<unsigned char>(a_alphabet[l_value])] = static_cast<unsigned char>(l_value);
    }
    return l_table;
}

constexpr vbmi_sextets k_vbmi_sextets[2] = {vbmi_sextets_new(k_base64_alphabet),
                                            vbmi_sextets_new(k_base64url_alphabet)};

constexpr vbmi_tables vbmi_tables_new()
{
    vbmi_tables l_tables{};
    for (unsigned l_group = 0; l_group < 16; ++l_group) {
        l_tables.m_spread[4 * l_group] = static_cast<unsigned char>(3 * l_group + 1);
        l_tables.m_spread[4 * l_group + 1] = static_cast<unsigned char>(3 * l_group);
        l_tables.m_spread[4 * l_group + 2] = static_cast<unsigned char>(3 * l_group + 2);
        l_tables.m_spread[4 * l_group + 3] = static_cast<unsigned char>(3 * l_group + 1);
        for (unsigned l_byte = 0; l_byte < 3; ++l_byte) {
            l_tables.m_pack[3 * l_group + l_byte] = static_cast<unsigned char>(4 * l_group + 2 - l_byte);
        }
    }
    return l_tables;
}

constexpr vbmi_tables k_vbmi = vbmi_tables_new();

// The tables of the VBMI encoder: the order that spreads 16 groups of 3 bytes over 64-bit words,
// the bit offsets of the four sextets of each of the two groups in such a word, and the alphabet.
struct vbmi_encoding {
    __m512i m_spread;
    __m512i m_shifts;
    __m512i m_alphabet;
};

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
ORDWEL_ALWAYS_INLINE vbmi_encoding vbmi_encoding_new()
{
    return {_mm512_loadu_si512(k_vbmi.m_spread), _mm512_set1_epi64(0x3036242a1016040a),
            _mm512_loadu_si512(alphabet_of(t_alphabet))};
}

// Encodes the low 48 bytes of a_bytes into 64 characters.
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
ORDWEL_ALWAYS_INLINE __m512i vbmi_encode_block(vbmi_encoding const &a_tables, __m512i a_bytes)
{
    __m512i const l_sextets =
        _mm512_multishift_epi64_epi8(a_tables.m_shifts, _mm512_permutexvar_epi8(a_tables.m_spread, a_bytes));
    return _mm512_permutexvar_epi8(l_sextets, a_tables.m_alphabet);
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
std::size_t base64_encode_vbmi(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    vbmi_encoding const l_tables = vbmi_encoding_new<t_alphabet>();
    unsigned char const *l_in = a_bytes;
    unsigned char const *const l_end = a_bytes + a_size;
    char *l_out = a_out;
    // Room that starts on a group boundary within its line, as an allocated block does, first
    // takes the groups up to the next line with a masked load and store, and the loop's stores
    // then fill a line each.
    std::size_t const l_head = bytes_to_next_line(l_out, 4);
    if (l_head != 0 && a_size >= 96) {
        __m512i const l_bytes = _mm512_maskz_loadu_epi8((std::uint64_t(1) << (l_head / 4 * 3)) - 1, l_in);
        _mm512_mask_storeu_epi8(l_out, (std::uint64_t(1) << l_head) - 1, vbmi_encode_block(l_tables, l_bytes));
        l_in += l_head / 4 * 3;
        l_out += l_head;
    }
    while (bytes_between(l_in, l_end) >= 64) {
        _mm512_storeu_si512(l_out, vbmi_encode_block(l_tables, _mm512_loadu_si512(l_in)));
        l_in += 48;
        l_out += 64;
    }
    return bytes_between(a_out, l_out) + base64_encode_avx2<t_alphabet>(l_out, l_in, bytes_between(l_in, l_end));
}

// The tables of the VBMI decoder: the sextet of each character (0x80 for a foreign one, in two
// halves of 64) and the order that packs 16 groups of 24 bits into 48 bytes.
struct vbmi_decoding {
    __m512i m_sextets_low;
    __m512i m_sextets_high;
    __m512i m_pack;
};

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
ORDWEL_ALWAYS_INLINE vbmi_decoding vbmi_decoding_new()
{
    unsigned char const *const l_table = k_vbmi_sextets[static_cast<unsigned>(t_alphabet)].m_sextets;
    return {_mm512_loadu_si512(l_table), _mm512_loadu_si512(l_table + 64), _mm512_loadu_si512(k_vbmi.m_pack)};
}

// Decodes the 64 characters a_chars into the low 48 bytes of the result; a_foreign gets the lanes
// that hold a foreign character (top bit set, or a sextet of 0x80).
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
ORDWEL_ALWAYS_INLINE __m512i vbmi_decode_block(vbmi_decoding const &a_tables, __m512i a_chars, __mmask64 &a_foreign)
{
    __m512i const l_sextets = _mm512_permutex2var_epi8(a_tables.m_sextets_low, a_chars, a_tables.m_sextets_high);
    a_foreign = _mm512_movepi8_mask(_mm512_or_si512(a_chars, l_sextets));
    __m512i const l_pairs = _mm512_maddubs_epi16(l_sextets, _mm512_set1_epi32(0x01400140));
    __m512i const l_groups = _mm512_madd_epi16(l_pairs, _mm512_set1_epi32(0x00011000));
    return _mm512_permutexvar_epi8(a_tables.m_pack, l_groups);
}

template <base64_alphabet t_alphabet>
ORDWEL_TARGET("avx512f,avx512bw,avx512vbmi")
std::size_t base64_prefix_vbmi(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    vbmi_decoding const l_tables = vbmi_decoding_new<t_alphabet>();
    unsigned char const *l_in = a_text;
    unsigned char const *const l_end = a_text + a_size;
    unsigned char *l_out = a_out;
    // A text that starts on a group boundary within its line, as text in an allocated block does,
    // first decodes the groups up to the next line with a masked load and store, and the loop's
    // loads then start on a line each. A head with a foreign character is left to the code
    // below, as a block is.
    std::size_t const l_head = bytes_to_next_line(l_in, 4);
    if (l_head != 0 && a_size >= 128) {
        __mmask64 const l_chars_mask = (std::uint64_t(1) << l_head) - 1;
        __mmask64 l_foreign = 0;
        __m512i const l_bytes = vbmi_decode_block(l_tables, _mm512_maskz_loadu_epi8(l_chars_mask, l_in), l_foreign);
        if ((l_foreign & l_chars_mask) == 0) {
            _mm512_mask_storeu_epi8(l_out, (std::uint64_t(1) << (l_head / 4 * 3)) - 1, l_bytes);
            l_in += l_head;
            l_out += l_head / 4 * 3;
        }
    }
    while (bytes_between(l_in, l_end) >= 64) {
        __mmask64 l_foreign = 0;
        __m512i const l_bytes = vbmi_decode_block(l_tables, _mm512_loadu_si512(l_in), l_foreign);
        if (l_foreign != 0) {
            break;
        }
        // 48 bytes: the room ends there, so no 64-byte store.
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(l_out), _mm512_castsi512_si256(l_bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(l_out + 32), _mm512_extracti32x4_epi32(l_bytes, 2));
        l_in += 64;
        l_out += 48;
    }
    return bytes_between(a_text, l_in) + base64_prefix_avx2<t_alphabet>(l_out, l_in, bytes_between(l_in, l_end));
}

// The AVX-512 level does not promise VBMI; without it the AVX2 kernels serve.
template <base64_alphabet t_alphabet>
std::size_t base64_encode_avx512(char *a_out, unsigned char const *a_bytes, std::size_t a_size)
{
    if (cpu_features_detected().m_avx512vbmi) {
        return base64_encode_vbmi<t_alphabet>(a_out, a_bytes, a_size);
    }
    return base64_encode_avx2<t_alphabet>(a_out, a_bytes, a_size);
}

template <base64_alphabet t_alphabet>
std::size_t base64_prefix_avx512(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    if (cpu_features_detected().m_avx512vbmi) {
        return base64_prefix_vbmi<t_alphabet>(a_out, a_text, a_size);
    }
    return base64_prefix_avx2<t_alphabet>(a_out, a_text, a_size);
}

// The lenient decoders: the vector blocks, then the scalar kernel from the first odd block on.
template <base64_prefix_kernel t_prefix, base64_alphabet t_alphabet>
std::size_t base64_decode_vector(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size)
{
    auto const l_scalar = t_alphabet == base64_alphabet::url ? &base64url_decode_scalar : &base64_decode_scalar;
    std::size_t const l_taken = t_prefix(a_out, a_text, a_size);
    return l_taken / 4 * 3 + l_scalar(a_out + l_taken / 4 * 3, a_text + l_taken, a_size - l_taken);
}

#endif

// Takes nothing: the scalar code decides every group.
std::size_t base64_prefix_scalar(unsigned char *, unsigned char const *, std::size_t)
{
    return 0;
}

} // namespace

#if defined(ORDWEL_X86_KERNELS)
constexpr auto k_standard = base64_alphabet::standard;
constexpr auto k_url = base64_alphabet::url;
dispatch<base64_encode_kernel> const k_base64_encode{&base64_encode_scalar, &base64_encode_sse41<k_standard>,
                                                     &base64_encode_avx2<k_standard>,
                                                     &base64_encode_avx512<k_standard>};
dispatch<base64_decode_kernel> const k_base64_decode{
    &base64_decode_scalar, &base64_decode_vector<&base64_prefix_sse41<k_standard>, k_standard>,
    &base64_decode_vector<&base64_prefix_avx2<k_standard>, k_standard>,
    &base64_decode_vector<&base64_prefix_avx512<k_standard>, k_standard>};
dispatch<base64_prefix_kernel> const k_base64_decode_prefix{&base64_prefix_scalar, &base64_prefix_sse41<k_standard>,
                                                            &base64_prefix_avx2<k_standard>,
                                                            &base64_prefix_avx512<k_standard>};
dispatch<base64_encode_kernel> const k_base64url_encode{&base64url_encode_scalar, &base64_encode_sse41<k_url>,
                                                        &base64_encode_avx2<k_url>, &base64_encode_avx512<k_url>};
dispatch<base64_decode_kernel> const k_base64url_decode{&base64url_decode_scalar,
                                                        &base64_decode_vector<&base64_prefix_sse41<k_url>, k_url>,
                                                        &base64_decode_vector<&base64_prefix_avx2<k_url>, k_url>,
                                                        &base64_decode_vector<&base64_prefix_avx512<k_url>, k_url>};
dispatch<base64_prefix_kernel> const k_base64url_decode_prefix{
    &base64_prefix_scalar, &base64_prefix_sse41<k_url>, &base64_prefix_avx2<k_url>, &base64_prefix_avx512<k_url>};
#else
dispatch<base64_encode_kernel> const k_base64_encode{&base64_encode_scalar};
dispatch<base64_decode_kernel> const k_base64_decode{&base64_decode_scalar};
dispatch<base64_prefix_kernel> const k_base64_decode_prefix{&base64_prefix_scalar};
dispatch<base64_encode_kernel> const k_base64url_encode{&base64url_encode_scalar};
dispatch<base64_decode_kernel> const k_base64url_decode{&base64url_decode_scalar};
dispatch<base64_prefix_kernel> const k_base64url_decode_prefix{&base64_prefix_scalar};
#endif

namespace {
constexpr base64_kernels k_base64_kernels[2] = {{k_base64_encode, k_base64_decode, k_base64_decode_prefix},
                                                {k_base64url_encode, k_base64url_decode, k_base64url_decode_prefix}};
} // namespace

base64_kernels const &base64_kernels_of(base64_alphabet a_alphabet)
{
    return k_base64_kernels[a_alphabet == base64_alphabet::url ? 1 : 0];
}

} // namespace internal
} // namespace ordwel
