// SPDX-License-Identifier: MIT
#include <ordwel/rescale.h>

#include <ordwel/es.h>

#include "core/arith.h"
#include "diag/raise.h"

namespace ordwel {

namespace {

uint64 const k_sint64_limit = uint64(1) << 63;

// The magnitude of a_magnitude * a_numer / a_denom, rounded as a_rounding says for a result of
// the sign a_negative tells. false when it passes 64 bits. a_denom is not 0.
bool scaled_magnitude(uint64 a_magnitude, bool a_negative, uint64 a_numer, uint64 a_denom, rounding a_rounding,
                      uint64 &a_result)
{
    arith::wide const l_product = arith::product_wide(a_magnitude, a_numer);
    if (l_product.m_high >= a_denom) {
        return false;
    }
    uint64 l_rest = 0;
    uint64 l_quotient = arith::quotient_wide(l_product, a_denom, l_rest);
    // The exact magnitude is l_quotient + l_rest / a_denom; the rest is compared with its
    // complement to the divisor, which cannot overflow as doubling it could.
    uint64 const l_complement = a_denom - l_rest;
    bool l_more = false;
    switch (a_rounding) {
    case rounding::down:
        l_more = a_negative && l_rest != 0;
        break;
    case rounding::up:
        l_more = !a_negative && l_rest != 0;
        break;
    case rounding::nearest:
        l_more = l_rest >= l_complement;
        break;
    case rounding::nearest_even:
        l_more = l_rest > l_complement || (l_rest == l_complement && (l_quotient & 1u) != 0);
        break;
    }
    if (l_more) {
        if (l_quotient == ~uint64(0)) {
            return false;
        }
        ++l_quotient;
    }
    a_result = l_quotient;
    return true;
}

} // namespace

sint64 rescaled(sint64 a_count, fraction<unsigned long long> const &a_factor, rounding a_rounding)
{
    if (a_factor.denom() == 0) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "Rescale of %lld by %llu/0: zero denominator",
                                    static_cast<long long>(a_count), a_factor.numer());
    }
    bool const l_negative = a_count < 0;
    // The magnitude in unsigned arithmetic, so that INT64_MIN has one too.
    uint64 const l_magnitude = l_negative ? uint64(0) - uint64(a_count) : uint64(a_count);
    uint64 l_result = 0;
    if (!scaled_magnitude(l_magnitude, l_negative, a_factor.numer(), a_factor.denom(), a_rounding, l_result) ||
        l_result > (l_negative ? k_sint64_limit : k_sint64_limit - 1)) {
        diag::raise_format<es::oflow>(ORDWEL_HERE, "Rescale of %lld by %llu/%llu does not fit in 64 bits",
                                      static_cast<long long>(a_count), a_factor.numer(), a_factor.denom());
    }
    // A magnitude of 2^63 has no positive sint64, so the negative result is built from one less.
    return l_negative && l_result != 0 ? -sint64(l_result - 1) - 1 : sint64(l_result);
}

timestamp timestamp_with_resolution(timestamp const &a_timestamp, unsigned long long a_resolution, rounding a_rounding)
{
    if (a_timestamp.resolution() == 0 || a_resolution == 0) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "Rescale of %llu/%llu to resolution %llu: zero resolution",
                                    a_timestamp.time(), a_timestamp.resolution(), a_resolution);
    }
    uint64 l_time = 0;
    if (!scaled_magnitude(a_timestamp.time(), false, a_resolution, a_timestamp.resolution(), a_rounding, l_time)) {
        diag::raise_format<es::oflow>(ORDWEL_HERE, "Rescale of %llu/%llu to resolution %llu does not fit in 64 bits",
                                      a_timestamp.time(), a_timestamp.resolution(), a_resolution);
    }
    return timestamp(l_time, a_resolution);
}

} // namespace ordwel
