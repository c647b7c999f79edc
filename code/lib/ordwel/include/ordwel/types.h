#ifndef ORDWEL_TYPES_H
#define ORDWEL_TYPES_H

#include <cstdint>

namespace ordwel {

// The library's fixed-width number names. Their sizes are pinned by the "types" self-test unit.
using sint8 = std::int8_t;
using sint16 = std::int16_t;
using sint32 = std::int32_t;
using sint64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;
using float32 = float;
using float64 = double;

static_assert(sizeof(float32) == 4, "float32 must be 4 bytes");
static_assert(sizeof(float64) == 8, "float64 must be 8 bytes");

} // namespace ordwel

#endif
