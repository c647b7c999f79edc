// SPDX-License-Identifier: MIT
#include <ordwel/cpuinfo.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/env.h>

namespace {

using namespace ordwel;

TEST(cpuinfo, architecture_codes)
{
    struct row {
        uint32 architecture;
        unsigned type;
    } const l_rows[] = {{0, 7},  {6, 19}, {9, 0x1000007}, {0xFFFF, 0xFFFFFFFFu}, {5, 0},
                        {12, 0}, {1, 0},  {10, 0},        {0xFFFE, 0},           {0x10000, 0}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(cpuinfo::type_with_architecture(l_row.architecture), l_row.type) << l_row.architecture;
    }
}

TEST(cpuinfo, feature_words_in_table_order)
{
    auto const bit = [](unsigned a_feature) { return uint64(1) << a_feature; };
    struct row {
        uint64 features;
        char const *flags;
    } const l_rows[] = {
        {0, " "},
        {bit(3), " mmx mmx2 "},
        {bit(3) | bit(6) | bit(10) | bit(13) | bit(8), " mmx mmx2 sse sse2 sse3 rdtsc "},
        {bit(8) | bit(7), " 3dnow 3dnow2 rdtsc "},
        {bit(13) | bit(3), " mmx mmx2 sse3 "},
        {bit(7) | bit(13) | bit(10) | bit(6) | bit(3) | bit(8), " mmx mmx2 sse sse2 sse3 3dnow 3dnow2 rdtsc "},
        // Numbers of other features (2, 12, 17 ...) add no word.
        {bit(2) | bit(12) | bit(17) | bit(63), " "},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(cpuinfo::flags_with_features(l_row.features), l_row.flags) << l_row.features;
    }
}

TEST(cpuinfo, core_records_count_their_threads)
{
    struct row {
        uint32 relation;
        uint64 mask;
        unsigned count;
    } const l_rows[] = {{0, 0x1, 1}, {0, 0x3, 2},  {0, 0xF0F0, 8}, {0, ~uint64(0), 64},
                        {0, 0, 0},   {1, 0xFF, 0}, {2, 0x3, 0},    {3, 0xFFFF, 0}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(cpuinfo::active_with_relation(l_row.relation, l_row.mask), l_row.count)
            << l_row.relation << " " << l_row.mask;
    }
}

TEST(cpuinfo, views_of_the_process_record)
{
    auto l_first = std::make_unique<cpuinfo>();
    cpuinfo const l_second;
    std::string const l_flags = l_first->flags();
    unsigned const l_type = l_first->type();
    unsigned const l_present = l_first->present();
    EXPECT_GE(l_present, 1u);
    l_first.reset();
    EXPECT_EQ(l_second.flags(), l_flags) << "the end of one view changes nothing for another";
    EXPECT_EQ(l_second.type(), l_type);
    EXPECT_EQ(l_second.present(), l_present);
    EXPECT_EQ(l_second.isa(), "x86_64");

    // Every word of flags() is a flag, and the words' neighbours are not.
    if (!l_flags.empty()) {
        EXPECT_EQ(l_flags.back(), ' ');
        EXPECT_NE(l_flags.front(), ' ');
    }
    std::string::size_type l_start = 0;
    for (std::string::size_type l_blank = l_flags.find(' '); l_blank != std::string::npos;
         l_start = l_blank + 1, l_blank = l_flags.find(' ', l_start)) {
        std::string const l_word = l_flags.substr(l_start, l_blank - l_start);
        EXPECT_TRUE(l_second.flag(l_word)) << l_word;
        EXPECT_FALSE(l_second.flag(l_word + " ")) << l_word;
        EXPECT_FALSE(l_second.flag(l_word.substr(1))) << l_word;
    }
    EXPECT_FALSE(l_second.flag(""));
    EXPECT_FALSE(l_second.flag("x86_64")) << "only isa() gives it";
    EXPECT_FALSE(l_second.flag("mm"));
    EXPECT_EQ(l_second.flag("mmx"), l_second.flag("mmx2")) << "mmx2 rides on mmx";
    EXPECT_EQ(l_second.flag("3dnow"), l_second.flag("3dnow2"));
#if defined(__x86_64__) || defined(_M_X64)
    EXPECT_EQ(l_type, 0x1000007u);
    // Every x86-64 processor has these.
    EXPECT_TRUE(l_second.flag("mmx"));
    EXPECT_TRUE(l_second.flag("sse2"));
    EXPECT_TRUE(l_second.flag("rdtsc"));
#endif
}

TEST(cpuinfo, active_counts_logical_processors)
{
    cpuinfo const l_info;
    unsigned const l_active = l_info.active();
    EXPECT_GE(l_active, 1u);
    EXPECT_EQ(l_active, l_info.active()) << "asked anew, the same machine answers the same";
    EXPECT_GE(l_active, env::get_num_cpus() > 64 ? 64u : 1u);
}

} // namespace
