// SPDX-License-Identifier: MIT
#include <ordwel/string_helpers.h>

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

TEST(string_helpers, search_tests_take_sought_first)
{
    struct row {
        char const *sought;
        char const *text;
        bool contains, starts, ends;
    } const l_rows[] = {
        {"", "", true, true, true},         {"", "abc", true, true, true},      {"abcd", "bcd", false, false, false},
        {"bc", "abcd", true, false, false}, {"ab", "abcd", true, true, false},  {"cd", "abcd", true, false, true},
        {"x", "abcd", false, false, false}, {"abcd", "abcd", true, true, true},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.sought) + " in " + l_row.text);
        EXPECT_EQ(contains(l_row.sought, l_row.text), l_row.contains);
        EXPECT_EQ(starts_with(l_row.sought, l_row.text), l_row.starts);
        EXPECT_EQ(ends_with(l_row.sought, l_row.text), l_row.ends);
    }
    EXPECT_TRUE(contains('\0', std::string("a\0b", 3)));
    EXPECT_FALSE(contains('a', ""));
    EXPECT_TRUE(contains(std::string("a\0b", 3), std::string("xa\0b", 4)));
}

TEST(string_helpers, case_changes)
{
    EXPECT_EQ(capitalized("abc"), "Abc");
    EXPECT_EQ(capitalized(""), "");
    EXPECT_EQ(capitalized("1a"), "1a");
    EXPECT_EQ(capitalized("aBC"), "ABC");
    std::string l_text = "MiXed 12";
    EXPECT_EQ(&to_lowercase(l_text), &l_text);
    EXPECT_EQ(l_text, "mixed 12");
    EXPECT_EQ(to_uppercase(l_text), "MIXED 12");
    EXPECT_EQ(string_to_lowercase("ABC\xC4"), "abc\xC4");
    EXPECT_EQ(string_to_uppercase("abc"), "ABC");
    EXPECT_EQ(appended("ab", "cd"), "abcd");
}

TEST(string_helpers, replace_string_never_rescans_what_it_put_in)
{
    struct row {
        char const *text, *from, *to, *expected;
    } const l_rows[] = {
        {"aaa", "a", "aa", "aaaaaa"}, {"abcabc", "bc", "", "aa"},          {"abab", "aba", "x", "xb"},
        {"", "a", "b", ""},           {"hello", "", "x", "hello"},         {"aXbXc", "X", "--", "a--b--c"},
        {"xx", "x", "xx", "xxxx"},    {"no match", "zz", "y", "no match"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        std::string l_text = l_row.text;
        EXPECT_EQ(&replace(l_text, l_row.from, l_row.to), &l_text);
        EXPECT_EQ(l_text, l_row.expected);
        EXPECT_EQ(string_replaced(l_row.text, l_row.from, l_row.to), l_row.expected);
    }
}

TEST(string_helpers, replace_byte_searches_one_past_the_found_place)
{
    struct row {
        char const *text;
        char from;
        char const *to, *expected;
    } const l_rows[] = {
        {"aab", 'a', "", "ab"}, // the byte moved into the found place is passed over
        {"aaa", 'a', "", "a"},        {"abc", 'x', "y", "abc"},
        {"a", 'a', "a", "a"},         {"ab", 'a', "ba", "bab"}, // stops instead of looping
        {"a b", ' ', "%20", "a%20b"}, {"", 'a', "b", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        std::string l_text = l_row.text;
        EXPECT_EQ(replace(l_text, l_row.from, l_row.to), l_row.expected);
        EXPECT_EQ(string_replaced(l_row.text, l_row.from, l_row.to), l_row.expected);
    }
}

TEST(string_helpers, split_and_trim)
{
    EXPECT_EQ(split("a=b=c", '='), std::make_pair(std::string("a"), std::string("b=c")));
    EXPECT_EQ(split("abc", '='), std::make_pair(std::string("abc"), std::string()));
    EXPECT_EQ(split("=", '='), std::make_pair(std::string(), std::string()));

    struct row {
        char const *text, *set, *expected;
    } const l_rows[] = {
        {"  a b  ", " ", "a b"}, {"xxx", "x", "xxx"},   {"", " ", ""},    {"\t a \n", " \t\n", "a"},
        {"abc", "", "abc"},      {"xaxbx", "x", "axb"}, {"ab", "b", "a"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(trimmed(l_row.text, l_row.set), l_row.expected) << l_row.text;
    }
    EXPECT_EQ(trimmed("xxx", 'x'), "xxx");
    EXPECT_EQ(trimmed("-a-", '-'), "a");
}

// Unknown alignments act as centre.
TEST(string_helpers, space_align_table)
{
    struct row {
        char const *text;
        unsigned int width;
        int align;
        char const *expected;
    } const l_rows[] = {{"abc", 6, space_align_center, "  abc "}, {"abcdef", 3, space_align_left, "abcdef"},
                        {"abc", 6, space_align_left, "abc   "},   {"abc", 6, space_align_right, "   abc"},
                        {"abc", 3, space_align_center, "abc"},    {"ab", 6, space_align_center, "  ab  "},
                        {"", 3, space_align_center, "   "},       {"abc", 6, 7, "  abc "}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(string_space_align(l_row.text, l_row.width, static_cast<e_space_align>(l_row.align)), l_row.expected)
            << l_row.text << " " << l_row.width << " " << l_row.align;
    }
}

// An unknown place to cut acts as the middle.
TEST(string_helpers, truncate_table)
{
    std::string const l_text = "abcdefghijklmnopqrst";
    struct row {
        unsigned int width;
        int whence;
        char const *expected;
    } const l_rows[] = {{13, truncate_back, "abcdefghij..."},
                        {12, truncate_front, "..klmnopqrst"},
                        {5, truncate_middle, "ab.st"},
                        {1, truncate_front, "t"},
                        {1, truncate_middle, "a"},
                        {0, truncate_back, ""},
                        {20, truncate_back, "abcdefghijklmnopqrst"},
                        {2, truncate_front, ".t"},
                        {2, truncate_back, "a."},
                        {2, truncate_middle, "a."},
                        {6, truncate_middle, "ab..st"},
                        {13, truncate_middle, "abcde...pqrst"},
                        {5, 9, "ab.st"}};
    for (row const &l_row : l_rows) {
        std::string const l_result = string_truncate(l_text, l_row.width, static_cast<e_truncate_whence>(l_row.whence));
        EXPECT_EQ(l_result, l_row.expected) << l_row.width << " " << l_row.whence;
        if (l_row.width < l_text.size()) {
            EXPECT_EQ(l_result.size(), l_row.width);
        }
    }
}

TEST(string_helpers, cstr_format_and_fourcc)
{
    EXPECT_EQ(string_with_cstr(nullptr, 5), "");
    EXPECT_EQ(string_with_cstr("abc", 2), "ab");
    EXPECT_EQ(string_with_cstr("abc", 0), "");
    EXPECT_EQ(string_with_cstr("abc", std::string::npos), "abc");
    EXPECT_EQ(string_with_cstr("a\0b", 3), std::string("a\0b", 3));

    EXPECT_EQ(string_with_format(nullptr), "");
    EXPECT_EQ(string_with_format("%s", ""), "");
    EXPECT_EQ(string_with_format("%d", 7), "7");
    EXPECT_EQ(string_with_format("%s-%04x", "id", 0xbeef), "id-beef");
    // Longer than any internal scratch space: the whole text, exactly.
    std::string const l_long(5000, 'q');
    EXPECT_EQ(string_with_format("<%s>", l_long.c_str()), "<" + l_long + ">");
    EXPECT_EQ(string_with_format("%255s", "x").size(), 255u);
    EXPECT_EQ(string_with_format("%256s", "x").size(), 256u);

    EXPECT_EQ(string_with_fourcc(0x41424344, '.'), "ABCD");
    EXPECT_EQ(string_with_fourcc(0x41000744, '.'), "A..D");
    EXPECT_EQ(string_with_fourcc(0x7f7e201f, '?'), "?~ ?");
    EXPECT_EQ(string_with_fourcc(0x80ff4100, '\0'), std::string("\0\0A\0", 4));
    EXPECT_EQ(string_with_fourcc(0, 'z').size(), 4u);

    EXPECT_TRUE(string_empty_string().empty());
    EXPECT_EQ(&string_empty_string(), &string_empty_string());
}

} // namespace
