// SPDX-License-Identifier: MIT
#include <ordwel/timecode.h>

#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using tc = timecode;

std::string text(timecode const &a_value)
{
    return string_with_timecode(a_value, true);
}

// The labels a drop-frame counter shows: in a minute not divisible by 10, second 0 starts at
// frame k.
bool is_shown_label(timecode const &a_value, unsigned int a_k)
{
    return !(a_value.minute() % 10 != 0 && a_value.second() == 0 && a_value.frame() < a_k);
}

TEST(timecode, modes_bases_and_flags)
{
    struct row {
        tc::mode_type mode;
        unsigned int base;
        char const *name;
        bool dropframe, valid;
    } const l_rows[] = {
        {tc::mode_invalid, 1, "invalid", false, false}, {tc::mode_24, 24, "24", false, true},
        {tc::mode_25, 25, "25", false, true},           {tc::mode_30, 30, "30", false, true},
        {tc::mode_50, 50, "50", false, true},           {tc::mode_60, 60, "60", false, true},
        {tc::mode_23_976, 24, "23.976", true, true},    {tc::mode_29_97, 30, "29.97", true, true},
        {tc::mode_59_94, 60, "59.54", true, true},
    };
    for (row const &l_row : l_rows) {
        tc const l_value(l_row.mode);
        EXPECT_EQ(l_value.base(), l_row.base) << l_row.name;
        EXPECT_EQ(l_value.mode(), l_row.mode);
        EXPECT_EQ(l_value.numer(), 0u);
        EXPECT_EQ(l_value.factor(), 1u);
        EXPECT_EQ(l_value.is_dropframe(), l_row.dropframe) << l_row.name;
        EXPECT_EQ(l_value.is_valid(), l_row.valid) << l_row.name;
        EXPECT_STREQ(tc::mode_c_str(l_row.mode), l_row.name);
        EXPECT_EQ(tc::mode_from_string(l_row.name), l_row.mode) << l_row.name;
    }
    EXPECT_EQ(tc().mode(), tc::mode_invalid);
    EXPECT_EQ(tc().base(), 1u);
    EXPECT_STREQ(tc::mode_c_str(static_cast<tc::mode_type>(77)), "invalid");
    EXPECT_EQ(text(tc(tc::mode_invalid)), "");
}

TEST(timecode, mode_from_string_table)
{
    struct row {
        char const *text;
        tc::mode_type mode;
    } const l_rows[] = {
        {"24.000", tc::mode_24},     {"24.0xyz", tc::mode_24},    {"24.5", tc::mode_invalid},
        {"", tc::mode_invalid},      {"240", tc::mode_invalid},   {"23.9760001", tc::mode_23_976},
        {"23.97", tc::mode_invalid}, {"25.000   ", tc::mode_25},  {"29.970", tc::mode_29_97},
        {"50.0", tc::mode_50},       {"59.94", tc::mode_invalid}, {" 25", tc::mode_invalid},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(tc::mode_from_string(l_row.text), l_row.mode) << "'" << l_row.text << "'";
    }
}

TEST(timecode, field_setters_at_25)
{
    tc l_value(tc::mode_25, 4, 4, 4, 4, 1);
    l_value.hour(1);
    EXPECT_TRUE(l_value == tc(tc::mode_25, 1, 4, 4, 4, 1));
    l_value.minute(1);
    EXPECT_EQ(text(l_value), "01:01:04:04");
    l_value.second(1);
    EXPECT_EQ(text(l_value), "01:01:01:04");
    l_value.frame(1);
    EXPECT_EQ(text(l_value), "01:01:01:01");
    l_value.set(1, 2, 3, 4);
    EXPECT_EQ(l_value.hour(), 1u);
    EXPECT_EQ(l_value.minute(), 2u);
    EXPECT_EQ(l_value.second(), 3u);
    EXPECT_EQ(l_value.frame(), 4u);
    // Not validated: frames run over into the seconds, hours do not wrap.
    l_value.frame(99);
    EXPECT_EQ(text(l_value), "01:02:06:24");
    l_value.hour(30);
    EXPECT_EQ(text(l_value), "30:02:06:24");
    tc l_degenerate(tc::mode_25, 1, 0, 0, 0, 1);
    l_degenerate.denom(0);
    EXPECT_EQ(l_degenerate.hour() + l_degenerate.minute() + l_degenerate.second() + l_degenerate.frame(), 0u);
}

TEST(timecode, initialisation)
{
    tc const l_value(tc::mode_25, 1, 2, 3, 4, 2);
    EXPECT_EQ(l_value.total_frames(), 93079u);
    EXPECT_EQ(l_value.base(), 25u);
    EXPECT_EQ(l_value.mode(), tc::mode_25);
    EXPECT_EQ(l_value.factor(), 2u);
    EXPECT_EQ(timecode_with_quicktime_tmcd(tc::mode_25, 16909060, 2).factor(), 2u);

    tc const l_source(tc::mode_25, 1, 1, 1, 5, 4);
    tc const l_converted = timecode_with_timestamp(tc::mode_30, l_source.as_timestamp(), l_source.factor());
    EXPECT_EQ(text(l_converted), "01:01:01:06");
    EXPECT_EQ(l_converted.factor(), 4u);
    // The nominal base and truncation: 1/3 s at 25 is frame 8.
    EXPECT_EQ(text(timecode_with_timestamp(tc::mode_25, timestamp(1, 3), 1)), "00:00:00:08");
    EXPECT_EQ(text(timecode_with_timestamp(tc::mode_29_97, timestamp(600, 1), 1)), "00:10:00;18");
    // Both ways of counting frames agree: one product when it fits, split by whole seconds when not.
    struct row {
        unsigned long long time, resolution;
        unsigned int frames;
    } const l_rows[] = {
        {90000ull * 3600, 90000, 90000},
        {1ull << 60, 1ull << 40, 25u << 20},
        {0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull, 25},
        {0xFFFFFFFFFFFFFFFFull, 1ull << 62, 75}, // base·(t mod r) wraps in 64 bits
        {7, 0, 0},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(timecode_with_timestamp(tc::mode_25, timestamp(l_row.time, l_row.resolution), 1).total_frames(),
                  l_row.frames)
            << l_row.time << "/" << l_row.resolution;
    }
}

TEST(timecode, comparisons)
{
    tc const l_invalid(tc::mode_invalid, 1, 0, 0, 0, 1);
    tc const l_hour_25(tc::mode_25, 1, 0, 0, 0, 1);
    tc const l_hour_24(tc::mode_24, 1, 0, 0, 0, 1);
    EXPECT_TRUE(l_invalid != l_hour_25);
    EXPECT_TRUE(l_invalid != l_hour_24);
    EXPECT_TRUE(l_hour_25 != tc(tc::mode_25, 2, 0, 0, 0, 1));
    EXPECT_TRUE(l_hour_25 != l_hour_24);
    // Same position, other mode: unequal but not ordered.
    tc const l_same_position(tc::mode_50, 0, 0, 0, 90000, 1);
    EXPECT_FALSE(l_same_position == l_hour_25);
    EXPECT_FALSE(l_same_position < l_hour_25);
    EXPECT_TRUE(l_same_position <= l_hour_25);
    EXPECT_TRUE(l_same_position >= l_hour_25);
    EXPECT_TRUE(l_hour_24 < l_hour_25);
    EXPECT_TRUE(l_hour_25 > l_hour_24);
    tc l_factor = l_hour_25;
    l_factor.factor(9);
    EXPECT_TRUE(l_factor == l_hour_25) << "the factor takes no part";
}

TEST(timecode, conversions_of_position_45)
{
    tc const l_value(tc::mode_25, 0, 0, 1, 20, 1);
    EXPECT_EQ(l_value.numer(), 45u);
    EXPECT_EQ(l_value.as_int(), 1u);
    EXPECT_EQ(l_value.as_int(1000), 1800u);
    EXPECT_EQ(l_value.as_rounded_int(), 2u);
    EXPECT_EQ(l_value.as_rounded_int(1000), 1800u);
    EXPECT_FLOAT_EQ(l_value.as_float(), 1.8f);
    EXPECT_EQ(l_value.as_float(1000), 1800.0f);
    EXPECT_DOUBLE_EQ(l_value.as_timestamp().as_float(1.0), 1.8);
    EXPECT_EQ(l_value.as_timestamp().resolution(), 25u);
}

TEST(timecode, quicktime_word)
{
    tc const l_plain = timecode_with_quicktime_tmcd(tc::mode_25, 0x1020304, 1);
    EXPECT_EQ(l_plain.as_quicktime_tmcd(), 0x1020304u);
    EXPECT_EQ(text(l_plain), "01:02:03:04");
    tc const l_drop = timecode_with_quicktime_tmcd(tc::mode_29_97, 0x1020304, 1);
    EXPECT_EQ(l_drop.as_quicktime_tmcd(), 0x1020384u);
    // Bit 7 of the word is dropped; the mode decides.
    EXPECT_EQ(timecode_with_quicktime_tmcd(tc::mode_25, 0x1020384, 1).as_quicktime_tmcd(), 0x1020304u);
    EXPECT_EQ(timecode_with_quicktime_tmcd(tc::mode_29_97, 0x1020384, 1), l_drop);
    EXPECT_EQ(tc(tc::mode_23_976, 23, 59, 59, 23, 1).as_quicktime_tmcd(), 0x173B3B97u);
}

TEST(timecode, separators)
{
    struct row {
        tc::mode_type mode;
        bool flag;
        char const *expected;
    } const l_rows[] = {
        {tc::mode_25, true, "01:02:03:04"},     {tc::mode_25, false, "01:02:03.04"},
        {tc::mode_29_97, true, "01:02:03;04"},  {tc::mode_29_97, false, "01:02:03,04"},
        {tc::mode_23_976, true, "01:02:03;04"}, {tc::mode_invalid, true, ""},
        {tc::mode_invalid, false, ""},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(string_with_timecode(tc(l_row.mode, 1, 2, 3, 4, 1), l_row.flag), l_row.expected);
    }
}

// The text is written without printf; it must match "%02u:%02u:%02u%c%02u" on every field size.
TEST(timecode, text_matches_printf_form)
{
    unsigned int const l_positions[] = {0, 1, 9, 10, 99, 100, 1799, 1802, 107892, 2591999, 359999999, 0xFFFFFFFFu};
    unsigned int const l_bases[] = {1, 24, 30, 60, 150, 255, 0};
    for (unsigned int l_base : l_bases) {
        for (unsigned int l_position : l_positions) {
            tc l_value(tc::mode_25);
            l_value.denom(l_base);
            l_value.numer(l_position);
            std::string const l_expected = string_with_format("%02u:%02u:%02u%c%02u", l_value.hour(), l_value.minute(),
                                                              l_value.second(), ':', l_value.frame());
            EXPECT_EQ(text(l_value), l_expected) << l_position << " at " << l_base;
        }
    }
}

TEST(timecode, stepping_at_29_97)
{
    tc l_value(tc::mode_29_97, 0, 0, 1, 15, 1);
    tc const l_start = l_value;
    tc const l_before = l_value++;
    EXPECT_EQ(l_before.total_frames(), 45u);
    EXPECT_EQ(l_value.total_frames(), 46u);
    EXPECT_EQ((++l_value).total_frames(), 47u);
    EXPECT_TRUE(l_start + 2 == l_value);
    EXPECT_TRUE(l_start < l_value);
}

// From mm:59;29, the frame field after the step, by whether the next minute is divisible by 10.
TEST(timecode, minute_crossing_table)
{
    struct row {
        unsigned int factor, steps, at_tenth, otherwise;
    } const l_rows[] = {{1, 1, 0, 2}, {1, 5, 4, 6}, {3, 1, 2, 4}, {2, 5, 9, 11}};
    for (row const &l_row : l_rows) {
        for (unsigned int l_minute = 5; l_minute <= 14; ++l_minute) {
            tc l_value(tc::mode_29_97, 0, l_minute, 59, 29, l_row.factor);
            if (l_row.steps == 1) {
                ++l_value;
            } else {
                l_value += l_row.steps;
            }
            unsigned int const l_expected = (l_minute + 1) % 10 == 0 ? l_row.at_tenth : l_row.otherwise;
            EXPECT_EQ(l_value.frame(), l_expected) << "minute " << l_minute << " factor " << l_row.factor;
            EXPECT_EQ(l_value.minute(), l_minute + 1);
            EXPECT_EQ(l_value.second(), 0u);
        }
    }
}

TEST(timecode, total_frames_landmarks)
{
    struct row {
        tc::mode_type mode;
        unsigned int hour, minute, second, frame, total;
    } const l_rows[] = {
        {tc::mode_29_97, 0, 1, 0, 2, 1800},        {tc::mode_59_94, 0, 10, 0, 0, 35964},
        {tc::mode_29_97, 23, 59, 59, 29, 2589407}, {tc::mode_25, 1, 0, 0, 0, 90000},
        {tc::mode_23_976, 0, 1, 0, 3, 1443},
    };
    for (row const &l_row : l_rows) {
        tc l_value(l_row.mode, l_row.hour, l_row.minute, l_row.second, l_row.frame, 1);
        EXPECT_EQ(l_value.total_frames(), l_row.total) << text(l_value);
        tc l_back(l_row.mode);
        l_back.total_frames(l_row.total);
        EXPECT_EQ(l_back, l_value) << text(l_value);
    }
    // The double divisor differs from increment by one label near some minute ends.
    tc l_quirk(tc::mode_29_97);
    l_quirk.total_frames(1799);
    EXPECT_EQ(l_quirk.numer(), 1801u);
}

// A whole day one frame at a time: the true frame count rises by exactly one at every step, and
// every label is one that drop-frame counting shows.
TEST(timecode, whole_day_walk)
{
    struct row {
        tc::mode_type mode;
        unsigned int k, frames_per_day;
    } const l_rows[] = {{tc::mode_29_97, 2, 2589408}, {tc::mode_59_94, 4, 5178816}};
    for (row const &l_row : l_rows) {
        tc l_value(l_row.mode);
        unsigned int l_failures = 0;
        for (unsigned int l_count = 1; l_count <= l_row.frames_per_day && l_failures < 10; ++l_count) {
            ++l_value;
            if (l_value.total_frames() != l_count || !is_shown_label(l_value, l_row.k)) {
                ADD_FAILURE() << "step " << l_count << " reached " << text(l_value) << " counting "
                              << l_value.total_frames();
                ++l_failures;
            }
        }
        EXPECT_EQ(text(l_value), "24:00:00;00");
    }
}

// Every minute boundary of a day: decrement undoes increment for short and long steps, and one
// step back from a minute's first label lands on the previous minute's last one.
TEST(timecode, decrement_undoes_increment_at_every_minute)
{
    unsigned int const l_steps[] = {1, 2, 5, 29, 1798, 1800, 1801, 3599, 36000, 54000};
    for (tc::mode_type l_mode : {tc::mode_29_97, tc::mode_59_94}) {
        unsigned int const l_last = l_mode == tc::mode_29_97 ? 29 : 59;
        for (unsigned int l_minutes = 0; l_minutes < 24 * 60; ++l_minutes) {
            tc const l_start(l_mode, l_minutes / 60, l_minutes % 60, 59, l_last, 1);
            for (unsigned int l_step : l_steps) {
                tc l_value = l_start;
                l_value += l_step;
                l_value -= l_step;
                ASSERT_EQ(l_value, l_start) << text(l_start) << " by " << l_step;
            }
            for (unsigned int l_factor : {1u, 3u, 7u}) {
                tc l_value = l_start;
                l_value.factor(l_factor);
                ++l_value;
                tc const l_after = l_value--;
                ASSERT_EQ(l_value, l_start) << text(l_start) << " factor " << l_factor;
                ASSERT_EQ(l_after.total_frames(), l_start.total_frames() + l_factor);
            }
            tc l_next = l_start;
            ++l_next;
            --l_next;
            ASSERT_EQ(text(l_next), text(l_start));
        }
    }
}

TEST(timecode, decrement_counts_back_in_drop_frame)
{
    // A long step from near zero: increment counts its minutes nominally and lands on a label whose
    // true count is below the step; the way back still finds the start.
    for (tc::mode_type l_mode : {tc::mode_29_97, tc::mode_59_94}) {
        tc const l_start(l_mode, 0, 0, 0, 4, 1);
        tc l_value = l_start;
        l_value += 6223684;
        EXPECT_LE(l_value.total_frames(), 6223684u);
        l_value -= 6223684;
        EXPECT_EQ(l_value, l_start) << tc::mode_c_str(l_mode);
    }
    // Plain modes subtract and wrap.
    tc l_plain(tc::mode_25, 0, 0, 0, 3, 2);
    l_plain--;
    EXPECT_EQ(l_plain.numer(), 1u);
    --l_plain;
    EXPECT_EQ(l_plain.numer(), 0xFFFFFFFFu);
    // Before zero the drop-frame count wraps too, and never traps.
    tc l_drop(tc::mode_29_97);
    --l_drop;
    ++l_drop;
    EXPECT_TRUE(l_drop.is_valid());
}

TEST(timecode, stepping_at_23_976)
{
    tc l_value(tc::mode_23_976, 0, 1, 0, 0, 1);
    ++l_value;
    EXPECT_EQ(text(l_value), "00:01:00;03");
    --l_value;
    EXPECT_EQ(text(l_value), "00:01:00;00");

    // The labels skipped by minute: 0 at 0 and 30, 1 at 15 and 45, 2 at other odd minutes, 1 at
    // other even ones; 43 in every 30 minutes.
    tc l_walk(tc::mode_23_976);
    unsigned int l_steps = 0;
    tc const l_end(tc::mode_23_976, 1, 0, 0, 0, 1);
    while (l_walk < l_end) {
        tc const l_before = l_walk;
        ++l_walk;
        ++l_steps;
        tc l_back = l_walk;
        --l_back;
        ASSERT_EQ(l_back, l_before) << text(l_before);
    }
    EXPECT_EQ(l_walk, l_end);
    EXPECT_EQ(l_steps, 86400u - 86u);
    // Away from the first frame of a minute nothing is skipped, whatever the step crosses.
    tc l_crossing(tc::mode_23_976, 0, 0, 59, 23, 1);
    ++l_crossing;
    EXPECT_EQ(text(l_crossing), "00:01:00;00");
    EXPECT_EQ(tc(tc::mode_23_976, 0, 1, 0, 0, 1).total_frames(), 1440u) << "a plain count";
}

TEST(timecode, consecutive_across_jumps)
{
    for (tc::mode_type l_mode : {tc::mode_30, tc::mode_29_97}) {
        for (unsigned int l_factor : {1u, 4u}) {
            tc const l_value(l_mode, 0, 8, 59, 29, l_factor);
            tc const l_next = l_value + 1;
            EXPECT_TRUE(l_value.is_consecutive(l_next)) << text(l_value) << " factor " << l_factor;
            EXPECT_TRUE(l_next.is_consecutive(l_value));
            EXPECT_FALSE(l_value.is_consecutive(l_value + 2));
            EXPECT_FALSE((l_value + 2).is_consecutive(l_value));
        }
    }
    tc const l_25(tc::mode_25, 0, 0, 1, 0, 1);
    EXPECT_FALSE(l_25.is_consecutive(tc(tc::mode_50, 0, 0, 0, 26, 1))) << "other mode";
    EXPECT_FALSE(l_25.is_consecutive(l_25));
}

TEST(timecode, text_constructor)
{
    tc const l_plain("01:02:03:04@25");
    EXPECT_EQ(l_plain.mode(), tc::mode_25);
    EXPECT_EQ(l_plain.base(), 25u);
    EXPECT_EQ(text(l_plain), "01:02:03:04");
    EXPECT_EQ(tc("01:02:03;04@29.97").mode(), tc::mode_29_97);
    EXPECT_EQ(tc("01:02:03;04@59.54").base(), 60u);
    tc const l_bare("01:02:03:04");
    EXPECT_EQ(l_bare.mode(), tc::mode_invalid);
    EXPECT_EQ(l_bare.numer(), 3600u + 120u + 3u + 4u);
    EXPECT_EQ(tc("1:2:3x4@ 25").numer(), (3600u + 120u + 3u) * 25u + 4u) << "blanks before the mode word";
    EXPECT_EQ(tc("00:00:00:00@25.000000000000000000000000").mode(), tc::mode_25) << "a long mode word";
    EXPECT_EQ(tc("00:00:00:00@xyz").mode(), tc::mode_invalid);
    EXPECT_EQ(tc("01:02:03:04@").mode(), tc::mode_invalid) << "four fields";

    char const *const l_bad[] = {"01:02", "", "   ", "x", "01:02:03", "01:02:03:", "01-02-03-04"};
    for (char const *l_text : l_bad) {
        EXPECT_EQ(ordwel_test::raised_at<es::arg>([&] { tc{std::string(l_text)}; }),
                  std::string("Invalid timecode '") + l_text + "' @ timecode.cpp");
    }
    // Numbers beyond int are clamped, never undefined.
    tc const l_huge("99999999999999999999:0:0:0");
    EXPECT_EQ(l_huge, tc(tc::mode_invalid, 2147483647u, 0, 0, 0, 1));
    EXPECT_EQ(tc("-5:0:0:0"), tc(tc::mode_invalid, 0u - 5u, 0, 0, 0, 1));
}

TEST(timecode, rate_constructor)
{
    struct row {
        float rate;
        tc::mode_type mode;
    } const l_rows[] = {
        {25.0f, tc::mode_25},     {24.0f, tc::mode_24},       {23.976f, tc::mode_23_976}, {29.97f, tc::mode_29_97},
        {59.54f, tc::mode_59_94}, {59.94f, tc::mode_invalid}, {30.0f, tc::mode_30},       {50.0f, tc::mode_50},
        {60.0f, tc::mode_60},     {12.0f, tc::mode_invalid},  {-25.0f, tc::mode_invalid},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(tc(l_row.rate, "01:02:03:04").mode(), l_row.mode) << l_row.rate;
    }
    tc const l_value(25.0f, "01:02:03:04");
    EXPECT_EQ(text(l_value), "01:02:03:04");
    tc const l_partial(25.0f, "01:02");
    EXPECT_EQ(text(l_partial), "01:02:00:00") << "fields not found are 0";
    EXPECT_EQ(tc(25.0f, "").numer(), 0u);
}

TEST(timecode, framerate_table)
{
    struct row {
        double rate;
        tc::mode_type mode;
    } const l_rows[] = {{3.0, tc::mode_30},
                        {4.0, tc::mode_24},
                        {5.0, tc::mode_25},
                        {6.25, tc::mode_25},
                        {11.99, tc::mode_23_976},
                        {23.976, tc::mode_23_976},
                        {23.98, tc::mode_23_976},
                        {24.0, tc::mode_24},
                        {29.97, tc::mode_29_97},
                        {29.98, tc::mode_invalid},
                        {50.0, tc::mode_50},
                        {59.94, tc::mode_59_94},
                        {60.0, tc::mode_60},
                        {0.0, tc::mode_invalid},
                        {-1.0, tc::mode_invalid},
                        {1e300, tc::mode_invalid},
                        {std::numeric_limits<double>::quiet_NaN(), tc::mode_invalid},
                        {std::numeric_limits<double>::infinity(), tc::mode_invalid}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(timecode_with_framerate(l_row.rate, timestamp(), 1).mode(), l_row.mode) << l_row.rate;
    }
    EXPECT_EQ(text(timecode_with_framerate(29.97, timestamp(60, 1), 1)), "00:01:00;02");
}

TEST(timecode, set_from_fixed_columns)
{
    tc l_value(tc::mode_25);
    l_value.set(std::string("01:02:03:04"));
    EXPECT_EQ(text(l_value), "01:02:03:04");
    // The separators are not looked at.
    l_value.set(std::string("05x06y07z08"));
    EXPECT_EQ(text(l_value), "05:06:07:08");
    l_value.set(std::string("01:02:03:"));
    EXPECT_EQ(text(l_value), "01:02:03:00") << "exactly 9 characters";
    l_value.set(std::string("1 :2 :3 : 4"));
    EXPECT_EQ(text(l_value), "01:02:03:04");
    // Column 0 reads at most 2 characters.
    l_value.set(std::string("123:00:00:00"));
    EXPECT_EQ(l_value.hour(), 12u);
    EXPECT_EQ(l_value.mode(), tc::mode_25);

    tc const l_before = l_value;
    EXPECT_EQ(ordwel_test::raised_text<std::out_of_range>([&] { l_value.set(std::string("01:02:03")); }),
              "invalid string position");
    EXPECT_EQ(l_value, l_before);
}

} // namespace
