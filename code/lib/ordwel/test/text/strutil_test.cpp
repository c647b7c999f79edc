// SPDX-License-Identifier: MIT
#include <ordwel/string_helpers.h>
#include <ordwel/strutil.h>

#include <list>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using namespace ordwel::strutil;
using string_list = std::vector<std::string>;
using kvmap = std::map<std::string, std::string>;

std::string const k_nul_text("a\0b", 3);

string_list tokens_keep(std::string const &a_text, char a_delimiter, bool a_keep_empty)
{
    string_list l_out;
    tokenize_string(a_text, a_delimiter, l_out, a_keep_empty);
    return l_out;
}

TEST(strutil_tokenize, delimiter_with_and_without_empty_tokens)
{
    struct row {
        std::string text;
        string_list keep, drop;
    } const l_rows[] = {
        {"a,,b,", {"a", "", "b", ""}, {"a", "b"}},
        {"", {""}, {}},
        {",", {"", ""}, {}},
        {",,a", {"", "", "a"}, {"a"}},
        {"abc", {"abc"}, {"abc"}},
        {std::string("x\0y,z", 5), {std::string("x\0y", 3), "z"}, {std::string("x\0y", 3), "z"}},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(tokens_keep(l_row.text, ',', true), l_row.keep);
        EXPECT_EQ(tokens_keep(l_row.text, ',', false), l_row.drop);
    }
    // A NUL delimiter cuts at NUL bytes: the whole string is read.
    EXPECT_EQ(tokens_keep(k_nul_text, '\0', true), (string_list{"a", "b"}));
    // Tokens are appended to what the out-argument held.
    string_list l_out{"old"};
    tokenize_string("x;y", ';', l_out, true);
    EXPECT_EQ(l_out, (string_list{"old", "x", "y"}));
}

TEST(strutil_tokenize, quote_and_bracket_forms)
{
    struct row {
        std::string text;
        string_list quoted, bracketed;
    } const l_rows[] = {
        {"", {""}, {""}},
        {"a,", {"a", ""}, {"a", ""}},
        {"a,\"b,c\",d", {"a", "\"b,c\"", "d"}, {"a", "\"b", "c\"", "d"}},
        {"f(a,(b,c)),d", {"f(a", "(b", "c))", "d"}, {"f(a,(b,c))", "d"}},
        {"a,\"b,c", {"a", "\"b,c"}, {"a", "\"b", "c"}},          // an unclosed quote swallows the rest
        {"),a,(b,c", {")", "a", "(b", "c"}, {")", "a", "(b,c"}}, // a stray close leaves the depth at 0
        {"(a)),b", {"(a))", "b"}, {"(a))", "b"}},
        {std::string("a,b\0,c", 6), {"a", "b"}, {"a", "b"}}, // both stop at the first NUL
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        string_list l_quoted;
        tokenize_string(l_row.text, ',', '"', l_quoted);
        EXPECT_EQ(l_quoted, l_row.quoted);
        string_list l_bracketed;
        tokenize_string(l_row.text, ',', '(', ')', l_bracketed);
        EXPECT_EQ(l_bracketed, l_row.bracketed);
    }
    // Open and close the same byte: the depth only rises, so nothing after the first one splits.
    string_list l_out;
    tokenize_string("a,|b,|c", ',', '|', '|', l_out);
    EXPECT_EQ(l_out, (string_list{"a", "|b,|c"}));
    // A quote that is the delimiter flips the state before the delimiter test.
    l_out.clear();
    tokenize_string("a,b", ',', ',', l_out);
    EXPECT_EQ(l_out, (string_list{"a,b"}));
}

TEST(strutil_tokenize, width_cuts_at_the_nearest_delimiter)
{
    struct row {
        char const *text;
        unsigned int width;
        string_list lines;
    } const l_rows[] = {
        {"aaa bbb ccc", 4, {"aaa", "bbb", "ccc"}},
        {"aaaaaaaaaa", 4, {"aaaaaaaaaa"}},
        {"", 4, {""}},
        {"ab cdefg h", 4, {"ab", "cdefg", "h"}},
        {"abcdef gh", 4, {"abcdef", "gh"}}, // only a delimiter behind the width
        {"ab cd", 3, {"ab", "cd"}},         // tie at distance 1 each side goes to the earlier one
        {"a bc d", 3, {"a bc", "d"}},       // the later delimiter is nearer
        {"abc def", 3, {"abc", "def"}},     // delimiter exactly at the width
        {"a b", 0, {"a", "b"}},
        {" a", 0, {"", "a"}},
        {"abc ", 3, {"abc", ""}},
        {"a  b", 1, {"a", "", "b"}},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        string_list l_lines;
        tokenize_string(l_row.text, ' ', l_row.width, l_lines);
        EXPECT_EQ(l_lines, l_row.lines);
    }
}

// Long texts: only the delimiters where a line was cut go, so the lines joined give the text back.
TEST(strutil_tokenize, width_on_long_texts_keeps_every_word)
{
    unsigned int l_seed = 12345;
    auto l_next = [&l_seed]() {
        l_seed = l_seed * 1103515245U + 12345U;
        return (l_seed >> 16) & 0x7fffU;
    };
    for (unsigned int l_width : {0U, 1U, 7U, 40U, 79U, 200U}) {
        std::string l_text;
        while (l_text.size() < 20000) {
            l_text.append(1 + l_next() % 25, static_cast<char>('a' + l_next() % 26));
            l_text.append(1 + (l_next() % 7 == 0 ? 1 : 0), ' ');
        }
        SCOPED_TRACE(l_width);
        string_list l_lines;
        tokenize_string(l_text, ' ', l_width, l_lines);
        EXPECT_GT(l_lines.size(), l_text.size() / (l_width + 60));
        std::string l_joined;
        join_strings(l_lines, ' ', l_joined);
        EXPECT_EQ(l_joined, l_text);
    }
}

TEST(strutil_join, separators)
{
    string_list const l_items{"a", "", "b"};
    std::string l_out = "x:";
    join_strings(l_items, ',', l_out);
    EXPECT_EQ(l_out, "x:a,,b");

    l_out.clear();
    join_strings(std::list<std::string>{"a", "", "b"}, ',', l_out);
    EXPECT_EQ(l_out, "a,,b");

    l_out.clear();
    join_strings(l_items, '\0', l_out);
    EXPECT_EQ(l_out, "ab"); // a NUL separator means none

    l_out.clear();
    join_strings(l_items, std::string(", "), l_out);
    EXPECT_EQ(l_out, "a, , b");

    l_out.clear();
    join_strings(l_items, std::string("\0", 1), l_out);
    EXPECT_EQ(l_out, std::string("a\0\0b", 4)); // a string separator is appended as it is

    l_out = "kept";
    join_strings(string_list{}, ',', l_out);
    join_strings(std::list<std::string>{}, ',', l_out);
    join_strings(string_list{}, std::string(","), l_out);
    EXPECT_EQ(l_out, "kept");

    l_out.clear();
    join_strings(string_list{""}, ',', l_out);
    EXPECT_EQ(l_out, "");
    join_strings(string_list{"", ""}, ',', l_out);
    EXPECT_EQ(l_out, ",");
}

TEST(strutil_kv, text_to_map)
{
    struct row {
        std::string text;
        kvmap expected;
    } const l_rows[] = {
        {"", {}},
        {"a=1;b;c=", {{"a", "1"}, {"b", ""}, {"c", ""}}},
        {"a=1;a=2", {{"a", "2"}}},
        {"a=1;", {{"a", "1"}, {"", ""}}},
        {"a=b=c", {{"a", "b=c"}}},
        {";;", {{"", ""}}},
        {"=v", {{"", "v"}}},
        {std::string("a\0=1", 4), {{std::string("a\0", 2), "1"}}},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(kvmap_with_kvstr(l_row.text, ';', '='), l_row.expected);
    }
}

TEST(strutil_kv, text_to_map_adds_and_overrides)
{
    kvmap l_map{{"a", "old"}, {"z", "26"}};
    kvmap_with_kvstr(l_map, "a=new;b=2", ';', '=');
    EXPECT_EQ(l_map, (kvmap{{"a", "new"}, {"b", "2"}, {"z", "26"}}));
    kvmap_with_kvstr(l_map, "", ';', '=');
    EXPECT_EQ(l_map.size(), 3U);

    // No key-value separator: the whole text is one key, pair separators and all.
    EXPECT_EQ(kvmap_with_kvstr("a=1;b=2", ';', '\0'), (kvmap{{"a=1;b=2", ""}}));
    // A NUL pair separator cuts at NUL bytes.
    EXPECT_EQ(kvmap_with_kvstr(std::string("a=1\0b=2", 7), '\0', '='), (kvmap{{"a", "1"}, {"b", "2"}}));
    // The same byte for both: every pair ends at its first separator, with an empty value.
    EXPECT_EQ(kvmap_with_kvstr("a=b", '=', '='), (kvmap{{"a", ""}, {"b", ""}}));
    // URL-query style separators.
    EXPECT_EQ(kvmap_with_kvstr("q=x%20y&lang=en", '&', '='), (kvmap{{"lang", "en"}, {"q", "x%20y"}}));
}

TEST(strutil_kv, map_to_text)
{
    struct row {
        kvmap map;
        char const *expected;
    } const l_rows[] = {
        {{}, ""},
        {{{"a", "1"}, {"b", ""}}, "a=1;b"},
        {{{"b", "2"}, {"a", "1"}}, "a=1;b=2"},
        {{{"", "v"}, {"a", "1"}}, "=v;a=1"},
        {{{"", ""}, {"a", "1"}}, "a=1"},
        {{{"", ""}}, ""},
        {{{"a", "1=2"}}, "a=1=2"}, // a value may hold the key-value byte
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.expected);
        EXPECT_EQ(kvstr_with_kvmap(l_row.map, ';', '='), l_row.expected);
    }
    // Appends, and writes a pair separator in front of the first key when out held something.
    std::string l_out = "pre";
    kvstr_with_kvmap(l_out, kvmap{{"a", "1"}}, '&', '=');
    EXPECT_EQ(l_out, "pre&a=1");
    // An empty key with a value never gets a pair separator in front, even after text.
    l_out = "pre";
    kvstr_with_kvmap(l_out, kvmap{{"", "v"}}, '&', '=');
    EXPECT_EQ(l_out, "pre=v");
    // NUL separators are written as bytes.
    EXPECT_EQ(kvstr_with_kvmap(kvmap{{"a", "1"}, {"b", "2"}}, '\0', '\0'), std::string("a\0001\0b\0002", 7));
}

TEST(strutil_replace, character_map_is_one_pass)
{
    std::map<char, std::string> const l_chain{{'a', "b"}, {'b', "c"}};
    std::map<char, std::string> const l_escape{{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'x', ""}};
    struct row {
        std::map<char, std::string> const *map;
        std::string text, expected;
    } const l_rows[] = {
        {&l_chain, "ab", "bc"},    {&l_chain, "", ""},
        {&l_chain, "xyz", "xyz"},  {&l_escape, "<a&b>", "&lt;a&amp;b&gt;"},
        {&l_escape, "xxaxx", "a"}, {&l_escape, "&", "&amp;"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        std::string l_text = l_row.text;
        EXPECT_EQ(&strutil::replace(l_text, *l_row.map), &l_text);
        EXPECT_EQ(l_text, l_row.expected);
        EXPECT_EQ(strutil::string_replaced(l_row.text, *l_row.map), l_row.expected);
    }
    EXPECT_EQ(strutil::string_replaced("abc", std::map<char, std::string>{}), "abc");
    // NUL and high bytes are keys like any other.
    std::map<char, std::string> const l_bytes{{'\0', "\\0"}, {'\xFF', "<FF>"}};
    EXPECT_EQ(strutil::string_replaced(std::string("a\0\xFF", 3), l_bytes), "a\\0<FF>");
}

TEST(strutil_replace, string_map_runs_entry_after_entry)
{
    std::map<std::string, std::string> const l_chain{{"a", "b"}, {"b", "c"}};
    EXPECT_EQ(strutil::string_replaced("ab", l_chain), "cc");
    std::string l_text = "one two";
    EXPECT_EQ(&strutil::replace(l_text, std::map<std::string, std::string>{{"one", "1"}, {"two", "2"}}), &l_text);
    EXPECT_EQ(l_text, "1 2");
    // Key order, not insertion order: "ab" runs before "b".
    EXPECT_EQ(strutil::string_replaced("abb", std::map<std::string, std::string>{{"b", "x"}, {"ab", "y"}}), "yx");
    // An empty key changes nothing.
    EXPECT_EQ(strutil::string_replaced("abc", std::map<std::string, std::string>{{"", "z"}}), "abc");
    // Braced tables pick their form without naming the map type.
    EXPECT_EQ(strutil::string_replaced("ab", {{'a', "x"}}), "xb");
    EXPECT_EQ(strutil::string_replaced("ab", {{"ab", "y"}}), "y");
    // The byte and string forms of ordwel::replace still resolve beside the map forms.
    EXPECT_EQ(ordwel::string_replaced("a-b", '-', "+"), "a+b");
    EXPECT_EQ(ordwel::string_replaced("a--b", "--", "+"), "a+b");
}

TEST(strutil_buffer, to_string_keeps_every_byte)
{
    buffer const l_bytes = ordwel_test::buffer_of(std::string("a\0b\xFF", 4));
    EXPECT_EQ(buffer_to_string(l_bytes), std::string("a\0b\xFF", 4));
    std::string l_out = "overwritten";
    buffer_to_string(l_out, l_bytes);
    EXPECT_EQ(l_out, std::string("a\0b\xFF", 4));
    buffer_to_string(l_out, buffer());
    EXPECT_EQ(l_out, "");
}

// The platform's wide form of a code point: one unit, or a surrogate pair where wchar_t is 16 bits.
std::wstring wide_of(char32_t a_code)
{
    std::wstring l_wide;
    if (sizeof(wchar_t) == 2 && a_code >= 0x10000) {
        char32_t const l_offset = a_code - 0x10000;
        l_wide += static_cast<wchar_t>(0xD800 + (l_offset >> 10));
        l_wide += static_cast<wchar_t>(0xDC00 + (l_offset & 0x3FF));
    } else {
        l_wide += static_cast<wchar_t>(a_code);
    }
    return l_wide;
}

TEST(strutil_wide, every_utf8_length_at_its_edges)
{
    struct row {
        char32_t code;
        char const *text;
    } const l_rows[] = {{0x01, "\x01"},
                        {0x7F, "\x7F"},
                        {0x80, "\xC2\x80"},
                        {0x7FF, "\xDF\xBF"},
                        {0x800, "\xE0\xA0\x80"},
                        {0xD7FF, "\xED\x9F\xBF"},
                        {0xE000, "\xEE\x80\x80"},
                        {0xFFFF, "\xEF\xBF\xBF"},
                        {0x10000, "\xF0\x90\x80\x80"},
                        {0x10FFFF, "\xF4\x8F\xBF\xBF"}};
    std::string l_all;
    std::wstring l_all_wide;
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(string_to_wstring(l_row.text), wide_of(l_row.code));
        EXPECT_EQ(wstring_to_string(wide_of(l_row.code)), l_row.text);
        l_all += l_row.text;
        l_all_wide += wide_of(l_row.code);
    }
    EXPECT_EQ(string_to_wstring(l_all), l_all_wide);
    EXPECT_EQ(wstring_to_string(l_all_wide), l_all);
}

// Every scalar value of the basic plane and a stride through the others come back unchanged.
TEST(strutil_wide, round_trip_over_every_plane)
{
    std::wstring l_all_wide;
    for (char32_t l_code = 1; l_code < 0x110000; l_code += l_code < 0x10000 ? 1 : 0x0FFF) {
        if (l_code < 0xD800 || l_code > 0xDFFF) {
            l_all_wide += wide_of(l_code);
        }
    }
    EXPECT_EQ(string_to_wstring(wstring_to_string(l_all_wide)), l_all_wide);
}

TEST(strutil_wide, ascii_runs_of_every_length_around_other_characters)
{
    // Non-ASCII characters at every offset within and across eight-byte runs of ASCII.
    for (std::size_t l_before = 0; l_before < 20; ++l_before) {
        for (std::size_t l_after = 0; l_after < 20; l_after += 3) {
            std::string const l_text =
                std::string(l_before, 'a') + "\xC3\xA9" + std::string(l_after, 'z') + "\xE2\x82\xAC";
            std::wstring const l_wide =
                std::wstring(l_before, L'a') + wide_of(0xE9) + std::wstring(l_after, L'z') + wide_of(0x20AC);
            SCOPED_TRACE(l_text);
            EXPECT_EQ(string_to_wstring(l_text), l_wide);
            EXPECT_EQ(wstring_to_string(l_wide), l_text);
        }
    }
}

TEST(strutil_wide, stops_at_the_first_nul)
{
    EXPECT_EQ(string_to_wstring(std::string("ab\0cd", 5)), L"ab");
    EXPECT_EQ(wstring_to_string(std::wstring(L"ab\0cd", 5)), "ab");
    EXPECT_EQ(string_to_wstring(""), L"");
    EXPECT_EQ(wstring_to_string(L""), "");
    EXPECT_EQ(string_to_wstring(std::string("\0x", 2)), L"");
}

#ifndef _WIN32
// Ill-formed input is the platform's to treat; on POSIX each maximal ill-formed subpart becomes
// one U+FFFD, and so does every wide unit that is no scalar value.
TEST(strutil_wide, ill_formed_input_becomes_replacement_characters)
{
    struct row {
        char const *text;
        std::wstring wide;
    } const l_rows[] = {
        {"\x80", L"\xFFFD"},
        {"a\xC0\xAF"
         "b",
         L"a\xFFFD\xFFFD"
         L"b"},                                            // overlong: C0 never starts a sequence
        {"\xE0\x80\x80", L"\xFFFD\xFFFD\xFFFD"},           // overlong three-byte form
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},           // a surrogate in UTF-8
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"}, // above U+10FFFF
        {"\xE2\x82", L"\xFFFD"},                           // truncated: one maximal subpart
        {"\xE2\x82"
         "a",
         L"\xFFFD"
         L"a"},
        {"\xF0\x9F\x98", L"\xFFFD"},
        {"\xF8\x88\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xC3\xA9\xFF\xC3\xA9", L"\xE9\xFFFD\xE9"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(string_to_wstring(l_row.text), l_row.wide);
    }
    std::wstring l_bad;
    l_bad += static_cast<wchar_t>(0xD800);
    l_bad += L'a';
    l_bad += static_cast<wchar_t>(0x110000);
    l_bad += static_cast<wchar_t>(-1);
    EXPECT_EQ(wstring_to_string(l_bad), "\xEF\xBF\xBD"
                                        "a\xEF\xBF\xBD\xEF\xBF\xBD");
}
#else
TEST(strutil_wide, surrogate_pairs_are_utf16)
{
    EXPECT_EQ(string_to_wstring("\xF0\x9F\x98\x80"), std::wstring(L"\xD83D\xDE00"));
    EXPECT_EQ(wstring_to_string(std::wstring(L"\xD83D\xDE00")), "\xF0\x9F\x98\x80");
    EXPECT_EQ(wstring_to_string(std::wstring(L"x\xDBFF\xDFFFy")), "x\xF4\x8F\xBF\xBFy");
}
#endif

} // namespace
