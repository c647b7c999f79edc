// SPDX-License-Identifier: MIT
// The URL getters on arbitrary text: no crash, no sanitizer report, and every undecoded part is a
// stretch of the text it came from. Decoding never makes a part longer, and every text without a
// NUL byte comes back from its encoding.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

#include <ordwel/url.h>
#include <ordwel/url_parts.h>

namespace {

void check(bool a_condition)
{
    if (!a_condition) {
        std::abort();
    }
}

void check_part(std::string const &a_url, std::string const &a_plain, std::string const &a_decoded)
{
    check(a_url.find(a_plain) != std::string::npos);
    check(a_decoded.size() <= a_plain.size());
    check(a_decoded == ordwel::url_decode(a_plain));
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
    for (url_part const &l_part : k_url_parts) {
        std::string const l_plain = l_part.m_get(l_url, false);
        if (l_part.m_coded) {
            check_part(l_url, l_plain, l_part.m_get(l_url, true));
        } else {
            check(l_url.find(l_plain) != std::string::npos);
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
