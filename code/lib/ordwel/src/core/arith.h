// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_ARITH_H
#define ORDWEL_SRC_ARITH_H

#include <ordwel/types.h>

// Integer division that never traps. The time classes leave a zero divisor to their callers; where
// one still arrives, the quotient is 0 and the remainder is the dividend, so that
// quotient * divisor + remainder == dividend holds for every input.

namespace ordwel {
namespace arith {

template <typename T> constexpr T quotient(T a_dividend, T a_divisor)
{
    return a_divisor == 0 ? T(0) : T(a_dividend / a_divisor);
}

template <typename T> constexpr T remainder(T a_dividend, T a_divisor)
{
    return a_divisor == 0 ? a_dividend : T(a_dividend % a_divisor);
}

// 128-bit products and quotients for exact rescaling. Where the compiler has unsigned __int128
// (GCC and Clang on 64-bit targets, mingw-w64 among them) it does the work; elsewhere the portable
// forms do, and the tests run those beside the native ones.
struct wide {
    uint64 m_high;
    uint64 m_low;
};

namespace portable {

// a_left * a_right in full, from four 32-bit partial products.
constexpr wide product_wide(uint64 a_left, uint64 a_right)
{
    uint64 const l_mask = 0xffffffffu;
    uint64 const l_low_low = (a_left & l_mask) * (a_right & l_mask);
    uint64 const l_low_high = (a_left & l_mask) * (a_right >> 32);
    uint64 const l_high_low = (a_left >> 32) * (a_right & l_mask);
    uint64 const l_middle = (l_low_low >> 32) + (l_low_high & l_mask) + (l_high_low & l_mask);
    return wide{(a_left >> 32) * (a_right >> 32) + (l_low_high >> 32) + (l_high_low >> 32) + (l_middle >> 32),
                l_middle << 32 | (l_low_low & l_mask)};
}

// a_dividend / a_divisor and the remainder, by shift and subtract. The caller ensures that the
// quotient fits: a_dividend.m_high < a_divisor (so a_divisor is not 0).
constexpr uint64 quotient_wide(wide a_dividend, uint64 a_divisor, uint64 &a_remainder)
{
    uint64 l_rest = a_dividend.m_high;
    uint64 l_quotient = 0;
    for (int l_bit = 63; l_bit >= 0; --l_bit) {
        // The rest stays below the divisor, so doubling it passes 64 bits only when the true value
        // exceeds the divisor; the subtraction then wraps back to the right rest.
        bool const l_carry = (l_rest >> 63) != 0;
        l_rest = l_rest << 1 | (a_dividend.m_low >> l_bit & 1u);
        l_quotient <<= 1;
        if (l_carry || l_rest >= a_divisor) {
            l_rest -= a_divisor;
            l_quotient |= 1u;
        }
    }
    a_remainder = l_rest;
    return l_quotient;
}

} // namespace portable

#if defined(__SIZEOF_INT128__)
__extension__ typedef unsigned __int128 native_wide;

inline wide product_wide(uint64 a_left, uint64 a_right)
{
    native_wide const l_product = native_wide(a_left) * a_right;
    return wide{uint64(l_product >> 64), uint64(l_product)};
}

inline uint64 quotient_wide(wide a_dividend, uint64 a_divisor, uint64 &a_remainder)
{
#if defined(__x86_64__)
    // The quotient fits, so the processor's own 128-by-64 division cannot fault; the compiler
    // would call its general 128-bit division instead.
    uint64 l_quotient = 0;
    __asm__("divq %4"
            : "=a"(l_quotient), "=d"(a_remainder)
            : "a"(a_dividend.m_low), "d"(a_dividend.m_high), "rm"(a_divisor));
    return l_quotient;
#else
    native_wide const l_dividend = native_wide(a_dividend.m_high) << 64 | a_dividend.m_low;
    uint64 const l_quotient = uint64(l_dividend / a_divisor);
    a_remainder = a_dividend.m_low - l_quotient * a_divisor;
    return l_quotient;
#endif
}
#else
using portable::product_wide;
using portable::quotient_wide;
#endif

} // namespace arith
} // namespace ordwel

#endif
