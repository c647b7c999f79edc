// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TYPES_H
#define ORDWEL_TYPES_H

#include <cstdint>

namespace ordwel {

// The library's fixed-width number names. Their sizes are pinned by the "types" self-test unit.
using sint8 = std::int8_t;    ///< A signed 8-bit integer.
using sint16 = std::int16_t;  ///< A signed 16-bit integer.
using sint32 = std::int32_t;  ///< A signed 32-bit integer.
using sint64 = std::int64_t;  ///< A signed 64-bit integer.
using uint8 = std::uint8_t;   ///< An unsigned 8-bit integer.
using uint16 = std::uint16_t; ///< An unsigned 16-bit integer.
using uint32 = std::uint32_t; ///< An unsigned 32-bit integer.
using uint64 = std::uint64_t; ///< An unsigned 64-bit integer.
using float32 = float;        ///< A 4-byte IEEE 754 float.
using float64 = double;       ///< An 8-byte IEEE 754 float.

static_assert(sizeof(float32) == 4, "float32 must be 4 bytes");
static_assert(sizeof(float64) == 8, "float64 must be 8 bytes");

} // namespace ordwel

#endif
