// SPDX-License-Identifier: MIT
#include <ordwel/smpte.h>

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using tc = timecode;
using ordwel_test::raised_text;
using testing::HasSubstr;

tc::mode_type const k_modes[] = {tc::mode_24, tc::mode_25,     tc::mode_30,    tc::mode_50,
                                 tc::mode_60, tc::mode_23_976, tc::mode_29_97, tc::mode_59_94};

// Each label of the first hour round-trips through its word if it exists, and raises if it does
// not. Over a whole day in the drop-frame modes, taken in order, a label exists exactly when
// drop-frame stepping reaches it.
TEST(smpte, labels_round_trip_and_exist_where_stepping_reaches)
{
    for (tc::mode_type l_mode : k_modes) {
        bool const l_drops = l_mode == tc::mode_29_97 || l_mode == tc::mode_59_94;
        tc l_walker(l_mode);
        tc l_value(l_mode);
        for (unsigned int l_position = 0; l_position < l_value.base() * (l_drops ? 86400 : 3600); ++l_position) {
            l_value.numer(l_position);
            bool const l_exists =
                smpte_label_exists(l_mode, l_value.hour(), l_value.minute(), l_value.second(), l_value.frame());
            ASSERT_EQ(l_exists, !l_drops || l_walker.numer() == l_position) << string_with_timecode(l_value, true);
            l_walker += l_exists ? 1 : 0;
            if (l_position >= l_value.base() * 3600) {
                continue;
            }
            if (!l_exists) {
                ASSERT_THAT(raised_text<es::arg>([&] { (void)smpte_word_with_timecode(l_value); }), HasSubstr("skips"));
                continue;
            }
            uint32 const l_word = smpte_word_with_timecode(l_value, l_position % 2 == 0);
            ASSERT_EQ(l_word >> 31, l_position % 2 == 0 ? 1u : 0u);
            tc const l_back = timecode_with_smpte_word(l_mode, l_word, 3);
            ASSERT_EQ(l_back, l_value) << tc::mode_c_str(l_mode) << " " << std::hex << l_word;
            ASSERT_EQ(l_back.factor(), 3u);
        }
        if (l_drops) {
            EXPECT_EQ(l_walker.total_frames(), l_mode == tc::mode_29_97 ? 2589408u : 5178816u);
        }
    }
    EXPECT_FALSE(smpte_label_exists(tc::mode_invalid, 0, 0, 0, 0) || smpte_label_exists(tc::mode_25, 24, 0, 0, 0) ||
                 smpte_label_exists(tc::mode_25, 0, 0, 0, 25));
}

TEST(smpte, known_words)
{
    struct row {
        tc::mode_type mode;
        unsigned int hour, minute, second, frame;
        bool colour;
        uint32 word;
    } const l_rows[] = {
        {tc::mode_25, 23, 59, 59, 24, true, 0xa4595923u},  {tc::mode_24, 1, 2, 3, 23, false, 0x23030201u},
        {tc::mode_50, 0, 0, 0, 1, false, 0x00000080u},     {tc::mode_50, 23, 59, 59, 49, false, 0x245959a3u},
        {tc::mode_60, 23, 59, 59, 59, false, 0x29d95923u}, {tc::mode_59_94, 0, 1, 0, 4, true, 0xc2000100u},
        {tc::mode_59_94, 0, 1, 0, 5, false, 0x42800100u},  {tc::mode_23_976, 0, 1, 0, 0, false, 0x00000100u},
    };
    for (row const &l_row : l_rows) {
        tc const l_value(l_row.mode, l_row.hour, l_row.minute, l_row.second, l_row.frame, 1);
        EXPECT_EQ(smpte_word_with_timecode(l_value, l_row.colour), l_row.word) << std::hex << l_row.word;
        // The binary group flags (and, where it is no frame-pair bit, bit 7 or 23) are ignored.
        uint32 const l_flags = 0x00008040u | (l_row.mode == tc::mode_50 ? 0x00800000u : 0x00000080u);
        EXPECT_EQ(timecode_with_smpte_word(l_row.mode, l_row.word | l_flags, 1), l_value) << std::hex << l_row.word;
    }
    // Hours wrap at 24: the address is a time of day.
    EXPECT_EQ(smpte_word_with_timecode(tc(tc::mode_25, 25, 0, 0, 0, 1)), 0x00000001u);
}

TEST(smpte, bad_words_and_modes_raise)
{
    struct row {
        tc::mode_type mode;
        uint32 word;
        char const *fault;
    } const l_rows[] = {
        {tc::mode_25, 0x0000000au, "digit"},        {tc::mode_25, 0x000b0000u, "digit"},
        {tc::mode_25, 0x00000024u, "hours"},        {tc::mode_25, 0x00006000u, "minutes"},
        {tc::mode_25, 0x00600000u, "seconds"},      {tc::mode_25, 0x25000000u, "frame beyond"},
        {tc::mode_50, 0x25000000u, "frame beyond"}, {tc::mode_60, 0x30000000u, "frame beyond"},
        {tc::mode_29_97, 0x00000000u, "flag"},      {tc::mode_25, 0x40000000u, "flag"},
        {tc::mode_23_976, 0x40000000u, "flag"},     {tc::mode_29_97, 0x41000100u, "skips"},
        {tc::mode_59_94, 0x41800100u, "skips"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_THAT(raised_text<es::arg>([&] { (void)timecode_with_smpte_word(l_row.mode, l_row.word, 1); }),
                    HasSubstr(l_row.fault))
            << std::hex << l_row.word;
    }
    EXPECT_EQ(raised_text<es::arg>([] { (void)timecode_with_smpte_word(tc::mode_25, 0x0000000au, 1); }),
              "Invalid SMPTE time address 0x0000000a at mode 25: a digit above 9");
    EXPECT_EQ(raised_text<es::arg>([] { (void)timecode_with_smpte_word(tc::mode_invalid, 0, 1); }),
              "No SMPTE time address at mode invalid");
    EXPECT_EQ(raised_text<es::arg>([] { (void)smpte_word_with_timecode(tc(tc::mode_invalid)); }),
              "No SMPTE time address at mode invalid");
    EXPECT_EQ(raised_text<es::arg>([] { (void)smpte_word_with_timecode(tc(tc::mode_29_97, 0, 1, 0, 1, 1)); }),
              "Timecode 00:01:00;01 is a label that mode 29.97 skips");
}

} // namespace
