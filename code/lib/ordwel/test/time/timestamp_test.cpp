// SPDX-License-Identifier: MIT
#include <ordwel/timestamp.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

// A timestamp's time and resolution, for one expectation on both.
using parts = std::pair<unsigned long long, unsigned long long>;
parts parts_of(timestamp const &a_value)
{
    return {a_value.time(), a_value.resolution()};
}

TEST(timestamp, defaults_and_integer_conversions)
{
    static_assert(sizeof(timestamp) == sizeof(fraction<unsigned long long>), "no field of its own");
    EXPECT_EQ(parts_of(timestamp()), parts(0u, 1u));

    // as_int truncates, as_rounded_int rounds to nearest, both in units of 1/res second.
    struct row {
        unsigned long long time, resolution, res, truncated, rounded;
        double seconds;
    } const l_rows[] = {
        {3, 2, 1000, 1500, 1500, 1.5},
        {3, 2, 1, 1, 2, 1.5},
        {2, 3, 10, 6, 7, 2.0 / 3},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::to_string(l_row.time) + "/" + std::to_string(l_row.resolution) + " at " +
                     std::to_string(l_row.res));
        timestamp const l_value(l_row.time, l_row.resolution);
        EXPECT_EQ(l_value.as_int(l_row.res), l_row.truncated);
        EXPECT_EQ(l_value.as_rounded_int(l_row.res), l_row.rounded);
        EXPECT_DOUBLE_EQ(l_value.as_float(1.0), l_row.seconds);
        EXPECT_DOUBLE_EQ(l_value.as_float(1000.0), l_row.seconds * 1000);
    }
}

// Sub-second fields round to nearest and the rounding never carries into the seconds.
TEST(timestamp, sub_second_rounding_table)
{
    struct row {
        unsigned long long time, resolution;
        long long tv_sec, tv_usec, ts_sec, ts_nsec;
    } const l_rows[] = {
        {1, 3, 0, 333333, 0, 333333333},
        {2, 3, 0, 666667, 0, 666666667},
        {999999999, 1000000000, 0, 1000000, 0, 999999999},
        {19999999999ull, 10000000000ull, 1, 1000000, 1, 1000000000},
        {4294967295ull, 4294967296ull, 0, 1000000, 0, 1000000000},
        {7, 1, 7, 0, 7, 0},
        {51, 25, 2, 40000, 2, 40000000},
        {3, 2, 1, 500000, 1, 500000000},
    };
    for (row const &l_row : l_rows) {
        timeval const l_tv = timestamp(l_row.time, l_row.resolution).as_timeval();
        timespec const l_ts = timestamp(l_row.time, l_row.resolution).as_timespec();
        EXPECT_EQ((std::vector<long long>{l_tv.tv_sec, l_tv.tv_usec, l_ts.tv_sec, l_ts.tv_nsec}),
                  (std::vector<long long>{l_row.tv_sec, l_row.tv_usec, l_row.ts_sec, l_row.ts_nsec}))
            << l_row.time << "/" << l_row.resolution;
    }
}

TEST(timestamp, ntp_round_trip_and_rounding)
{
    unsigned long long const l_word = (1ull << 32) | 2147483648u;
    timestamp const l_value = timestamp_with_ntptime(l_word);
    EXPECT_EQ(l_value.resolution(), 4294967296u);
    EXPECT_DOUBLE_EQ(l_value.as_float(1.0), 1.5);
    EXPECT_EQ(l_value.as_ntptime(), l_word);
    EXPECT_EQ(timestamp_with_ntptime(0xFFFFFFFFFFFFFFFFull).as_ntptime(), 0xFFFFFFFFFFFFFFFFull);

    struct row {
        unsigned long long time, resolution, ntp;
    } const l_rows[] = {
        {1, 3, 0x55555555ull},    // 1431655765.33 rounds down
        {2, 3, 0xAAAAAAABull},    // 2863311530.67 rounds up
        {1, 1000000, 4295ull},    // 4294.967296
        {25, 25, 1ull << 32},     // exactly one second
        {3601, 1, 3601ull << 32}, // no epoch shift
        {1, 4294967296ull, 1},    // exact at 2^32
        {3, 2, 0x180000000ull},   // one and a half seconds
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(timestamp(l_row.time, l_row.resolution).as_ntptime(), l_row.ntp)
            << l_row.time << "/" << l_row.resolution;
    }
}

TEST(timestamp, from_timeval_and_timespec)
{
    timeval l_tv{};
    l_tv.tv_sec = 12;
    l_tv.tv_usec = 345678;
    EXPECT_EQ(parts_of(timestamp_with_timeval(l_tv)), parts(12345678u, 1000000u));
    timespec l_ts{};
    l_ts.tv_sec = 2;
    l_ts.tv_nsec = 5;
    EXPECT_EQ(parts_of(timestamp_with_timespec(l_ts)), parts(2000000005u, 1000000000u));

    // Fields widen with their sign: -1 s + 500,000 us wraps to 2^64 - 500,000.
    l_tv.tv_sec = -1;
    l_tv.tv_usec = 500000;
    EXPECT_EQ(timestamp_with_timeval(l_tv).time(), 0ull - 500000u);
}

TEST(timestamp, text_form_table)
{
    struct row {
        unsigned long long time, resolution;
        unsigned int res;
        char const *expected;
    } const l_rows[] = {
        {90061500, 1000, 1000, "25:01:01:500"},
        {90061500, 1000, 25, "25:01:01:13"},
        {90061500, 1000, 0, "25:01:02"},
        {90061500, 1000, 1, "25:01:02:0"},
        {90061500, 1000, 100, "25:01:01:50"},
        {90061500, 1000, 101, "25:01:01:051"},
        {9996, 10000, 1000, "00:00:01:000"},
        {35999999, 10000, 1000, "01:00:00:000"},
        {0, 1, 1000000000, "00:00:00:000000000"},
        {360000000, 1, 0, "100000:00:00"},
        {7, 0, 1000, "00:00:00:000"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(string_with_timestamp(timestamp(l_row.time, l_row.resolution), l_row.res), l_row.expected)
            << l_row.time << "/" << l_row.resolution << " at " << l_row.res;
    }
}

TEST(timestamp, arithmetic_keeps_resolution)
{
    EXPECT_EQ(parts_of(timestamp(3, 2) + timestamp(1, 2)), parts(4u, 2u)) << "a sum is not reduced";
    // Across resolutions: 1/2 s + 250 ms.
    EXPECT_EQ(parts_of(timestamp(1, 2) + timestamp(250, 1000)), parts(750u, 1000u));
}

TEST(timestamp, zero_resolution_is_defined)
{
    timestamp const l_value(5, 0);
    EXPECT_EQ(l_value.as_int(1000), 0u);
    EXPECT_EQ(l_value.as_rounded_int(1000), 0u);
    EXPECT_EQ(l_value.as_ntptime(), 0u);
    EXPECT_EQ(l_value.as_timeval().tv_sec, 0);
    EXPECT_EQ(l_value.as_timespec().tv_nsec, 0);
    EXPECT_TRUE(std::isinf(l_value.as_float(1.0)));
    EXPECT_TRUE(std::isnan(timestamp(0, 0).as_float(1.0)));
}

TEST(timestamp, utc_clock)
{
    timestamp const l_now = timestamp_with_utc(0, 0);
    EXPECT_EQ(l_now.resolution(), 1000000u);
    // Later than 2020-01-01 and earlier than 2200.
    EXPECT_GT(l_now.time(), 1577836800ull * 1000000u);
    EXPECT_LT(l_now.time(), 7258118400ull * 1000000u);

    // Taken back to back, the offsets show beside a small drift.
    timestamp const l_base = timestamp_with_utc(0, 0);
    timestamp const l_ahead = timestamp_with_utc(1, 0);
    timestamp const l_excess = timestamp_with_utc(0, 2000000);
    unsigned long long const k_slack = 500000;
    EXPECT_GE(l_ahead.time(), l_base.time() + 1000000u);
    EXPECT_LT(l_ahead.time(), l_base.time() + 1000000u + k_slack);
    EXPECT_GE(l_excess.time(), l_base.time() + 2000000u);
    EXPECT_LT(l_excess.time(), l_base.time() + 2000000u + k_slack);
}

TEST(timestamp, counter_is_monotonic)
{
    unsigned long long const l_resolution = time_resolution();
    EXPECT_GE(l_resolution, 1000u);
    unsigned long long l_previous = time_now();
    for (int l_index = 0; l_index < 1000; ++l_index) {
        unsigned long long const l_next = time_now();
        ASSERT_GE(l_next, l_previous);
        l_previous = l_next;
    }
    timestamp const l_stamp(time_now(), l_resolution);
    EXPECT_GT(l_stamp.as_float(1.0), 0.0);
}

} // namespace
