// SPDX-License-Identifier: MIT
#ifndef ORDWEL_FUZZ_CHECK_H
#define ORDWEL_FUZZ_CHECK_H

#include <cstdlib>

// A property that a fuzz target asserts: when it fails, the run ends in a crash, which libFuzzer
// reports and whose input it keeps.
inline void check(bool a_condition)
{
    if (!a_condition) {
        std::abort();
    }
}

#endif
