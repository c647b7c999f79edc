// SPDX-License-Identifier: MIT
// The time address and the exact rescale against FFmpeg's libavutil: the word of every label of a
// day at 25, 29.97 and 59.94, and a few million rescales in every rounding both libraries have.

#include <ordwel/rescale.h>
#include <ordwel/smpte.h>

#include <cstdint>
#include <random>

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/timecode.h>
}

namespace {

using namespace ordwel;
using tc = timecode;
__extension__ typedef __int128 wide;

TEST(smpte_oracle, every_label_of_a_day_packs_as_libavutil_packs_it)
{
    struct row {
        tc::mode_type mode;
        AVRational rate;
        int frames_per_day;
    } const l_rows[] = {
        {tc::mode_25, {25, 1}, 25 * 86400},
        {tc::mode_29_97, {30000, 1001}, 2589408},
        {tc::mode_59_94, {60000, 1001}, 5178816},
    };
    for (row const &l_row : l_rows) {
        bool const l_drop = l_row.mode != tc::mode_25;
        tc l_value(l_row.mode);
        for (int l_frame = 0; l_frame < l_row.frames_per_day; ++l_frame, ++l_value) {
            uint32 const l_word = smpte_word_with_timecode(l_value);
            ASSERT_EQ(l_word, av_timecode_get_smpte(l_row.rate, l_drop ? 1 : 0, int(l_value.hour()),
                                                    int(l_value.minute()), int(l_value.second()), int(l_value.frame())))
                << string_with_timecode(l_value, true);
        }
    }
}

// av_rescale_rnd takes a signed factor and clamps INT64_MIN to -INT64_MAX, so the inputs stay in
// numer, denom <= INT64_MAX and count > INT64_MIN. There its AV_ROUND_DOWN and AV_ROUND_UP are
// toward minus and plus infinity as ours are, and AV_ROUND_NEAR_INF is our nearest. It has no
// nearest-even: that is compared with AV_ROUND_NEAR_INF where the quotient is no exact half.
// Results that do not fit are left out (it gives INT64_MIN where we raise); the unit tests hold
// those.
TEST(smpte_oracle, rescale_agrees_with_av_rescale_rnd)
{
    std::mt19937_64 l_random(20240611);
    rounding const l_ours[] = {rounding::down, rounding::up, rounding::nearest, rounding::nearest_even};
    AVRounding const l_theirs[] = {AV_ROUND_DOWN, AV_ROUND_UP, AV_ROUND_NEAR_INF, AV_ROUND_NEAR_INF};
    // Widths from a few bits to all 63, so that small factors, exact halves and results near the
    // limits all come up.
    auto const l_draw = [&](bool a_signed) {
        int const l_bits = int(l_random() % 63) + 1;
        sint64 l_value = sint64(l_random() >> (64 - l_bits));
        return a_signed && (l_random() & 1u) != 0 ? -l_value : l_value;
    };
    int l_compared = 0;
    int l_halves = 0;
    for (int l_case = 0; l_case < 1000000; ++l_case) {
        sint64 const l_count = l_draw(true);
        sint64 const l_numer = l_draw(false);
        // Every fifth divisor is even, so that exact halves come up.
        sint64 const l_drawn = l_draw(false);
        sint64 const l_denom = l_case % 5 == 0 ? (l_drawn & ~sint64(1)) + 2 * (l_drawn < 2) : l_drawn + (l_drawn == 0);
        // Only quotients well inside the range: rounding moves them by one at most.
        wide const l_quotient = wide(l_count) * l_numer / l_denom;
        if (l_quotient <= INT64_MIN + 1 || l_quotient >= INT64_MAX - 1) {
            continue;
        }
        for (int l_mode = 0; l_mode < 4; ++l_mode) {
            sint64 const l_result = rescaled(l_count, fraction<unsigned long long>(l_numer, l_denom), l_ours[l_mode]);
            sint64 const l_peer = av_rescale_rnd(l_count, l_numer, l_denom, l_theirs[l_mode]);
            if (l_mode == 3 && l_result != l_peer) {
                // Only an exact half may differ, by one, toward the even neighbour.
                wide const l_twice = wide(l_count) * l_numer * 2;
                ASSERT_TRUE(l_twice % l_denom == 0 && (l_twice / l_denom) % 2 != 0 && l_result % 2 == 0 &&
                            (l_result - l_peer == 1 || l_peer - l_result == 1))
                    << l_count << " * " << l_numer << " / " << l_denom;
                ++l_halves;
                continue;
            }
            ASSERT_EQ(l_result, l_peer) << l_count << " * " << l_numer << " / " << l_denom << " rounding " << l_mode;
            ++l_compared;
        }
    }
    EXPECT_GT(l_compared, 2000000);
    EXPECT_GT(l_halves, 100);
}

} // namespace
