// SPDX-License-Identifier: MIT
#include <ordwel/url.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "addr/url_scan.h"
#include "core/cpu_dispatch.h"
#include "support/simd_levels.h"

namespace {

using namespace ordwel;
using internal::simd_level;
using size_type = std::string::size_type;
using parts = std::array<std::string, url_scan::k_getter_count>;

// The first byte out of a_set at or behind a_from, or the text's length.
size_type first_of(std::string const &a_text, char const *a_set, size_type a_from)
{
    size_type const l_at = a_from < a_text.size() ? a_text.find_first_of(a_set, a_from) : std::string::npos;
    return l_at == std::string::npos ? a_text.size() : l_at;
}

std::string between(std::string const &a_text, size_type a_from, size_type a_to)
{
    return a_to > a_from ? a_text.substr(a_from, a_to - a_from) : std::string();
}

// Every part undecoded, in the order of url_scan::getter_for_level, read the way the rules are
// written: one search after another over the whole text, with no block of any size in sight.
parts parts_by_rules(std::string const &a_text)
{
    size_type const l_n = a_text.size();
    size_type const l_e = first_of(a_text, "#", 0);
    size_type const l_d = first_of(a_text, ":/", 0);
    bool const l_has_scheme = l_d < l_e && a_text[l_d] == ':';
    size_type const l_s = l_has_scheme ? l_d + 1 : 0;
    size_type l_a = l_s;
    size_type l_b = l_s;
    if (a_text.compare(l_s, 2, "//") == 0) {
        l_a = l_s + 2;
        size_type l_x = first_of(a_text, "@/?[", l_a);
        if (l_x < l_n && a_text[l_x] == '@') {
            l_x = first_of(a_text, "/;?[", l_x + 1);
        }
        if (l_x < l_n && a_text[l_x] == '[') {
            l_x = first_of(a_text, "]", l_x + 1);
            if (l_x < l_n) {
                l_x = first_of(a_text, "/;?", l_x + 1);
            }
        }
        l_b = l_x < l_e ? l_x : l_e;
    }
    size_type const l_at = l_b > l_a ? a_text.rfind('@', l_b - 1) : std::string::npos;
    bool const l_has_at = l_at != std::string::npos && l_at >= l_a;
    size_type const l_u = l_has_at ? l_at : l_a;
    size_type const l_c = first_of(a_text, ";", l_a);
    size_type const l_user = l_c < l_u ? l_c + 1 : l_a;
    size_type const l_colon = first_of(a_text, ":", l_user);
    size_type const l_h = l_has_at ? l_u + 1 : l_a;
    size_type l_t = first_of(a_text, ":[", l_h);
    if (l_t < l_n && a_text[l_t] == '[') {
        l_t = first_of(a_text, ":", first_of(a_text, "]", l_t + 1) + 1);
    }
    std::string l_host = between(a_text, l_h, l_t < l_b ? l_t : l_b);
    size_type const l_inner = l_host.find_first_not_of("[]");
    if (l_inner != std::string::npos) {
        l_host = l_host.substr(l_inner, l_host.find_last_not_of("[]") + 1 - l_inner);
    }
    size_type const l_path_end = first_of(a_text, ";?#", l_b);
    size_type const l_q = a_text[l_path_end] == ';' ? first_of(a_text, "?#", l_path_end + 1) : l_path_end;
    size_type const l_question = first_of(a_text, "?#", l_b);
    return {l_has_scheme ? a_text.substr(0, l_d) : std::string(),
            between(a_text, l_a, l_b),
            l_c < l_u ? between(a_text, l_a, l_c) : std::string(),
            between(a_text, l_user, l_colon < l_u ? l_colon : l_u),
            l_colon < l_u ? between(a_text, l_colon + 1, l_u) : std::string(),
            l_host,
            l_t < l_b ? between(a_text, l_t + 1, l_b) : std::string(),
            between(a_text, l_b, l_path_end),
            between(a_text, l_path_end + 1, l_q),
            l_question < l_e ? between(a_text, l_question + 1, l_e) : std::string(),
            l_e < l_n ? a_text.substr(l_e + 1) : std::string(),
            a_text.substr(l_s)};
}

// Texts made of URL pieces, with runs that carry the delimiters behind them across the first 64
// bytes (where the getters decide most URLs in a way of their own) and the next 64 and beyond,
// and escapes near the ends of the parts. Each level's getters give what the rules give, and decoded what
// url_decode makes of it; the scheme, the host and the scheme-specific part are never decoded.
TEST(url_levels, every_level_reads_each_part_as_the_rules_say)
{
    char const *const l_pieces[] = {"s",
                                    "https",
                                    ":",
                                    "//",
                                    "//",
                                    "@",
                                    ";",
                                    "[",
                                    "]",
                                    "::1",
                                    ":",
                                    "/",
                                    "/",
                                    "?",
                                    "#",
                                    "%41",
                                    "%2F",
                                    "%",
                                    "%%4",
                                    "a=1",
                                    "xxxx",
                                    "xxxxxxxxxxxxxxxx",
                                    "yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy"};
    std::size_t const l_count = sizeof l_pieces / sizeof l_pieces[0];
    std::vector<simd_level> const l_levels = ordwel_test::simd_levels_here();
    std::mt19937 l_random(62);
    for (int l_round = 0; l_round < 20000; ++l_round) {
        std::string l_text = l_random() % 2 == 0 ? "s://" : "";
        for (std::size_t l_piece = l_random() % 24; l_piece > 0; --l_piece) {
            l_text += l_pieces[l_random() % l_count];
        }
        // Half of the texts end right at a block's edge or one byte to either side, padded at a
        // random place.
        std::size_t const l_edge = 64 * (1 + l_random() % 2) + l_random() % 3 - 1;
        if (l_round % 2 == 0 && l_text.size() < l_edge) {
            l_text.insert(l_random() % (l_text.size() + 1), l_edge - l_text.size(), 'x');
        }
        parts const l_expected = parts_by_rules(l_text);
        for (simd_level const l_level : l_levels) {
            for (std::size_t l_part = 0; l_part < url_scan::k_getter_count; ++l_part) {
                url_scan::getter const l_get = url_scan::getter_for_level(l_part, l_level);
                bool const l_coded = l_part != 0 && l_part != 5 && l_part != 11;
                ASSERT_EQ(l_get(l_text, false), l_expected[l_part])
                    << "part " << l_part << ", level " << static_cast<unsigned>(l_level) << ": " << l_text;
                ASSERT_EQ(l_get(l_text, true), l_coded ? url_decode(l_expected[l_part]) : l_expected[l_part])
                    << "part " << l_part << " decoded, level " << static_cast<unsigned>(l_level) << ": " << l_text;
            }
        }
    }
}

} // namespace
