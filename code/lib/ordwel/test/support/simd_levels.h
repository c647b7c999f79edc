// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_SIMD_LEVELS_H
#define ORDWEL_TEST_SIMD_LEVELS_H

#include <vector>

#include "core/cpu_dispatch.h"

namespace ordwel_test {

// The vector levels this processor runs from a_lowest up, in order: the kernels of each level are
// compared with one another and with the scalar one.
inline std::vector<ordwel::internal::simd_level>
simd_levels_here(ordwel::internal::simd_level a_lowest = ordwel::internal::simd_level::scalar)
{
    using ordwel::internal::simd_level;
    std::vector<simd_level> l_levels;
    simd_level const l_top = ordwel::internal::simd_level_of(ordwel::internal::cpu_features_detected());
    for (unsigned l_level = static_cast<unsigned>(a_lowest); l_level <= static_cast<unsigned>(l_top); ++l_level) {
        l_levels.push_back(static_cast<simd_level>(l_level));
    }
    return l_levels;
}

} // namespace ordwel_test

#endif
