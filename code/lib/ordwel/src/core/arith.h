// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_ARITH_H
#define ORDWEL_SRC_ARITH_H

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

} // namespace arith
} // namespace ordwel

#endif
