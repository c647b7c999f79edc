// SPDX-License-Identifier: MIT
// The URL getters on arbitrary text: no crash, no sanitizer report, and every undecoded part is
// the stretch that a plain byte-by-byte reading of the rules selects. Decoding never makes a part
// longer and gives what the scalar kernel gives, and every text without a NUL byte comes back from
// its encoding. The getters of every vector level agree.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <ordwel/url.h>
#include <ordwel/url_parts.h>

#include "addr/percent_decode.h"
#include "addr/url_scan.h"
#include "core/cpu_dispatch.h"
#include "support/simd_levels.h"

#include "fuzz_check.h"

namespace {

void check_part(std::string const &a_url, std::string const &a_plain, std::string const &a_decoded)
{
    check(a_url.find(a_plain) != std::string::npos);
    check(a_decoded.size() <= a_plain.size());
    check(a_decoded == ordwel::url_decode(a_plain));
}

using size_type = std::string::size_type;

// The first byte out of a_set at or behind a_from, or the text's length: the searches of the rules,
// which run to the text's end.
size_type first_of(std::string const &a_text, char const *a_set, size_type a_from)
{
    size_type const l_at = a_from < a_text.size() ? a_text.find_first_of(a_set, a_from) : std::string::npos;
    return l_at == std::string::npos ? a_text.size() : l_at;
}

std::string between(std::string const &a_text, size_type a_from, size_type a_to)
{
    return a_to > a_from ? a_text.substr(a_from, a_to - a_from) : std::string();
}

// Every undecoded part in the order of k_url_parts, read as the rules say, step by step.
std::vector<std::string> parts_by_rules(std::string const &a_text)
{
    size_type const l_n = a_text.size();
    size_type const l_e = first_of(a_text, "#", 0);
    size_type const l_d = first_of(a_text, ":/", 0);
    bool const l_has_scheme = l_d < l_e && a_text[l_d] == ':';
    size_type const l_s = l_has_scheme ? l_d + 1 : 0;
    size_type l_a = l_s;
    size_type l_b = l_s;
    if (l_s + 2 <= l_n && a_text[l_s] == '/' && a_text[l_s + 1] == '/') {
        l_a = l_s + 2;
        size_type l_x = first_of(a_text, "@/?[", l_a);
        while (l_x < l_n) {
            if (a_text[l_x] == '@') {
                l_x = first_of(a_text, "/;?[", l_x + 1);
            } else if (a_text[l_x] == '[') {
                l_x = first_of(a_text, "]", l_x + 1);
            } else if (a_text[l_x] == ']') {
                l_x = first_of(a_text, "/;?", l_x + 1);
                break;
            } else {
                break;
            }
        }
        // A delimiter that lies only in the fragment leaves the authority running up to it.
        l_b = l_x < l_e ? l_x : l_e;
    }
    size_type l_u = l_a;
    for (size_type l_at = l_a; l_at < l_b; ++l_at) {
        l_u = a_text[l_at] == '@' ? l_at : l_u;
    }
    bool const l_has_at = l_u < l_b && a_text[l_u] == '@';
    size_type const l_c = first_of(a_text, ";", l_a);
    size_type const l_user = l_c < l_u ? l_c + 1 : l_a;
    size_type const l_colon = first_of(a_text, ":", l_user);
    size_type const l_h = l_has_at ? l_u + 1 : l_a;
    size_type l_t = first_of(a_text, ":[", l_h);
    if (l_t < l_n && a_text[l_t] == '[') {
        l_t = first_of(a_text, ":", first_of(a_text, "]", l_t + 1) + 1);
    }
    // The host without its brackets, unless it is nothing but brackets.
    std::string l_host = between(a_text, l_h, l_t < l_b ? l_t : l_b);
    size_type const l_inner = l_host.find_first_not_of("[]");
    if (l_inner != std::string::npos) {
        l_host = l_host.substr(l_inner, l_host.find_last_not_of("[]") + 1 - l_inner);
    }
    size_type const l_path_end = first_of(a_text, ";?", l_b);
    size_type const l_q = first_of(a_text, "?", l_b);
    size_type const l_query_from = l_q < l_e ? l_q : l_e;
    size_type const l_semicolon = first_of(a_text, ";", l_b);
    return {l_has_scheme ? a_text.substr(0, l_d) : std::string(),
            between(a_text, l_a, l_b),
            l_c < l_u ? between(a_text, l_a, l_c) : std::string(),
            between(a_text, l_user, l_colon < l_u ? l_colon : l_u),
            l_colon < l_u ? between(a_text, l_colon + 1, l_u) : std::string(),
            l_host,
            l_t < l_b ? between(a_text, l_t + 1, l_b) : std::string(),
            between(a_text, l_b, l_path_end < l_e ? l_path_end : l_e),
            l_semicolon < l_query_from ? between(a_text, l_semicolon + 1, l_query_from) : std::string(),
            l_q < l_e ? between(a_text, l_q + 1, l_e) : std::string(),
            l_e < l_n ? a_text.substr(l_e + 1) : std::string()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    using namespace ordwel;
    std::string const l_url(reinterpret_cast<char const *>(a_data), a_size);

    check(l_url.find(url_scheme(l_url)) == 0 || url_scheme(l_url).empty());
    check(uri_scheme(l_url) == url_scheme(l_url));
    std::string const l_specific = uri_scheme_specific(l_url);
    check(l_url.size() >= l_specific.size() &&
          l_url.compare(l_url.size() - l_specific.size(), l_specific.size(), l_specific) == 0);
    std::vector<std::string> const l_expected = parts_by_rules(l_url);
    static std::vector<internal::simd_level> const s_levels = ordwel_test::simd_levels_here();
    check(l_expected.size() == k_url_part_count);
    // Decoding at the widest level agrees with the scalar kernel (which the unit tests check
    // against the rules byte by byte).
    std::vector<char> l_scalar(l_url.size() + 1);
    std::size_t const l_scalar_size =
        internal::k_percent_decode.for_level(internal::simd_level::scalar)(l_scalar.data(), l_url.data(), l_url.size());
    check(url_decode(l_url) == std::string(l_scalar.data(), l_scalar_size));
    for (url_part const &l_part : k_url_parts) {
        std::size_t const l_index = static_cast<std::size_t>(&l_part - k_url_parts);
        std::string const l_plain = l_part.m_get(l_url, false);
        check(l_plain == l_expected[l_index]);
        std::string const l_decoded = l_part.m_get(l_url, true);
        if (l_part.m_coded) {
            check_part(l_url, l_plain, l_decoded);
        } else {
            check(l_url.find(l_plain) != std::string::npos && l_decoded == l_plain);
        }
        // The getters of every level the processor has read alike.
        for (internal::simd_level const l_level : s_levels) {
            url_scan::getter const l_get = url_scan::getter_for_level(l_index, l_level);
            check(l_get(l_url, false) == l_plain && l_get(l_url, true) == l_decoded);
        }
    }

    // The parts of the authority lie inside it.
    std::string const l_authority = url_authority(l_url, false);
    check(l_authority.find(url_domain(l_url, false)) != std::string::npos);
    check(l_authority.find(url_user(l_url, false)) != std::string::npos);
    check(l_authority.find(url_password(l_url, false)) != std::string::npos);
    check(l_authority.find(url_service(l_url, false)) != std::string::npos);

    char const l_pair = a_size > 0 ? static_cast<char>(a_data[0]) : '&';
    char const l_kv = a_size > 1 ? static_cast<char>(a_data[1]) : '=';
    for (bool const l_decode : {false, true}) {
        std::map<std::string, std::string> l_map = url_query_kvmap(l_url, l_decode, l_pair, l_kv);
        url_params_kvmap(l_map, l_url, l_decode, l_pair, l_kv);
        url_fragment_kvmap(l_map, l_url, l_decode, l_pair, l_kv);
    }

    for (bool const l_slash : {false, true}) {
        std::string const l_encoded = url_encode(l_url, l_slash);
        check(l_encoded.size() <= 3 * l_url.size());
        if (l_url.find('\0') == std::string::npos) {
            check(url_decode(l_encoded) == l_url);
        }
    }
    check(url_decode(l_url).size() <= l_url.size());
    (void)url_protected_output(l_url);
    std::pair<std::string, std::string> const l_split = split_scheme(l_url, l_pair);
    check(l_split.first + l_split.second == l_url);
    return 0;
}
