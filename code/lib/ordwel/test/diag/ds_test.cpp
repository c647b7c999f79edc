// SPDX-License-Identifier: MIT
#include <ordwel/ds.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;

std::string mask_text()
{
    testing::internal::CaptureStderr();
    ds_og::mask_print(0);
    return testing::internal::GetCapturedStderr();
}

std::vector<std::string> dump_lines(std::string const &a_bytes)
{
    testing::internal::CaptureStderr();
    ds_og::print_buf(0, a_bytes.data(), a_bytes.size());
    std::string const l_out = testing::internal::GetCapturedStderr();
    std::vector<std::string> l_lines;
    for (std::size_t l_start = 0; l_start < l_out.size(); l_start += 79) {
        l_lines.push_back(l_out.substr(l_start, 79));
    }
    return l_lines;
}

// Runs first: the mask is one process-wide object and later tests change it.
TEST(ds_og, fresh_mask_has_channels_0_to_4)
{
    for (uint64 l_channel = 0; l_channel < 5; ++l_channel) {
        EXPECT_TRUE(ds_og::mask_bit(l_channel)) << l_channel;
    }
    EXPECT_FALSE(ds_og::mask_bit(5));
    EXPECT_FALSE(ds_og::mask_bit(1024));
    EXPECT_FALSE(ds_og::mask_bit(~uint64(0)));
    EXPECT_EQ(mask_text(), "{ [0..4], }\n");
}

TEST(ds_og, mask_grows_only_when_set_and_prints_runs)
{
    ds_og::mask_clear_bit(5000); // beyond the mask: nothing, no growth
    EXPECT_FALSE(ds_og::mask_bit(5000));

    ds_og::mask_set_bit(1024);
    EXPECT_TRUE(ds_og::mask_bit(1024));
    EXPECT_TRUE(ds_og::mask_bit(4));
    ds_og::mask_set_bit(2000);
    EXPECT_TRUE(ds_og::mask_bit(2000));
    EXPECT_EQ(mask_text(), "{ [0..4], 1024, 2000, }\n");
    ds_og::mask_clear_bit(1024);
    ds_og::mask_clear_bit(2000);

    uint64 const l_channels[] = {7, 8, 10};
    ds_og::mask_set_bits(l_channels, 3);
    EXPECT_EQ(mask_text(), "{ [0..4], 7, 8, 10, }\n");
    ds_og::mask_clear_bits(l_channels, 3);
    ds_og::mask_set_bits(nullptr, 3);
    ds_og::mask_set_bits(l_channels, 0);
    EXPECT_EQ(mask_text(), "{ [0..4], }\n");

    ds_og::mask_set_range(7, 3);
    EXPECT_EQ(mask_text(), "{ [0..4], }\n");
    ds_og::mask_set_range(3, 3);
    ds_og::mask_set_range(20, 22);
    ds_og::mask_set_range(30, 31);
    EXPECT_EQ(mask_text(), "{ [0..4], [20..22], 30, 31, }\n");
    ds_og::mask_clear_range(1, 3);
    ds_og::mask_clear_range(20, ~uint64(0));
    EXPECT_EQ(mask_text(), "{ 0, 4, }\n");
    ds_og::mask_set_range(0, 4);
}

TEST(ds_og, print_and_mask_print_follow_their_channel)
{
    testing::internal::CaptureStderr();
    ds_og::print(1, "on %d\n", 1);
    ds_og::print(9, "off %d\n", 9);
    ds_og::print(1, nullptr);
    ds_og::mask_print(9);
    ds_og::print_buf(9, "abc", 3);
    ds_og::print_buf(1, nullptr, 3);
    ds_og::print_buf(1, "abc", 0);
    ds_og::flush(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "on 1\n");
}

TEST(ds_og, print_buf_line_layout)
{
    std::vector<std::string> const l_three = dump_lines("ab\x7f");
    ASSERT_EQ(l_three.size(), 2u);
    EXPECT_EQ(l_three[0], "00000000  61 62 7f                                          |ab.             |\n");
    EXPECT_EQ(l_three[1], "00000003                                                    |                |\n");

    std::string l_sixteen;
    for (int l_byte = 0; l_byte < 16; ++l_byte) {
        l_sixteen.push_back(static_cast<char>(0x1f + l_byte * 7));
    }
    std::vector<std::string> const l_full = dump_lines(l_sixteen);
    ASSERT_EQ(l_full.size(), 2u);
    EXPECT_EQ(l_full[0], "00000000  1f 26 2d 34 3b 42 49 50  57 5e 65 6c 73 7a 81 88  |.&-4;BIPW^elsz..|\n");
    EXPECT_EQ(l_full[1], "00000010                                                    |                |\n");

    EXPECT_EQ(dump_lines("x").size(), 2u);
    EXPECT_EQ(dump_lines(std::string(17, 'q')).size(), 3u);

    std::vector<std::string> const l_nineteen = dump_lines(std::string(16, 'a') + "\x1f\x20~");
    ASSERT_EQ(l_nineteen.size(), 3u);
    EXPECT_EQ(l_nineteen[1], "00000010  1f 20 7e                                          |. ~             |\n");
    EXPECT_EQ(l_nineteen[2].substr(0, 8), "00000013");
    for (std::string const &l_line : l_nineteen) {
        EXPECT_EQ(l_line.size(), 79u);
        EXPECT_EQ(l_line[60], '|');
        EXPECT_EQ(l_line[77], '|');
    }
}

TEST(ds, severity_names)
{
    char const *const l_names[] = {"fatal", "alert", "critical", "error", "warning", "notice", "info", "debug"};
    for (int l_value = 0; l_value < 8; ++l_value) {
        EXPECT_STREQ(cstr_with_severity(static_cast<severity>(l_value)), l_names[l_value]);
    }
    EXPECT_STREQ(cstr_with_severity(static_cast<severity>(8)), "UNKNOWN");
    EXPECT_STREQ(cstr_with_severity(static_cast<severity>(-1)), "UNKNOWN");
}

void abort_to_stderr(char const *a_file, char const *a_text)
{
    ordwel_test::redirect_stdout_to_stderr();
    ds::abort(a_file, 1, "%s", a_text);
}

TEST(ds_death, abort_prints_one_line_to_standard_output_and_exits_1)
{
    EXPECT_EXIT(
        {
            ordwel_test::redirect_stdout_to_stderr();
            ds::abort("thread.cpp", 42, "bad %s %d", "state", 7);
        },
        testing::ExitedWithCode(1), "^Abort \\[thread.cpp:42\\] 'bad state 7'$");
    EXPECT_EXIT(abort_to_stderr(nullptr, "x"), testing::ExitedWithCode(1), "^Abort \\[n/a:1\\] 'x'$");
    std::string const l_long(2000, 'z');
    EXPECT_EXIT(abort_to_stderr("f", l_long.c_str()), testing::ExitedWithCode(1),
                testing::EndsWith("'" + std::string(1023, 'z') + "'"));
}

TEST(ds_death, og_abort_prints_on_channel_0_and_exits_1_even_when_it_is_off)
{
    EXPECT_EXIT(ds_og::abort("a == b", "x.cpp", 5), testing::ExitedWithCode(1), "^abort: 'a == b' \\[ x.cpp:5 \\]\n$");
    EXPECT_EXIT(ds_og::abort_if(true, nullptr, nullptr, 6), testing::ExitedWithCode(1), "^abort: '' \\[ n/a:6 \\]\n$");
    EXPECT_EXIT(
        {
            ds_og::mask_clear_bit(0);
            ds_og::abort("quiet", "x.cpp", 7);
        },
        testing::ExitedWithCode(1), "^$");
    // A mask that cannot be allocated ends the process through the same abort line.
    EXPECT_EXIT(ds_og::mask_set_bit(~uint64(0)), testing::ExitedWithCode(1),
                "abort: '0 == m_buf' \\[ og_debug.cpp:.+ \\]\n$");
    ds_og::abort_if(false, "never", "x.cpp", 8);
    SUCCEED() << "abort_if(false) returns";
}

} // namespace
