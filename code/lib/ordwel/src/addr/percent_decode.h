// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_ADDR_PERCENT_DECODE_H
#define ORDWEL_SRC_ADDR_PERCENT_DECODE_H

#include <cstddef>

#include "core/cpu_dispatch.h"

namespace ordwel {
namespace internal {

// Percent decoding as url_decode does it: a '%' with two bytes behind it whose hex value (a byte
// that is no hex digit counting as 0) isn't 0 becomes the byte of that value, and the two bytes
// go; every other byte, a '%' in the last two positions among them, is copied. Writes the result
// to a_out, which has room for a_size bytes, and gives its length (at most a_size). a_out may not
// overlap a_text.
using percent_decode_kernel = std::size_t (*)(char *a_out, char const *a_text, std::size_t a_size);

// Scalar, and at the AVX-512 level, where the processor has VBMI and VBMI2, 64 bytes a step.
extern dispatch<percent_decode_kernel> const k_percent_decode;

} // namespace internal
} // namespace ordwel

#endif
