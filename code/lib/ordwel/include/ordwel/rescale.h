// SPDX-License-Identifier: MIT
#ifndef ORDWEL_RESCALE_H
#define ORDWEL_RESCALE_H

#include <ordwel/export.h>
#include <ordwel/fraction.h>
#include <ordwel/timestamp.h>
#include <ordwel/types.h>

namespace ordwel {

/// How an exact rescale rounds a quotient that is not whole. down and up are directions on the
/// number line, not towards or away from zero.
enum class rounding {
    down,        ///< Toward minus infinity: 2.5 gives 2, -2.5 gives -3.
    up,          ///< Toward plus infinity: 2.5 gives 3, -2.5 gives -2.
    nearest,     ///< To the nearest integer, a half away from zero: 2.5 gives 3, -2.5 gives -3.
    nearest_even ///< To the nearest integer, a half to the even one: 2.5 gives 2, 3.5 gives 4, -2.5 gives -2.
};

/// a_count * a_factor.numer() / a_factor.denom(), computed exactly through a 128-bit product and
/// rounded once as a_rounding says: rescaled(pts, fraction<unsigned long long>(48000, 90000),
/// rounding::nearest) turns 90 kHz ticks into 48 kHz ones. Every input in the sint64 range is
/// exact, INT64_MIN included. Raises es::oflow when the rounded result does not fit in sint64, and
/// es::arg when the factor's denominator is 0.
[[nodiscard]] ORDWEL_API sint64 rescaled(sint64 a_count, fraction<unsigned long long> const &a_factor,
                                         rounding a_rounding);

/// The time of a_timestamp in ticks of 1/a_resolution second: time * a_resolution / resolution,
/// exact and rounded once as a_rounding says, at resolution a_resolution. As the ticks are
/// unsigned, down and nearest_even differ from up and nearest only on what is not whole or is an
/// exact half. Raises es::oflow when the ticks do not fit in 64 bits, and es::arg when either
/// resolution is 0.
[[nodiscard]] ORDWEL_API timestamp timestamp_with_resolution(timestamp const &a_timestamp,
                                                             unsigned long long a_resolution, rounding a_rounding);

} // namespace ordwel

#endif
