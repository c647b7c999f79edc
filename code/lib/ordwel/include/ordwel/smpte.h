// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SMPTE_H
#define ORDWEL_SMPTE_H

#include <ordwel/export.h>
#include <ordwel/timecode.h>
#include <ordwel/types.h>

/// \file
/// The SMPTE 12M time address as a packed 32-bit word, in the layout FFmpeg's libavutil gives
/// (av_timecode_get_smpte), with every field in binary-coded decimal:
///
/// | Bits  | Field |
/// |-------|-------|
/// | 0-3   | hours, units |
/// | 4-5   | hours, tens |
/// | 6     | binary group flag |
/// | 7     | binary group flag; at 50 frames a second the frame-pair bit |
/// | 8-11  | minutes, units |
/// | 12-14 | minutes, tens |
/// | 15    | binary group flag |
/// | 16-19 | seconds, units |
/// | 20-22 | seconds, tens |
/// | 23    | binary group flag; at 60 and 59.94 frames a second the frame-pair bit |
/// | 24-27 | frames, units |
/// | 28-29 | frames, tens |
/// | 30    | drop-frame flag |
/// | 31    | colour-frame flag |
///
/// Above 30 frames a second the frame field counts pairs of frames: it holds frame / 2, and the
/// frame-pair bit holds frame % 2 (bit 7 at 50, bit 23 at 60 and 59.94, as libavutil places it).
///
/// The address is a time of day: hours run from 0 to 23. Labels are counted as SMPTE counts them:
/// at 29.97 and 59.94 each minute not divisible by 10 starts at frame 2 and 4, and no other mode,
/// 23.976 included, skips a label (timecode's own stepping at 23.976 does skip some).

namespace ordwel {

/// Bit 30 of a time address: set at 29.97 and 59.94, clear in every other mode.
constexpr uint32 smpte_drop_frame_flag = 0x40000000u;
/// Bit 31 of a time address: the colour-frame flag, which the caller sets and reads.
constexpr uint32 smpte_colour_frame_flag = 0x80000000u;

/// Whether hh:mm:ss:ff is a label of a time address in a_mode: hours below 24, minutes and
/// seconds below 60, the frame below the mode's base, and not one of the labels that drop-frame
/// counting skips (frames 0 and 1 of second 0 at 29.97, frames 0 to 3 at 59.94, in each minute
/// not divisible by 10). false for mode_invalid and for any value that is no mode.
[[nodiscard]] ORDWEL_API bool smpte_label_exists(timecode::mode_type a_mode, unsigned int a_hour, unsigned int a_minute,
                                                 unsigned int a_second, unsigned int a_frame);

/// The time address of a timecode's label, with the drop-frame flag of its mode and the
/// colour-frame flag as a_colour_frame says; the binary group flags are 0. Hours wrap at 24, as
/// the address is a time of day. Raises es::arg for mode_invalid and for a label that drop-frame
/// counting skips (one that set() can reach).
[[nodiscard]] ORDWEL_API uint32 smpte_word_with_timecode(timecode const &a_timecode, bool a_colour_frame = false);

/// The timecode of a time address in a_mode, stepping by a_factor frames. The word's drop-frame
/// flag must match the mode (so 29.97 non-drop addresses are read at mode_30); the colour-frame
/// flag and the binary group flags are not looked at, so smpte_word_with_timecode gives the word
/// back with those bits cleared. Raises es::arg, naming the word and the fault, for a digit above
/// 9, a field out of its range, a frame at or above the mode's base, a label that drop-frame
/// counting skips, a mismatched drop-frame flag, and for mode_invalid.
[[nodiscard]] ORDWEL_API timecode timecode_with_smpte_word(timecode::mode_type a_mode, uint32 a_word,
                                                           unsigned int a_factor);

} // namespace ordwel

#endif
