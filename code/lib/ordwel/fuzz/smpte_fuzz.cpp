// SPDX-License-Identifier: MIT
// Arbitrary 32-bit words as SMPTE time addresses in every mode, and arbitrary counts and factors
// through the exact rescale. A word that decodes must come back from its timecode with only the
// bits the decoder ignores cleared; a rescale must match plain 128-bit division, or raise exactly
// where that result leaves the 64-bit range. The portable 128-bit forms, which builds without a
// native 128-bit type use, must agree with that type.

#include <ordwel/es.h>
#include <ordwel/rescale.h>
#include <ordwel/smpte.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/arith.h"

using namespace ordwel;

namespace {

__extension__ typedef __int128 wide;
__extension__ typedef unsigned __int128 unsigned_wide;

uint64_t load(uint8_t const *a_data)
{
    uint64_t l_value = 0;
    std::memcpy(&l_value, a_data, sizeof l_value);
    return l_value;
}

void check_word(uint32_t a_word)
{
    struct form {
        timecode::mode_type mode;
        uint32_t pair_bit;
    } const l_forms[] = {{timecode::mode_24, 0},         {timecode::mode_25, 0},
                         {timecode::mode_30, 0},         {timecode::mode_50, 0x80u},
                         {timecode::mode_60, 0x800000u}, {timecode::mode_23_976, 0},
                         {timecode::mode_29_97, 0},      {timecode::mode_59_94, 0x800000u},
                         {timecode::mode_invalid, 0}};
    for (form const &l_form : l_forms) {
        try {
            timecode const l_value = timecode_with_smpte_word(l_form.mode, a_word, 1);
            uint32_t const l_kept = 0x7f7f7f3fu | l_form.pair_bit;
            if (smpte_word_with_timecode(l_value, false) != (a_word & l_kept)) {
                std::abort();
            }
        } catch (es::arg const &) {
        }
    }
}

// The rounded quotient of plain signed 128-bit division.
wide reference(sint64 a_count, uint64_t a_numer, uint64_t a_denom, rounding a_rounding)
{
    wide const l_product = wide(a_count) * wide(a_numer);
    wide const l_quotient = l_product / wide(a_denom);
    wide const l_rest = l_product % wide(a_denom);
    wide const l_away = l_product < 0 ? -1 : 1;
    wide const l_twice_rest = (l_rest < 0 ? -l_rest : l_rest) * 2;
    switch (a_rounding) {
    case rounding::down:
        return l_rest < 0 ? l_quotient - 1 : l_quotient;
    case rounding::up:
        return l_rest > 0 ? l_quotient + 1 : l_quotient;
    case rounding::nearest:
        return l_twice_rest >= wide(a_denom) && l_rest != 0 ? l_quotient + l_away : l_quotient;
    case rounding::nearest_even:
        return l_twice_rest > wide(a_denom) || (l_twice_rest == wide(a_denom) && l_quotient % 2 != 0)
                   ? l_quotient + l_away
                   : l_quotient;
    }
    std::abort();
}

void check_rescale(sint64 a_count, uint64_t a_numer, uint64_t a_denom, rounding a_rounding)
{
    if (a_denom == 0) {
        try {
            (void)rescaled(a_count, fraction<unsigned long long>(a_numer, a_denom), a_rounding);
        } catch (es::arg const &) {
            return;
        }
        std::abort();
    }
    wide const l_want = reference(a_count, a_numer, a_denom, a_rounding);
    bool const l_fits = l_want >= INT64_MIN && l_want <= INT64_MAX;
    try {
        if (rescaled(a_count, fraction<unsigned long long>(a_numer, a_denom), a_rounding) != l_want || !l_fits) {
            std::abort();
        }
    } catch (es::oflow const &) {
        if (l_fits) {
            std::abort();
        }
    }
    // The timestamp form agrees where its ticks are the same number.
    if (a_count >= 0 && a_numer != 0 && l_fits) {
        timestamp const l_time = timestamp_with_resolution(timestamp(uint64_t(a_count), a_denom), a_numer, a_rounding);
        if (l_time.time() != uint64_t(l_want) || l_time.resolution() != a_numer) {
            std::abort();
        }
    }
}

void check_portable(uint64_t a_left, uint64_t a_right, uint64_t a_divisor)
{
    arith::wide const l_product = arith::portable::product_wide(a_left, a_right);
    unsigned_wide const l_want = unsigned_wide(a_left) * a_right;
    if (l_product.m_high != uint64_t(l_want >> 64) || l_product.m_low != uint64_t(l_want)) {
        std::abort();
    }
    if (l_product.m_high < a_divisor) {
        uint64_t l_rest = 0;
        if (arith::portable::quotient_wide(l_product, a_divisor, l_rest) != uint64_t(l_want / a_divisor) ||
            l_rest != uint64_t(l_want % a_divisor)) {
            std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *a_data, size_t a_size)
{
    if (a_size >= 4) {
        uint32_t l_word = 0;
        std::memcpy(&l_word, a_data, sizeof l_word);
        check_word(l_word);
    }
    if (a_size >= 25) {
        rounding const l_rounding = static_cast<rounding>(a_data[24] % 4);
        check_rescale(sint64(load(a_data)), load(a_data + 8), load(a_data + 16), l_rounding);
        check_portable(load(a_data), load(a_data + 8), load(a_data + 16));
    }
    return 0;
}
