// SPDX-License-Identifier: MIT
#ifndef ORDWEL_URL_PARTS_H
#define ORDWEL_URL_PARTS_H

#include <cstddef>
#include <string>
#include <string_view>

#include <ordwel/url.h>

// The parts of a URL as one table, for code that treats them alike: showing a URL part by part,
// editing the part that a user names, trying every setter on a text. Each entry holds the part's
// getter, its setter and its copying twin from <ordwel/url.h>, all of one shape.

namespace ordwel {

/// One part of a URL: its name and its functions. The bools are the getter's decode and the
/// setters' encode; for a part that is never coded (m_coded false: the scheme and the host) they
/// are ignored.
struct url_part {
    char const *m_name; ///< The part's name, as in the function names: "scheme", "host", ...
    bool m_coded;       ///< Whether the part is percent-coded (all but the scheme and the host).
    /// The getter, url_<name>.
    std::string (*m_get)(std::string const &a_url, bool a_decode);
    /// The setter in place, url_set_<name>.
    std::string &(*m_set)(std::string &a_url, std::string const &a_value, bool a_encode);
    /// The copying setter, url_new_<name>.
    std::string (*m_new)(std::string const &a_url, std::string const &a_value, bool a_encode);
};

/// Every part in the order of the text, scheme to fragment. The entries call the library's functions
/// by name rather than holding their addresses, so that the table is a constant also where those
/// functions come from a DLL.
inline constexpr url_part k_url_parts[] = {
    {"scheme", false, [](std::string const &a_url, bool) { return url_scheme(a_url); },
     [](std::string &a_url, std::string const &a_value, bool) -> std::string & {
         return url_set_scheme(a_url, a_value);
     },
     [](std::string const &a_url, std::string const &a_value, bool) { return url_new_scheme(a_url, a_value); }},
    {"authority", true, [](std::string const &a_url, bool a_decode) { return url_authority(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_authority(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_authority(a_url, a_value, a_encode);
     }},
    {"domain", true, [](std::string const &a_url, bool a_decode) { return url_domain(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_domain(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_domain(a_url, a_value, a_encode);
     }},
    {"user", true, [](std::string const &a_url, bool a_decode) { return url_user(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_user(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_user(a_url, a_value, a_encode);
     }},
    {"password", true, [](std::string const &a_url, bool a_decode) { return url_password(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_password(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_password(a_url, a_value, a_encode);
     }},
    {"host", false, [](std::string const &a_url, bool) { return url_host(a_url); },
     [](std::string &a_url, std::string const &a_value, bool) -> std::string & { return url_set_host(a_url, a_value); },
     [](std::string const &a_url, std::string const &a_value, bool) { return url_new_host(a_url, a_value); }},
    {"service", true, [](std::string const &a_url, bool a_decode) { return url_service(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_service(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_service(a_url, a_value, a_encode);
     }},
    {"path", true, [](std::string const &a_url, bool a_decode) { return url_path(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_path(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_path(a_url, a_value, a_encode);
     }},
    {"params", true, [](std::string const &a_url, bool a_decode) { return url_params(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_params(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_params(a_url, a_value, a_encode);
     }},
    {"query", true, [](std::string const &a_url, bool a_decode) { return url_query(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_query(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_query(a_url, a_value, a_encode);
     }},
    {"fragment", true, [](std::string const &a_url, bool a_decode) { return url_fragment(a_url, a_decode); },
     [](std::string &a_url, std::string const &a_value, bool a_encode) -> std::string & {
         return url_set_fragment(a_url, a_value, a_encode);
     },
     [](std::string const &a_url, std::string const &a_value, bool a_encode) {
         return url_new_fragment(a_url, a_value, a_encode);
     }},
};

/// The number of entries in k_url_parts.
inline constexpr std::size_t k_url_part_count = sizeof(k_url_parts) / sizeof(k_url_parts[0]);

/// The entry of a name ("host"), or nullptr for a name that is no part's. Names are compared with
/// case.
[[nodiscard]] constexpr url_part const *find_url_part(std::string_view a_name)
{
    for (url_part const &l_part : k_url_parts) {
        if (a_name == l_part.m_name) {
            return &l_part;
        }
    }
    return nullptr;
}

} // namespace ordwel

#endif
