// SPDX-License-Identifier: MIT
// Timecode text in every form a caller can hand over, and the stepping rules on what it gives.
// Any input must give a value or the exception the class names; a drop-frame step must be undone
// by the step back.

#include <ordwel/es.h>
#include <ordwel/timecode.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

using namespace ordwel;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *a_data, size_t a_size)
{
    std::string const l_text(reinterpret_cast<char const *>(a_data), a_size);
    try {
        timecode const l_value(l_text);
        (void)string_with_timecode(l_value, true);
        (void)l_value.total_frames();
    } catch (es::arg const &) {
    }
    timecode l_rated(29.97f, l_text);
    try {
        l_rated.set(l_text);
    } catch (std::out_of_range const &) {
    }
    (void)timecode::mode_from_string(l_text);

    // The first bytes as a position and a step: from a shown label, += then -= returns.
    if (a_size >= 8) {
        unsigned int l_position = 0;
        unsigned int l_step = 0;
        for (int l_index = 0; l_index < 4; ++l_index) {
            l_position = l_position << 8 | a_data[l_index];
            l_step = l_step << 8 | a_data[4 + l_index];
        }
        for (timecode::mode_type l_mode : {timecode::mode_29_97, timecode::mode_59_94, timecode::mode_23_976}) {
            timecode l_start(l_mode);
            // Keep clear of the 32-bit wrap: a few days of frames at most.
            l_start.total_frames(l_position % 20000000u);
            if (l_mode == timecode::mode_23_976) {
                continue;
            }
            timecode l_value = l_start;
            l_value += l_step % 10000000u;
            l_value -= l_step % 10000000u;
            if (l_value != l_start && l_start.frame() >= (l_mode == timecode::mode_29_97 ? 2u : 4u)) {
                std::abort();
            }
        }
    }
    return 0;
}
