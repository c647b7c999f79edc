// SPDX-License-Identifier: MIT
#include <ordwel/rescale.h>

#include <cstdint>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::raised_text;
using testing::HasSubstr;
using u64 = unsigned long long;
using frac = fraction<u64>;

sint64 const k_max = INT64_MAX;
sint64 const k_min = INT64_MIN;
u64 const k_umax = UINT64_MAX;
rounding const k_roundings[] = {rounding::down, rounding::up, rounding::nearest, rounding::nearest_even};

TEST(rescale, each_rounding_on_signs_halves_and_limits)
{
    // Results for down, up, nearest, nearest_even; no value means es::oflow.
    struct row {
        sint64 count;
        u64 numer, denom;
        std::optional<sint64> result[4];
    } const l_rows[] = {
        {5, 1, 2, {2, 3, 3, 2}},
        {7, 1, 2, {3, 4, 4, 4}},
        {-5, 1, 2, {-3, -2, -3, -2}},
        {-7, 1, 2, {-4, -3, -4, -4}},
        {-7, 1, 3, {-3, -2, -2, -2}},
        {-8, 1, 3, {-3, -2, -3, -3}},
        {-1, 0, 7, {0, 0, 0, 0}},
        {-1, 1, k_umax, {-1, 0, 0, 0}},
        {k_max, 1, 1, {k_max, k_max, k_max, k_max}},
        {k_min, 1, 1, {k_min, k_min, k_min, k_min}},
        {k_min, 1, 2, {k_min / 2, k_min / 2, k_min / 2, k_min / 2}},
        {k_max, 1, 2, {k_max / 2, k_max / 2 + 1, k_max / 2 + 1, k_max / 2 + 1}},
        {k_min + 1, 1, 2, {k_min / 2, k_min / 2 + 1, k_min / 2, k_min / 2}},
        // The product passes 64 bits and the quotient comes back into range.
        {k_max, k_umax, k_umax, {k_max, k_max, k_max, k_max}},
        {k_min, k_umax, k_umax, {k_min, k_min, k_min, k_min}},
        {k_max, 3, 4, {6917529027641081855, 6917529027641081856, 6917529027641081855, 6917529027641081855}},
        // INT64_MAX + 0.5 and -INT64_MAX - 0.5: the rounding alone decides whether it fits.
        {k_max, k_umax, k_umax - 1, {k_max, {}, {}, {}}},
        {k_min + 1, k_umax, k_umax - 1, {k_min, k_min + 1, k_min, k_min}},
        {k_max, 3, 2, {{}, {}, {}, {}}},
        {-1, k_umax, 1, {{}, {}, {}, {}}},
    };
    for (row const &l_row : l_rows) {
        for (int l_mode = 0; l_mode < 4; ++l_mode) {
            sint64 l_got = 0;
            std::string const l_raised = raised_text<es::oflow>(
                [&] { l_got = rescaled(l_row.count, frac(l_row.numer, l_row.denom), k_roundings[l_mode]); });
            EXPECT_EQ(l_raised == "nothing raised" ? std::optional<sint64>(l_got) : std::nullopt, l_row.result[l_mode])
                << l_row.count << " * " << l_row.numer << " / " << l_row.denom << ", rounding " << l_mode;
        }
    }
    EXPECT_EQ(raised_text<es::oflow>([] { (void)rescaled(k_max, frac(3, 2), rounding::down); }),
              "Rescale of 9223372036854775807 by 3/2 does not fit in 64 bits");
    EXPECT_EQ(raised_text<es::arg>([] { (void)rescaled(5, frac(1, 0), rounding::down); }),
              "Rescale of 5 by 1/0: zero denominator");
}

TEST(rescale, timestamps_change_resolution)
{
    EXPECT_TRUE(timestamp_with_resolution(timestamp(3003, 90000), 1000, rounding::down).eq(frac(33, 1000)));
    EXPECT_TRUE(timestamp_with_resolution(timestamp(3003, 90000), 1000, rounding::up).eq(frac(34, 1000)));
    EXPECT_TRUE(timestamp_with_resolution(timestamp(5, 2), 1, rounding::nearest_even).eq(frac(2, 1)));
    // Ticks above 2^63 are unsigned and stay exact.
    EXPECT_TRUE(timestamp_with_resolution(timestamp(k_umax, 4), 2, rounding::up).eq(frac(k_umax / 2 + 1, 2)));
    EXPECT_THAT(
        raised_text<es::oflow>([] { (void)timestamp_with_resolution(timestamp(k_umax, 2), 4, rounding::down); }),
        HasSubstr("does not fit in 64 bits"));
    EXPECT_EQ(raised_text<es::arg>([] { (void)timestamp_with_resolution(timestamp(1, 0), 4, rounding::up); }),
              "Rescale of 1/0 to resolution 4: zero resolution");
}

} // namespace
