// SPDX-License-Identifier: MIT
#include "core/byte_scan.h"

#include <cstdint>
#include <cstring>

#include <ordwel/internal/attributes.h>

#include "core/x86_intrinsics.h"

namespace ordwel {
namespace internal {

namespace {

// Scalar kernels. The triple search asks memchr for the third byte, which the C library scans
// with vector instructions of its own, and tests the two before each hit.
std::size_t triple_find_scalar(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                               unsigned char a_second, unsigned char a_third)
{
    if (a_size < 3) {
        return a_size;
    }
    unsigned char const *l_from = a_data + 2;
    unsigned char const *const l_end = a_data + a_size;
    while (l_from < l_end) {
        auto const *const l_hit =
            static_cast<unsigned char const *>(std::memchr(l_from, a_third, static_cast<std::size_t>(l_end - l_from)));
        if (l_hit == nullptr) {
            break;
        }
        if (l_hit[-2] == a_first && l_hit[-1] == a_second) {
            return static_cast<std::size_t>(l_hit - a_data) - 2;
        }
        l_from = l_hit + 1;
    }
    return a_size;
}

// Collecting through a search kernel, one call for each run.
template <triple_find t_find>
std::size_t triple_collect_by(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                              unsigned char a_second, unsigned char a_third, uint64 *a_out, std::size_t a_room,
                              std::size_t a_reach)
{
    // A run that starts below the reach may end past it.
    std::size_t const l_end = a_size >= 2 && a_reach < a_size - 2 ? a_reach + 2 : a_size;
    std::size_t l_count = 0;
    std::size_t l_at = 0;
    while (l_count < a_room && l_at < l_end) {
        std::size_t const l_hit = l_at + t_find(a_data + l_at, l_end - l_at, a_first, a_second, a_third);
        if (l_hit >= l_end) {
            break;
        }
        a_out[l_count++] = l_hit;
        l_at = l_hit + 1;
    }
    return l_count;
}

std::size_t set_find_scalar(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set)
{
    for (std::size_t l_index = 0; l_index < a_size; ++l_index) {
        if (byte_set_has(a_set, a_data[l_index])) {
            return l_index;
        }
    }
    return a_size;
}
void byte_positions_scalar(unsigned char const *a_data, std::size_t a_size, unsigned char const *a_bytes, uint64 *a_out)
{
    for (std::size_t l_block = 0; l_block * 64 < a_size; ++l_block) {
        for (std::size_t l_byte = 0; l_byte < k_byte_positions_count; ++l_byte) {
            uint64 l_positions = 0;
            for (std::size_t l_index = 0; l_index < 64 && l_block * 64 + l_index < a_size; ++l_index) {
                l_positions |= static_cast<uint64>(a_data[l_block * 64 + l_index] == a_bytes[l_byte]) << l_index;
            }
            a_out[l_block * k_byte_positions_count + l_byte] = l_positions;
        }
    }
}

#if defined(ORDWEL_X86_KERNELS)

// The bit that a byte's high nibble h selects in a row of the set's tables: 1 << (h & 7).
alignas(16) unsigned char const k_nibble_bits[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};

// The masks of one 64-byte block where the first and the second byte stand (bit i for byte i).
struct pair_masks {
    uint64 m_first;
    uint64 m_second;
};

// Where the first two bytes start in a block: the second byte's mask shifted down by 1, the next
// block's low bit filling in from above.
ORDWEL_ALWAYS_INLINE uint64 pair_starts(pair_masks const &a_block, uint64 a_next_second)
{
    return a_block.m_first & ((a_block.m_second >> 1) | (a_next_second << 63));
}

// Of a_pairs, those with the third byte behind them, from the third byte's masks of the block and
// the next one.
ORDWEL_ALWAYS_INLINE uint64 triple_starts(uint64 a_pairs, uint64 a_third, uint64 a_next_third)
{
    return a_pairs & ((a_third >> 2) | (a_next_third << 62));
}

// ---- SSSE3 and SSE4.1: 16 positions a step, from loads at offsets 0, 1 and 2.

ORDWEL_TARGET("ssse3,sse4.1")
std::size_t triple_find_sse41(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                              unsigned char a_second, unsigned char a_third)
{
    __m128i const l_first = _mm_set1_epi8(static_cast<char>(a_first));
    __m128i const l_second = _mm_set1_epi8(static_cast<char>(a_second));
    __m128i const l_third = _mm_set1_epi8(static_cast<char>(a_third));
    std::size_t l_index = 0;
    for (; l_index + 18 <= a_size; l_index += 16) {
        unsigned char const *const l_at = a_data + l_index;
        __m128i const l_at_first = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_at)), l_first);
        __m128i const l_at_second =
            _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_at + 1)), l_second);
        __m128i const l_at_third =
            _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const *>(l_at + 2)), l_third);
        auto const l_hits =
            static_cast<uint32>(_mm_movemask_epi8(_mm_and_si128(_mm_and_si128(l_at_first, l_at_second), l_at_third)));
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctz(l_hits));
        }
    }
    return l_index + triple_find_scalar(a_data + l_index, a_size - l_index, a_first, a_second, a_third);
}

// Set membership of 16 bytes: the low nibble picks a row of either table (by the top bit of the
// byte), the high nibble a bit of the row.
ORDWEL_TARGET("ssse3,sse4.1")
ORDWEL_ALWAYS_INLINE uint32 set_mask_sse41(__m128i a_bytes, byte_set const &a_set)
{
    __m128i const l_nibble = _mm_set1_epi8(0x0f);
    __m128i const l_low_nibble = _mm_and_si128(a_bytes, l_nibble);
    __m128i const l_high_nibble = _mm_and_si128(_mm_srli_epi16(a_bytes, 4), l_nibble);
    __m128i const l_row = _mm_blendv_epi8(
        _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_set.m_low)), l_low_nibble),
        _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_set.m_high)), l_low_nibble), a_bytes);
    __m128i const l_bit =
        _mm_shuffle_epi8(_mm_load_si128(reinterpret_cast<__m128i const *>(k_nibble_bits)), l_high_nibble);
    return static_cast<uint32>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(l_row, l_bit), l_bit)));
}

ORDWEL_TARGET("ssse3,sse4.1")
std::size_t set_find_sse41(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set)
{
    std::size_t l_index = 0;
    for (; l_index + 16 <= a_size; l_index += 16) {
        uint32 const l_hits =
            set_mask_sse41(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_data + l_index)), a_set);
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctz(l_hits));
        }
    }
    return l_index + set_find_scalar(a_data + l_index, a_size - l_index, a_set);
}

// ---- AVX2: 32 bytes a load.

ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE uint64 equal_mask_avx2(__m256i a_low, __m256i a_high, __m256i a_byte)
{
    uint64 const l_low = static_cast<uint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a_low, a_byte)));
    uint64 const l_high = static_cast<uint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a_high, a_byte)));
    return l_low | (l_high << 32);
}

// For start codes (first and second byte alike) two compares for 64 bytes.
ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE pair_masks pair_masks_avx2(__m256i a_low, __m256i a_high, __m256i a_first, __m256i a_second,
                                                bool a_first_is_second)
{
    uint64 const l_first = equal_mask_avx2(a_low, a_high, a_first);
    return {l_first, a_first_is_second ? l_first : equal_mask_avx2(a_low, a_high, a_second)};
}

ORDWEL_TARGET("avx2")
std::size_t triple_find_avx2(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                             unsigned char a_second, unsigned char a_third)
{
    __m256i const l_first = _mm256_set1_epi8(static_cast<char>(a_first));
    __m256i const l_second = _mm256_set1_epi8(static_cast<char>(a_second));
    __m256i const l_third = _mm256_set1_epi8(static_cast<char>(a_third));
    bool const l_first_is_second = a_first == a_second;
    std::size_t l_index = 0;
    // As at AVX-512: one load a 32 bytes, the third byte compared only behind a pair, a block's
    // masks tested once those of the next one are in.
    if (a_size >= 128) {
        __m256i l_low = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_data));
        __m256i l_high = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_data + 32));
        pair_masks l_block = pair_masks_avx2(l_low, l_high, l_first, l_second, l_first_is_second);
        for (; l_index + 128 <= a_size; l_index += 64) {
            __m256i const l_next_low = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_data + l_index + 64));
            __m256i const l_next_high = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_data + l_index + 96));
            pair_masks const l_next = pair_masks_avx2(l_next_low, l_next_high, l_first, l_second, l_first_is_second);
            uint64 const l_pairs = pair_starts(l_block, l_next.m_second);
            if (l_pairs != 0) {
                uint64 const l_hits = triple_starts(l_pairs, equal_mask_avx2(l_low, l_high, l_third),
                                                    equal_mask_avx2(l_next_low, l_next_high, l_third));
                if (l_hits != 0) {
                    return l_index + static_cast<std::size_t>(__builtin_ctzll(l_hits));
                }
            }
            l_block = l_next;
            l_low = l_next_low;
            l_high = l_next_high;
        }
    }
    // The rest, 32 positions a step: loads at offsets 0, 1 and 2, then byte by byte.
    for (; l_index + 34 <= a_size; l_index += 32) {
        unsigned char const *const l_at = a_data + l_index;
        __m256i const l_at_first =
            _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_at)), l_first);
        __m256i const l_at_second =
            _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_at + 1)), l_second);
        __m256i const l_at_third =
            _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_at + 2)), l_third);
        auto const l_hits = static_cast<uint32>(
            _mm256_movemask_epi8(_mm256_and_si256(_mm256_and_si256(l_at_first, l_at_second), l_at_third)));
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctz(l_hits));
        }
    }
    return l_index + triple_find_scalar(a_data + l_index, a_size - l_index, a_first, a_second, a_third);
}

// Set membership of 32 bytes: the low nibble picks a row of either table (by the top bit of the
// byte), the high nibble a bit of the row.
struct set_tables_avx2 {
    __m256i m_low;
    __m256i m_high;
    __m256i m_bits;
    __m256i m_nibble;
};

ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE set_tables_avx2 set_tables_avx2_of(byte_set const &a_set)
{
    return {_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_set.m_low))),
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const *>(a_set.m_high))),
            _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<__m128i const *>(k_nibble_bits))),
            _mm256_set1_epi8(0x0f)};
}

ORDWEL_TARGET("avx2")
ORDWEL_ALWAYS_INLINE uint32 set_mask_avx2(__m256i a_bytes, set_tables_avx2 const &a_tables)
{
    __m256i const l_low_nibble = _mm256_and_si256(a_bytes, a_tables.m_nibble);
    __m256i const l_high_nibble = _mm256_and_si256(_mm256_srli_epi16(a_bytes, 4), a_tables.m_nibble);
    __m256i const l_row = _mm256_blendv_epi8(_mm256_shuffle_epi8(a_tables.m_low, l_low_nibble),
                                             _mm256_shuffle_epi8(a_tables.m_high, l_low_nibble), a_bytes);
    __m256i const l_bit = _mm256_shuffle_epi8(a_tables.m_bits, l_high_nibble);
    return static_cast<uint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_and_si256(l_row, l_bit), l_bit)));
}

ORDWEL_TARGET("avx2")
std::size_t set_find_avx2(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set)
{
    set_tables_avx2 const l_tables = set_tables_avx2_of(a_set);
    std::size_t l_index = 0;
    for (; l_index + 32 <= a_size; l_index += 32) {
        uint32 const l_hits =
            set_mask_avx2(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(a_data + l_index)), l_tables);
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctz(l_hits));
        }
    }
    return l_index + set_find_scalar(a_data + l_index, a_size - l_index, a_set);
}

// A short last block is copied into one of 64 bytes first, so that no load reads beyond the data;
// the bits of the copy's padding are cleared.
ORDWEL_TARGET("avx2")
void byte_positions_avx2(unsigned char const *a_data, std::size_t a_size, unsigned char const *a_bytes, uint64 *a_out)
{
    for (std::size_t l_at = 0; l_at < a_size; l_at += 64) {
        alignas(32) unsigned char l_padded[64] = {};
        unsigned char const *l_block = a_data + l_at;
        uint64 l_valid = ~uint64(0);
        if (a_size - l_at < 64) {
            std::memcpy(l_padded, l_block, a_size - l_at);
            l_block = l_padded;
            l_valid = (uint64(1) << (a_size - l_at)) - 1;
        }
        __m256i const l_low = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_block));
        __m256i const l_high = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(l_block + 32));
        for (std::size_t l_byte = 0; l_byte < k_byte_positions_count; ++l_byte) {
            *a_out++ = equal_mask_avx2(l_low, l_high, _mm256_set1_epi8(static_cast<char>(a_bytes[l_byte]))) & l_valid;
        }
    }
}

// ---- AVX-512 (F and BW): 64 bytes a step; the last, short step loads under a mask, which reads
// nothing beyond the data.

// For start codes (first and second byte alike) one compare.
ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE pair_masks pair_masks_avx512(__m512i a_bytes, __m512i a_first, __m512i a_second,
                                                  bool a_first_is_second)
{
    uint64 const l_first = _mm512_cmpeq_epi8_mask(a_bytes, a_first);
    return {l_first, a_first_is_second ? l_first : _mm512_cmpeq_epi8_mask(a_bytes, a_second)};
}

ORDWEL_TARGET("avx512f,avx512bw")
std::size_t triple_find_avx512(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                               unsigned char a_second, unsigned char a_third)
{
    if (a_size < 3) {
        return a_size;
    }
    __m512i const l_first = _mm512_set1_epi8(static_cast<char>(a_first));
    __m512i const l_second = _mm512_set1_epi8(static_cast<char>(a_second));
    __m512i const l_third = _mm512_set1_epi8(static_cast<char>(a_third));
    bool const l_first_is_second = a_first == a_second;
    std::size_t l_index = 0;
    // One load a block; two blocks a step. The first two bytes together are rare (in a coded
    // stream 00 00 stands almost only before a start code), so the third byte is compared only
    // where they stand. A block's masks are tested once those of the next one are in.
    if (a_size >= 192) {
        pair_masks l_block = pair_masks_avx512(_mm512_loadu_si512(a_data), l_first, l_second, l_first_is_second);
        for (; l_index + 192 <= a_size; l_index += 128) {
            __m512i const l_second_block = _mm512_loadu_si512(a_data + l_index + 64);
            __m512i const l_third_block = _mm512_loadu_si512(a_data + l_index + 128);
            pair_masks const l_middle = pair_masks_avx512(l_second_block, l_first, l_second, l_first_is_second);
            pair_masks const l_next = pair_masks_avx512(l_third_block, l_first, l_second, l_first_is_second);
            uint64 const l_pairs_low = pair_starts(l_block, l_middle.m_second);
            uint64 const l_pairs_high = pair_starts(l_middle, l_next.m_second);
            if ((l_pairs_low | l_pairs_high) != 0) {
                uint64 const l_third_low = _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(a_data + l_index), l_third);
                uint64 const l_third_middle = _mm512_cmpeq_epi8_mask(l_second_block, l_third);
                uint64 const l_third_next = _mm512_cmpeq_epi8_mask(l_third_block, l_third);
                uint64 const l_hits_low = triple_starts(l_pairs_low, l_third_low, l_third_middle);
                if (l_hits_low != 0) {
                    return l_index + static_cast<std::size_t>(__builtin_ctzll(l_hits_low));
                }
                uint64 const l_hits_high = triple_starts(l_pairs_high, l_third_middle, l_third_next);
                if (l_hits_high != 0) {
                    return l_index + 64 + static_cast<std::size_t>(__builtin_ctzll(l_hits_high));
                }
            }
            l_block = l_next;
        }
    }
    // The rest, fewer than 192 bytes: loads at offsets 0, 1 and 2, under a mask where short.
    std::size_t const l_positions = a_size - 2;
    for (; l_index < l_positions; l_index += 64) {
        unsigned char const *const l_at = a_data + l_index;
        __mmask64 const l_valid =
            l_positions - l_index >= 64 ? ~__mmask64(0) : (uint64(1) << (l_positions - l_index)) - 1;
        __mmask64 const l_hits = _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(l_valid, l_at), l_first) &
                                 _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(l_valid, l_at + 1), l_second) &
                                 _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(l_valid, l_at + 2), l_third) & l_valid;
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctzll(l_hits));
        }
    }
    return a_size;
}

// The starts that a collecting kernel keeps, up to the room.
struct run_starts {
    uint64 *m_out;
    std::size_t m_room;
    std::size_t m_count;

    // Keeps the starts a_base + i for the bits i of a_hits, lowest first; false once the room is
    // full. The first goes in without a branch on whether there is one (a mask of a few blocks
    // that hold one run between them would mispredict it): it is written to the next free slot
    // and counted only where the mask has it.
    ORDWEL_TARGET("bmi")
    ORDWEL_ALWAYS_INLINE bool keep(uint64 a_hits, std::size_t a_base)
    {
        if (m_count < m_room) {
            m_out[m_count] = a_base + _tzcnt_u64(a_hits);
            m_count += static_cast<std::size_t>(a_hits != 0);
            a_hits = _blsr_u64(a_hits);
        }
        for (; a_hits != 0; a_hits &= a_hits - 1) {
            if (m_count == m_room) {
                return false;
            }
            m_out[m_count++] = a_base + lowest_bit(a_hits);
        }
        return m_count < m_room;
    }
};

// 256 positions a step, from one load a 64 bytes and a filter on its 16-bit words: at an even
// offset from the load a run has its first and second byte in one word, at an odd offset its second
// and third. Any run makes a word equal to one of these two (little-endian) values; the filter keeps
// the bits where the two agree, so one test finds the words that may be either. For start codes
// (0x0000 and 0x0100) only one bit differs, and the filter lets through 2 words in 65536 of other
// data. The steps of a stretch are filtered without a branch (those that pass are noted), and only
// the noted ones go to the exact masks: a run costs no mispredicted exit from the loop.
constexpr std::size_t k_collect_steps = 16;

// The runs that start at the a_valid ones of the 64 positions from a_at: all three bytes compared.
ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE uint64 triple_mask_avx512(unsigned char const *a_at, __mmask64 a_valid, __m512i a_first,
                                               __m512i a_second, __m512i a_third)
{
    return _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(a_valid, a_at), a_first) &
           _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(a_valid, a_at + 1), a_second) &
           _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(a_valid, a_at + 2), a_third) & a_valid;
}

// The 32 words at a_at through the filter: zero where a word may hold a run. Where the two values
// agree on zeros (start codes) the filter is a mask alone, which takes the load into the AND.
template <bool t_plain>
ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE __m512i filtered_words_avx512(unsigned char const *a_at, __m512i a_value, __m512i a_mask)
{
    if (t_plain) {
        return _mm512_and_si512(_mm512_loadu_si512(a_at), a_mask);
    }
    // (A ^ B) & C.
    return _mm512_ternarylogic_epi32(_mm512_loadu_si512(a_at), a_value, a_mask, 0x28);
}

// The 4 bytes at a_at as a little-endian word, for a vector lane.
ORDWEL_ALWAYS_INLINE int load_four(unsigned char const *a_at)
{
    int l_four;
    std::memcpy(&l_four, a_at, 4);
    return l_four;
}

template <bool t_plain>
ORDWEL_TARGET("avx512f,avx512bw,avx512vl,bmi,bmi2")
std::size_t triple_collect_avx512_as(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                                     unsigned char a_second, unsigned char a_third, uint64 *a_out, std::size_t a_room,
                                     std::size_t a_reach, unsigned a_odd, unsigned a_agree)
{
    unsigned const l_odd = a_odd;
    unsigned const l_agree = a_agree;
    run_starts l_starts{a_out, a_room, 0};
    __m512i const l_first = _mm512_set1_epi8(static_cast<char>(a_first));
    __m512i const l_second = _mm512_set1_epi8(static_cast<char>(a_second));
    __m512i const l_third = _mm512_set1_epi8(static_cast<char>(a_third));
    __m512i const l_mask = _mm512_set1_epi16(static_cast<short>(l_agree));
    __m512i const l_value = _mm512_set1_epi16(static_cast<short>(l_odd & l_agree));
    // A run in 4 bytes (little-endian) from their first byte and from their second.
    uint32 const l_triple = a_first | (uint32{a_second} << 8) | (uint32{a_third} << 16);
    __m256i const l_runs =
        _mm256_setr_epi32(static_cast<int>(l_triple), static_cast<int>(l_triple << 8), static_cast<int>(l_triple),
                          static_cast<int>(l_triple << 8), static_cast<int>(l_triple), static_cast<int>(l_triple << 8),
                          static_cast<int>(l_triple), static_cast<int>(l_triple << 8));
    __m256i const l_run_mask =
        _mm256_setr_epi32(0xffffff, static_cast<int>(0xffffff00u), 0xffffff, static_cast<int>(0xffffff00u), 0xffffff,
                          static_cast<int>(0xffffff00u), 0xffffff, static_cast<int>(0xffffff00u));
    // Each of four words twice, and the offsets of the starts that the eight lanes stand for.
    __m256i const l_twice = _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3);
    __m512i const l_candidates = _mm512_setr_epi64(0, 1, 64, 65, 128, 129, 192, 193);
    // The starts looked at, which read up to 2 bytes behind them.
    std::size_t const l_positions = a_reach < a_size - 2 ? a_reach : a_size - 2;
    // A step reads 258 bytes from its first position. Where the data goes on behind the reach, the
    // last step may cross it (the starts behind the reach are dropped afterwards): the positions
    // short of a whole step at the reach cost as much as a step, not a 64-byte pass each.
    std::size_t const l_steps_end = a_size < 258 ? 0 : l_positions < a_size - 257 ? l_positions : a_size - 257;
    std::size_t l_index = 0;
    // The positions before the first whose word (one byte in) stands on a multiple of 64 in
    // memory, under a mask: then the steps load whole cache lines.
    std::size_t const l_head = (64 - ((reinterpret_cast<std::uintptr_t>(a_data) + 1) & 63)) & 63;
    if (l_head != 0 && l_head + 256 <= l_positions) {
        if (!l_starts.keep(triple_mask_avx512(a_data, (uint64(1) << l_head) - 1, l_first, l_second, l_third), 0)) {
            return l_starts.m_count;
        }
        l_index = l_head;
    }
    while (l_index < l_steps_end) {
        // A stretch of steps; the words of a step start one byte in, so that its 256 positions have
        // their word among its 256 bytes.
        std::size_t const l_first_step = l_index;
        uint32 l_lanes[k_collect_steps];
        uint32 l_noted = 0;
        for (std::size_t l_step = 0; l_step < k_collect_steps && l_index < l_steps_end; ++l_step) {
            unsigned char const *const l_at = a_data + l_index + 1;
            // (A ^ B) & C: zero where a word may hold a run.
            __m512i const l_words0 = filtered_words_avx512<t_plain>(l_at, l_value, l_mask);
            __m512i const l_words1 = filtered_words_avx512<t_plain>(l_at + 64, l_value, l_mask);
            __m512i const l_words2 = filtered_words_avx512<t_plain>(l_at + 128, l_value, l_mask);
            __m512i const l_words3 = filtered_words_avx512<t_plain>(l_at + 192, l_value, l_mask);
            __m512i const l_least =
                _mm512_min_epu16(_mm512_min_epu16(l_words0, l_words1), _mm512_min_epu16(l_words2, l_words3));
            uint32 const l_zero = _mm512_testn_epi16_mask(l_least, l_least);
            l_lanes[l_step] = l_zero;
            l_noted |= static_cast<uint32>(l_zero != 0) << l_step;
            l_index += 256;
        }
        for (; l_noted != 0; l_noted &= l_noted - 1) {
            unsigned const l_step = _tzcnt_u32(l_noted);
            std::size_t const l_base = l_first_step + 256 * std::size_t{l_step};
            uint32 const l_lane = l_lanes[l_step];
            if ((l_lane & (l_lane - 1)) == 0 && l_starts.m_count + 8 <= l_starts.m_room) {
                // One word lane passed (one run, as a rule): its word in one of the four blocks.
                // Each of the four words at j holds a run that starts at j - 1 or at j: the 4
                // bytes from j - 1 (little-endian) of each block, each twice, against the run and
                // the run one byte up give the eight candidates as bits in order. The starts are
                // packed to the front of eight slots, all written: there is room for them.
                std::size_t const l_from = l_base + 2 * _tzcnt_u32(l_lane);
                unsigned char const *const l_at = a_data + l_from;
                __m128i const l_fours =
                    _mm_setr_epi32(load_four(l_at), load_four(l_at + 64), load_four(l_at + 128), load_four(l_at + 192));
                __mmask8 const l_hits = _mm256_cmpeq_epi32_mask(
                    _mm256_and_si256(_mm256_permutexvar_epi32(l_twice, _mm256_castsi128_si256(l_fours)), l_run_mask),
                    l_runs);
                _mm512_storeu_si512(
                    l_starts.m_out + l_starts.m_count,
                    _mm512_maskz_compress_epi64(
                        l_hits, _mm512_add_epi64(_mm512_set1_epi64(static_cast<long long>(l_from)), l_candidates)));
                // Their count: the set bits gathered at the bottom.
                l_starts.m_count += _tzcnt_u32(~_pext_u32(~0U, l_hits));
                continue;
            }
            for (std::size_t l_block = 0; l_block < 256; l_block += 64) {
                std::size_t const l_at = l_base + l_block;
                if (!l_starts.keep(triple_mask_avx512(a_data + l_at, ~__mmask64(0), l_first, l_second, l_third),
                                   l_at)) {
                    return l_starts.m_count;
                }
            }
        }
        if (l_starts.m_count == l_starts.m_room) {
            return l_starts.m_count;
        }
    }
    // The rest, fewer than 256 positions, under a mask where short.
    for (; l_index < l_positions; l_index += 64) {
        __mmask64 const l_valid =
            l_positions - l_index >= 64 ? ~__mmask64(0) : (uint64(1) << (l_positions - l_index)) - 1;
        if (!l_starts.keep(triple_mask_avx512(a_data + l_index, l_valid, l_first, l_second, l_third), l_index)) {
            break;
        }
    }
    return l_starts.m_count;
}

ORDWEL_TARGET("avx512f,avx512bw,avx512vl,bmi,bmi2")
std::size_t triple_collect_avx512(unsigned char const *a_data, std::size_t a_size, unsigned char a_first,
                                  unsigned char a_second, unsigned char a_third, uint64 *a_out, std::size_t a_room,
                                  std::size_t a_reach)
{
    if (a_size < 3 || a_room == 0) {
        return 0;
    }
    unsigned const l_odd = a_first | (unsigned{a_second} << 8);
    unsigned const l_even = a_second | (unsigned{a_third} << 8);
    unsigned const l_agree = ~(l_odd ^ l_even) & 0xffff;
    if (__builtin_popcount(~l_agree & 0xffff) > 2) {
        // Too weak a filter for these bytes.
        return triple_collect_by<triple_find_avx512>(a_data, a_size, a_first, a_second, a_third, a_out, a_room,
                                                     a_reach);
    }
    std::size_t l_count = (l_odd & l_agree) == 0
                              ? triple_collect_avx512_as<true>(a_data, a_size, a_first, a_second, a_third, a_out,
                                                               a_room, a_reach, l_odd, l_agree)
                              : triple_collect_avx512_as<false>(a_data, a_size, a_first, a_second, a_third, a_out,
                                                                a_room, a_reach, l_odd, l_agree);
    // The last step may have crossed the reach: what it found behind it goes (the starts are in
    // order, and those before the reach all came first).
    std::size_t const l_positions = a_reach < a_size - 2 ? a_reach : a_size - 2;
    while (l_count != 0 && a_out[l_count - 1] >= l_positions) {
        --l_count;
    }
    return l_count;
}

// 16 bytes in each 128-bit lane. (Built from four words: GCC 12 warns inside its own
// _mm512_broadcast_i32x4.)
ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE __m512i table_avx512(unsigned char const *a_table)
{
    int l_words[4];
    std::memcpy(l_words, a_table, sizeof l_words);
    return _mm512_set4_epi32(l_words[3], l_words[2], l_words[1], l_words[0]);
}

struct set_tables_avx512 {
    __m512i m_low;
    __m512i m_high;
    __m512i m_bits;
    __m512i m_nibble;
};

ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE set_tables_avx512 set_tables_avx512_of(byte_set const &a_set)
{
    return {table_avx512(a_set.m_low), table_avx512(a_set.m_high), table_avx512(k_nibble_bits), _mm512_set1_epi8(0x0f)};
}

ORDWEL_TARGET("avx512f,avx512bw")
ORDWEL_ALWAYS_INLINE uint64 set_mask_avx512(__m512i a_bytes, set_tables_avx512 const &a_tables)
{
    __m512i const l_low_nibble = _mm512_and_si512(a_bytes, a_tables.m_nibble);
    __m512i const l_high_nibble = _mm512_and_si512(_mm512_srli_epi16(a_bytes, 4), a_tables.m_nibble);
    __m512i const l_row =
        _mm512_mask_blend_epi8(_mm512_movepi8_mask(a_bytes), _mm512_shuffle_epi8(a_tables.m_low, l_low_nibble),
                               _mm512_shuffle_epi8(a_tables.m_high, l_low_nibble));
    return _mm512_test_epi8_mask(l_row, _mm512_shuffle_epi8(a_tables.m_bits, l_high_nibble));
}

ORDWEL_TARGET("avx512f,avx512bw")
std::size_t set_find_avx512(unsigned char const *a_data, std::size_t a_size, byte_set const &a_set)
{
    set_tables_avx512 const l_tables = set_tables_avx512_of(a_set);
    std::size_t l_index = 0;
    for (; l_index + 64 <= a_size; l_index += 64) {
        uint64 const l_hits = set_mask_avx512(_mm512_loadu_si512(a_data + l_index), l_tables);
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctzll(l_hits));
        }
    }
    if (l_index < a_size) {
        __mmask64 const l_valid = (uint64(1) << (a_size - l_index)) - 1;
        uint64 const l_hits = set_mask_avx512(_mm512_maskz_loadu_epi8(l_valid, a_data + l_index), l_tables) & l_valid;
        if (l_hits != 0) {
            return l_index + static_cast<std::size_t>(__builtin_ctzll(l_hits));
        }
    }
    return a_size;
}

ORDWEL_TARGET("avx512f,avx512bw")
void byte_positions_avx512(unsigned char const *a_data, std::size_t a_size, unsigned char const *a_bytes, uint64 *a_out)
{
    __m512i l_bytes[k_byte_positions_count];
    for (std::size_t l_byte = 0; l_byte < k_byte_positions_count; ++l_byte) {
        l_bytes[l_byte] = _mm512_set1_epi8(static_cast<char>(a_bytes[l_byte]));
    }
    for (std::size_t l_at = 0; l_at < a_size; l_at += 64) {
        __mmask64 const l_valid = a_size - l_at >= 64 ? ~__mmask64(0) : (uint64(1) << (a_size - l_at)) - 1;
        __m512i const l_block = _mm512_maskz_loadu_epi8(l_valid, a_data + l_at);
        for (std::size_t l_byte = 0; l_byte < k_byte_positions_count; ++l_byte) {
            *a_out++ = _mm512_mask_cmpeq_epi8_mask(l_valid, l_block, l_bytes[l_byte]);
        }
    }
}

#endif

} // namespace

#if defined(ORDWEL_X86_KERNELS)
dispatch<triple_find> const k_triple_find(triple_find_scalar, triple_find_sse41, triple_find_avx2, triple_find_avx512);
dispatch<triple_collect> const k_triple_collect(triple_collect_by<triple_find_scalar>,
                                                triple_collect_by<triple_find_sse41>,
                                                triple_collect_by<triple_find_avx2>, triple_collect_avx512);
dispatch<set_find> const k_set_find(set_find_scalar, set_find_sse41, set_find_avx2, set_find_avx512);
dispatch<byte_positions> const k_byte_positions(byte_positions_scalar, nullptr, byte_positions_avx2,
                                                byte_positions_avx512);
#else
dispatch<triple_find> const k_triple_find(triple_find_scalar);
dispatch<triple_collect> const k_triple_collect(triple_collect_by<triple_find_scalar>);
dispatch<set_find> const k_set_find(set_find_scalar);
dispatch<byte_positions> const k_byte_positions(byte_positions_scalar);
#endif

} // namespace internal
} // namespace ordwel
