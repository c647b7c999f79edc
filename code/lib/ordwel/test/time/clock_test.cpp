// SPDX-License-Identifier: MIT
#include <ordwel/clock.h>

#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/es.h>
#include <ordwel/timestamp.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;

// Waits until the wall clock's second has just changed, so that what follows runs early in a
// fresh second.
unsigned int wait_for_next_second()
{
    unsigned int const l_start = time_in_seconds();
    unsigned int l_now = l_start;
    while (l_now == l_start) {
        sleep_milliseconds(5);
        l_now = time_in_seconds();
    }
    return l_now;
}

double elapsed_seconds(unsigned long long a_since)
{
    return timestamp(time_now() - a_since, time_resolution()).as_float(1.0);
}

TEST(egg_clock, activation_and_forced_ring)
{
    egg_clock l_empty(0);
    EXPECT_FALSE(l_empty.activate());
    EXPECT_FALSE(l_empty.is_active());

    egg_clock l_clock(10);
    EXPECT_FALSE(l_clock.is_active());
    EXPECT_FALSE(l_clock.is_ringing());
    EXPECT_TRUE(l_clock.activate());
    EXPECT_TRUE(l_clock.is_active());
    EXPECT_FALSE(l_clock.is_ringing());
    EXPECT_EQ(l_clock.time(), 10u);

    egg_clock l_forced(10);
    l_forced.ring();
    EXPECT_TRUE(l_forced.is_ringing());
    EXPECT_FALSE(l_forced.is_active());
    EXPECT_TRUE(l_forced.activate());
    EXPECT_TRUE(l_forced.is_ringing()) << "activate leaves a forced ring";
    l_forced.deactivate();
    EXPECT_FALSE(l_forced.is_ringing());
    EXPECT_FALSE(l_forced.is_active());
    EXPECT_EQ(l_forced.time(), 10u);

    egg_clock l_copy(3);
    l_copy = l_forced;
    EXPECT_EQ(l_copy.time(), 10u);
}

// A length of 0 set on a running clock rings as soon as one second has passed, and not before.
TEST(egg_clock, rings_strictly_after_its_length)
{
    egg_clock l_clock(100);
    wait_for_next_second();
    ASSERT_TRUE(l_clock.activate());
    l_clock.set_time(0);
    EXPECT_FALSE(l_clock.is_ringing()) << "elapsed 0 is not more than 0";
    wait_for_next_second();
    EXPECT_TRUE(l_clock.is_ringing());
    EXPECT_TRUE(l_clock.is_ringing()) << "keeps ringing";
    l_clock.set_time(1000);
    EXPECT_FALSE(l_clock.is_ringing()) << "measured against the new length";
    l_clock.set_time(0);
    l_clock.deactivate();
    EXPECT_FALSE(l_clock.is_ringing());
    EXPECT_FALSE(l_clock.is_active());
    EXPECT_EQ(l_clock.time(), 0u);
}

TEST(clock, sleeping)
{
    EXPECT_EQ(ordwel_test::raised_at<es::unsupp>([] { sleep_microseconds(10); }),
              "Sleep microseconds not implemented! @ clock.cpp");
    unsigned long long l_start = time_now();
    sleep_milliseconds(30);
    EXPECT_GE(elapsed_seconds(l_start), 0.029);
    l_start = time_now();
    sleep_seconds(0.04);
    EXPECT_GE(elapsed_seconds(l_start), 0.039);
    // Negative and NaN sleep nothing, and return.
    sleep_seconds(-5.0);
    sleep_seconds(std::numeric_limits<double>::quiet_NaN());
    sleep_seconds(0u);
}

TEST(clock, seconds_to_hhmmss_table)
{
    struct row {
        double seconds;
        char const *expected;
    } const l_rows[] = {
        {0.0, "00:00:00.000"},       {59.5, "00:00:59.500"}, {3725.5, "01:02:05.500"}, {3735.25, "01:02:15.250"},
        {360000.0, "100:00:00.000"}, {9.0, "00:00:09.000"},  {10.0, "00:00:10.000"},   {-3.0, "00:00:00.000"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(seconds_to_HHMMSS_string(l_row.seconds), l_row.expected) << l_row.seconds;
    }
    EXPECT_FALSE(seconds_to_HHMMSS_string(1e300).empty());
}

TEST(clock, time_in_seconds_from_text)
{
    EXPECT_EQ(time_in_seconds("1970-01-01T01:00:00+01:00"), time_in_seconds("1970-01-01T00:00:00+00:00"));
    unsigned int const l_utc = time_in_seconds("2020-06-01T12:00:00+00:00");
    EXPECT_EQ(time_in_seconds("2020-06-01T12:00:00-05:30") - l_utc, 19800u);
    EXPECT_EQ(l_utc - time_in_seconds("2020-06-01T12:00:00+02:15"), 8100u);
    // An offset hour of 0 counts as plus, also for "-00:30".
    EXPECT_EQ(l_utc - time_in_seconds("2020-06-01T12:00:00-00:30"), 1800u);
    EXPECT_EQ(time_in_seconds("2020-06-01T12:00:00Z"), l_utc) << "fields not reached stay 0";
    EXPECT_EQ(time_in_seconds("2020-06-01T12:00:61+00:00") - l_utc, 61u) << "mktime normalises";
    EXPECT_EQ(time_in_seconds(""), time_in_seconds("garbage"));
}

TEST(clock, calendar_text)
{
    for (unsigned int l_seconds : {0u, 86400u * 365u, 4000000000u}) {
        std::string const l_text = time_string(l_seconds);
        ASSERT_EQ(l_text.size(), 24u) << l_seconds << " gives " << l_text;
        EXPECT_EQ(l_text[3], ' ');
        EXPECT_EQ(l_text[13], ':');
        EXPECT_EQ(l_text[16], ':');
    }
    std::string const l_epoch = time_string(0);
    EXPECT_TRUE(l_epoch.substr(20) == "1970" || l_epoch.substr(20) == "1969") << l_epoch;
    EXPECT_EQ(time_string(4000000000u).substr(20), "2096");

    unsigned int l_year = 0;
    unsigned int l_month = 0;
    unsigned int l_day = 0;
    unsigned int l_hour = 99;
    unsigned int l_minute = 99;
    unsigned int l_second = 99;
    time_get_date_variables(&l_year, &l_month, &l_day, &l_hour, &l_minute, &l_second);
    EXPECT_GE(l_year, 2020u);
    EXPECT_GE(l_month, 1u);
    EXPECT_LE(l_month, 12u);
    EXPECT_GE(l_day, 1u);
    EXPECT_LE(l_day, 31u);
    EXPECT_LE(l_hour, 23u);
    EXPECT_LE(l_minute, 59u);
    EXPECT_LE(l_second, 60u);
    time_get_date_variables(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    unsigned int l_only_month = 0;
    time_get_date_variables(nullptr, &l_only_month, nullptr, nullptr, nullptr, nullptr);
    EXPECT_GE(l_only_month, 1u);

    std::string const l_year_text = get_strftime_output("%Y", 5);
    ASSERT_EQ(l_year_text.size(), 4u);
    EXPECT_GE(std::stoul(l_year_text), 2020u);
    EXPECT_EQ(get_strftime_output("%Y", 4), "") << "does not fit";
    EXPECT_EQ(get_strftime_output("%Y-%m-%d", 1ull << 62).size(), 10u) << "a huge size is not allocated";
    EXPECT_EQ(get_strftime_output("plain", 100), "plain");
    EXPECT_EQ(get_strftime_output(nullptr, 100), "");
    EXPECT_EQ(get_strftime_output("%Y", 0), "");
}

TEST(clock, wall_clock_matches_utc_timestamp)
{
    unsigned int const l_seconds = time_in_seconds();
    unsigned long long const l_utc = timestamp_with_utc(0, 0).as_int(1);
    EXPECT_LE(l_utc - l_seconds, 2u);
}

} // namespace
