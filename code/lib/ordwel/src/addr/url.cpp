// SPDX-License-Identifier: MIT
#include <ordwel/url.h>

#include <cstring>

#include <ordwel/path.h>
#include <ordwel/strutil.h>

#include "addr/url_scan.h"
#include "core/byte_tables.h"

namespace ordwel {

namespace {

using size_type = std::string::size_type;
using kvmap = std::map<std::string, std::string>;

// --- Searching ----------------------------------------------------------------------------------
// Every search runs over a half-open range [a_from, a_to) and gives a_to when nothing is found, so
// that "not found" and "found at the end of the range" read the same to the callers.

size_type find_byte(char const *a_data, char a_byte, size_type a_from, size_type a_to)
{
    if (a_from >= a_to) {
        return a_to;
    }
    void const *const l_found = std::memchr(a_data + a_from, a_byte, a_to - a_from);
    return l_found == nullptr ? a_to : static_cast<size_type>(static_cast<char const *>(l_found) - a_data);
}

size_type find_last_byte(char const *a_data, char a_byte, size_type a_from, size_type a_to, size_type a_none)
{
    for (size_type l_iter = a_to; l_iter > a_from; --l_iter) {
        if (a_data[l_iter - 1] == a_byte) {
            return l_iter - 1;
        }
    }
    return a_none;
}

size_type find_either(char const *a_data, size_type a_from, size_type a_to, char a_first, char a_second)
{
    for (size_type l_iter = a_from; l_iter < a_to; ++l_iter) {
        if (a_data[l_iter] == a_first || a_data[l_iter] == a_second) {
            return l_iter;
        }
    }
    return a_to;
}

// A byte set as a table: one load per byte instead of a compare per member.
template <char... t_set> struct byte_set {
    bool m_member[256];

    constexpr byte_set() : m_member()
    {
        for (char const l_byte : {t_set...}) {
            m_member[static_cast<unsigned char>(l_byte)] = true;
        }
    }
};

template <char... t_set> constexpr byte_set<t_set...> k_byte_set{};

template <char... t_set> size_type find_any(char const *a_data, size_type a_from, size_type a_to)
{
    bool const *const l_member = k_byte_set<t_set...>.m_member;
    for (size_type l_iter = a_from; l_iter < a_to; ++l_iter) {
        if (l_member[static_cast<unsigned char>(a_data[l_iter])]) {
            return l_iter;
        }
    }
    return a_to;
}

// --- The scan -----------------------------------------------------------------------------------

// Where the parts of a URL lie. The path starts where the authority ends (m_b).
struct url_layout {
    size_type m_e = 0;         // the first '#', or the text's length
    size_type m_d = 0;         // the scheme's ':', if m_has_scheme
    bool m_has_scheme = false; //
    size_type m_s = 0;         // where the text behind the scheme begins
    size_type m_a = 0;         // start of the authority
    size_type m_b = 0;         // end of the authority, start of the path
};

// The fragment's start and the scheme: whatever stands in front of the first ':', unless a '/' or
// '#' comes first. A '/' first makes the text a relative path with a colon in one of its segments
// ("dir/a:b"); a '#' first makes the colon fragment text. Nothing else is asked of a scheme, so a
// drive letter ("C:/dir") reads as one: a caller that means a platform path converts it first.
// The fragment is found before everything else because it ends every other part: no delimiter
// behind the first '#' counts.
void scan_scheme(char const *a_data, size_type a_size, url_layout &a_layout)
{
    size_type const l_e = find_byte(a_data, '#', 0, a_size);
    a_layout.m_e = l_e;
    size_type const l_d = find_any<':', '/'>(a_data, 0, l_e);
    if (l_d < l_e && a_data[l_d] == ':') {
        a_layout.m_has_scheme = true;
        a_layout.m_d = l_d;
        a_layout.m_s = l_d + 1;
    }
}

// Where an authority that starts at a_a ends: at the first '/' or '?' (the path or the query
// begins), or at a ';' that opens the params. A ';' is that only behind the user information's
// '@' or behind a bracketed host. In front of an '@' it divides the logon domain from the user, so
// it can't end anything there, and in an authority with neither '@' nor brackets there is no way
// to tell params from host text, so it is host text ("x://host;p" has the host "host;p"). Brackets
// hide the colons of an IPv6 address; an unclosed '[' runs to the fragment. Nothing behind the '#'
// counts: a delimiter that is found only there leaves the authority running up to the fragment.
size_type authority_end(char const *a_data, size_type a_a, size_type a_e)
{
    size_type l_x = find_any<'@', '/', '?', '['>(a_data, a_a, a_e);
    // Behind the first '@' a further '@' is no delimiter of the authority: which '@' ends the user
    // information is for scan_userinfo to say (the last one).
    if (l_x < a_e && a_data[l_x] == '@') {
        l_x = find_any<'/', ';', '?', '['>(a_data, l_x + 1, a_e);
    }
    if (l_x < a_e && a_data[l_x] == '[') {
        l_x = find_byte(a_data, ']', l_x + 1, a_e);
        if (l_x < a_e) {
            l_x = find_any<'/', ';', '?'>(a_data, l_x + 1, a_e);
        }
    }
    return l_x;
}

// The authority needs the "//": without it the text behind the scheme is a path, whatever it
// holds ("mailto:user@host" has no user).
url_layout scan(char const *a_data, size_type a_size)
{
    url_layout l_layout;
    scan_scheme(a_data, a_size, l_layout);
    size_type const l_e = l_layout.m_e;
    size_type const l_s = l_layout.m_s;
    if (l_s + 2 > l_e || a_data[l_s] != '/' || a_data[l_s + 1] != '/') {
        l_layout.m_a = l_layout.m_b = l_s;
        return l_layout;
    }
    l_layout.m_a = l_s + 2;
    l_layout.m_b = authority_end(a_data, l_layout.m_a, l_e);
    return l_layout;
}

// The user information inside the authority [m_a, m_b).
struct userinfo_layout {
    size_type m_u = 0;         // the last '@' of the authority, or m_a without one
    bool m_has_at = false;     //
    size_type m_c = 0;         // the ';' that ends the domain, if m_has_domain
    bool m_has_domain = false; //
    size_type m_s = 0;         // start of the user
    size_type m_colon = 0;     // the ':' in front of the password, or m_u without one
};

// The last '@' ends the user information, so a user name may hold an '@' as it is ("a@b" in
// "x://a@b@c/"); a host never holds one. The first ';' in front of it ends the logon domain, and
// the first ':' behind the domain divides user from password, so a password may hold a ':'.
userinfo_layout scan_userinfo(char const *a_data, url_layout const &a_layout)
{
    userinfo_layout l_info;
    // An '@' in front of the authority (a scheme "a@b") is not taken for the end of the user.
    l_info.m_u = find_last_byte(a_data, '@', a_layout.m_a, a_layout.m_b, a_layout.m_b);
    l_info.m_has_at = l_info.m_u < a_layout.m_b;
    if (!l_info.m_has_at) {
        l_info.m_u = a_layout.m_a;
    }
    l_info.m_c = find_byte(a_data, ';', a_layout.m_a, l_info.m_u);
    l_info.m_has_domain = l_info.m_c < l_info.m_u;
    l_info.m_s = l_info.m_has_domain ? l_info.m_c + 1 : a_layout.m_a;
    l_info.m_colon = find_byte(a_data, ':', l_info.m_s, l_info.m_u);
    return l_info;
}

// The host [m_h, m_t) and the service's ':' at m_t, if m_t is inside the authority.
struct host_layout {
    size_type m_h = 0;
    size_type m_t = 0;
};

// The host ends at its first ':', the one in front of the service. The colons of an IPv6 address
// stand inside brackets, so a '[' moves the search behind the matching ']'. The service is whatever
// follows up to the authority's end, colons included ("x://host:1:2/" has the service "1:2"): it
// is a port number or a service name, and never interpreted here.
host_layout scan_host(char const *a_data, url_layout const &a_layout, userinfo_layout const &a_info)
{
    host_layout l_host;
    size_type const l_b = a_layout.m_b;
    l_host.m_h = a_info.m_has_at ? a_info.m_u + 1 : a_layout.m_a;
    size_type l_t = find_any<':', '['>(a_data, l_host.m_h, l_b);
    if (l_t < l_b && a_data[l_t] == '[') {
        l_t = find_byte(a_data, ']', l_t + 1, l_b);
        if (l_t < l_b) {
            l_t = find_byte(a_data, ':', l_t + 1, l_b);
        }
    }
    l_host.m_t = l_t;
    return l_host;
}

// The parts behind the authority, all ending at or before m_e.
struct tail_layout {
    size_type m_path_end = 0;  // the first ';' or '?' behind the path's start, or m_e
    size_type m_q = 0;         // the first '?' behind the path's start, or m_e
    size_type m_semicolon = 0; // the ';' in front of the params, or m_q without params
};

// The path ends at its first ';' or '?'. The params run from that ';' to the first '?', so a ';'
// behind the '?' is query text ("x://h/p;a=1?b;c"), and a '?' or ';' inside the query or a '#'
// inside the fragment is text of that part: only the first of each delimiter counts.
tail_layout scan_tail(char const *a_data, url_layout const &a_layout)
{
    tail_layout l_tail;
    size_type const l_p = a_layout.m_b;
    l_tail.m_path_end = find_any<';', '?'>(a_data, l_p, a_layout.m_e);
    l_tail.m_q = find_byte(a_data, '?', l_tail.m_path_end, a_layout.m_e);
    l_tail.m_semicolon = find_byte(a_data, ';', l_tail.m_path_end, l_tail.m_q);
    return l_tail;
}

// --- Coding -------------------------------------------------------------------------------------

// A foreign character counts as the digit 0, so that "%zz" (value 0) stays as it is.
constexpr internal::byte_table k_hex_value = internal::hex_value_table(0);

struct coding_tables {
    bool m_keep[256];

    constexpr coding_tables() : m_keep()
    {
        for (int l_byte = 'a'; l_byte <= 'z'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (int l_byte = 'A'; l_byte <= 'Z'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (int l_byte = '0'; l_byte <= '9'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (char const l_mark : {'!', '$', '&', '\'', '(', ')', '+', ',', '-', '.', '/', '=', '_'}) {
            m_keep[static_cast<unsigned char>(l_mark)] = true;
        }
    }
};

constexpr coding_tables k_coding;
using internal::k_hex_digits_lower;

// One pass byte by byte: in encoded text '%' is frequent, and a search call per '%' costs more
// than the plain loop.
void append_decoded(std::string &a_out, char const *a_data, size_type a_size)
{
    if (a_size <= 2) {
        a_out.append(a_data, a_size);
        return;
    }
    size_type const l_start = a_out.size();
    a_out.resize(l_start + a_size);
    char *const l_begin = &a_out[0] + l_start;
    char *l_out = l_begin;
    char const *l_read = a_data;
    char const *const l_last = a_data + a_size - 2; // a '%' from here on has no two bytes behind it
    char const *const l_end = a_data + a_size;
    while (l_read < l_last) {
        char const l_byte = *l_read;
        if (l_byte != '%') {
            *l_out++ = l_byte;
            ++l_read;
            continue;
        }
        unsigned int const l_value = 16u * k_hex_value[static_cast<unsigned char>(l_read[1])] +
                                     k_hex_value[static_cast<unsigned char>(l_read[2])];
        if (l_value != 0) {
            *l_out++ = static_cast<char>(l_value);
            l_read += 3;
        } else {
            *l_out++ = '%';
            ++l_read;
        }
    }
    while (l_read < l_end) {
        *l_out++ = *l_read++;
    }
    a_out.resize(l_start + static_cast<size_type>(l_out - l_begin));
}

std::string stretch(std::string const &a_url, size_type a_from, size_type a_to, bool a_decode)
{
    if (a_to <= a_from) {
        return std::string();
    }
    if (!a_decode) {
        return a_url.substr(a_from, a_to - a_from);
    }
    std::string l_result;
    append_decoded(l_result, a_url.data() + a_from, a_to - a_from);
    return l_result;
}

std::string encoded(std::string const &a_value, bool a_encode, bool a_slash)
{
    return a_encode ? url_encode(a_value, a_slash) : a_value;
}

// --- Key-value text -----------------------------------------------------------------------------

// Splits like strutil::kvmap_with_kvstr and hands each pair, in the text's order, to a_visit.
template <typename t_visit>
void for_each_pair(char const *a_data, size_type a_size, char a_pair, char a_kv, t_visit const &a_visit)
{
    if (a_size == 0) {
        return;
    }
    size_type l_position = 0;
    for (;;) {
        if (a_kv == '\0') {
            a_visit(a_data + l_position, a_size - l_position, a_data, 0);
            return;
        }
        size_type const l_m = find_either(a_data, l_position, a_size, a_kv, a_pair);
        size_type l_end = a_size;
        if (l_m < a_size) {
            l_end = find_byte(a_data, a_pair, l_m, a_size);
            size_type const l_value = l_m + 1;
            a_visit(a_data + l_position, l_m - l_position, a_data + l_value, l_end > l_value ? l_end - l_value : 0);
        } else {
            a_visit(a_data + l_position, a_size - l_position, a_data, 0);
        }
        if (l_end >= a_size) {
            return;
        }
        l_position = l_end + 1;
    }
}

// Undecoded, this is strutil::kvmap_with_kvstr. Decoded, each key and value is decoded after the
// split, and pairs go into the map in the text's order, so that of keys that decode alike the last
// one in the text wins.
void add_pairs(kvmap &a_out, std::string const &a_component, bool a_decode, char a_pair, char a_kv)
{
    if (!a_decode) {
        strutil::kvmap_with_kvstr(a_out, a_component, a_pair, a_kv);
        return;
    }
    for_each_pair(a_component.data(), a_component.size(), a_pair, a_kv,
                  [&](char const *a_key, size_type a_key_size, char const *a_value, size_type a_value_size) {
                      std::string l_key;
                      std::string l_value;
                      append_decoded(l_key, a_key, a_key_size);
                      append_decoded(l_value, a_value, a_value_size);
                      a_out[std::move(l_key)] = std::move(l_value);
                  });
}

// The text of a map as strutil::kvstr_with_kvmap writes it, each key and value encoded on demand.
std::string kvtext(kvmap const &a_values, bool a_encode, char a_pair, char a_kv)
{
    if (!a_encode) {
        return strutil::kvstr_with_kvmap(a_values, a_pair, a_kv);
    }
    // Encoding keeps the map's key order: the keys are encoded one by one as they are written.
    std::string l_text;
    for (auto const &l_entry : a_values) {
        if (!l_entry.first.empty()) {
            if (!l_text.empty()) {
                l_text.push_back(a_pair);
            }
            l_text.append(url_encode(l_entry.first, true));
        }
        if (!l_entry.second.empty()) {
            l_text.push_back(a_kv);
            l_text.append(url_encode(l_entry.second, true));
        }
    }
    return l_text;
}

// --- Editing steps ------------------------------------------------------------------------------

// Before a part is written at the end of the authority: whatever follows there without a delimiter
// of its own becomes a path behind the authority. Without the '/' that text would run on the
// new part and be read as part of it ("x:dir" given a host "h" would be "x://hdir").
void open_authority(std::string &a_url, size_type a_position, size_type a_b)
{
    if (a_position != a_b || a_position >= a_url.size()) {
        return;
    }
    char const l_byte = a_url[a_position];
    if (l_byte != '/' && l_byte != ';' && l_byte != '?' && l_byte != '#') {
        a_url.insert(a_position, 1, '/');
    }
}

// After a part was written at the start of the authority: the authority gets its "//", without
// which the part would be read as the path.
void mark_authority(std::string &a_url, size_type a_position)
{
    if (a_position == 0 || a_url[a_position - 1] != '/') {
        a_url.insert(a_position, "//");
    }
}

// Removes the "//" in front of an authority that starts at a_a, where there is one: a removal that
// empties the authority takes its mark along, so that "scheme://host" without its host is
// "scheme:", not an empty authority.
void erase_mark(std::string &a_url, size_type a_a)
{
    if (a_a >= 2 && a_url[a_a - 1] == '/' && a_url[a_a - 2] == '/') {
        a_url.erase(a_a - 2, 2);
    }
}

// params, query and fragment: the stretch [a_from, a_to) and whether its delimiter stands in front.
// A new part gets its delimiter (';', '?' or '#') unless one stands there already, as it does
// where the part was present but empty ("x:/p?").
std::string &set_delimited(std::string &a_url, size_type a_from, size_type a_to, bool a_present, char a_delimiter,
                           std::string const &a_value, bool a_encode)
{
    if (a_value.empty()) {
        // An absent part has nothing to lose: the byte in front of where it would go belongs to a
        // neighbour even when it looks like this part's delimiter.
        if (a_present) {
            a_url.erase(a_from - 1, a_to - a_from + 1);
        }
        return a_url;
    }
    bool const l_was_empty = a_from == a_to;
    a_url.replace(a_from, a_to - a_from, encoded(a_value, a_encode, true));
    if (l_was_empty && (a_from == 0 || a_url[a_from - 1] != a_delimiter)) {
        a_url.insert(a_from, 1, a_delimiter);
    }
    return a_url;
}

} // namespace

url_scan::front url_scan::front_of(char const *a_data, std::string::size_type a_size)
{
    url_layout l_layout;
    scan_scheme(a_data, a_size, l_layout);
    return front{l_layout.m_e, l_layout.m_s};
}

// --- Reading ------------------------------------------------------------------------------------

std::string uri_scheme(std::string const &a_url)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    return l_layout.m_has_scheme ? a_url.substr(0, l_layout.m_d) : std::string();
}

std::string url_scheme(std::string const &a_url)
{
    return uri_scheme(a_url);
}

std::string uri_scheme_specific(std::string const &a_url)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    return a_url.substr(l_layout.m_s);
}

std::string url_authority(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    return stretch(a_url, l_layout.m_a, l_layout.m_b, a_decode);
}

std::string url_domain(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    return l_info.m_has_domain ? stretch(a_url, l_layout.m_a, l_info.m_c, a_decode) : std::string();
}

std::string url_user(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    return stretch(a_url, l_info.m_s, l_info.m_colon, a_decode);
}

std::string url_password(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    return l_info.m_colon < l_info.m_u ? stretch(a_url, l_info.m_colon + 1, l_info.m_u, a_decode) : std::string();
}

// Narrows the host's stretch past its brackets before copying, so the text is copied once.
std::string url_host(std::string const &a_url)
{
    char const *const l_data = a_url.data();
    url_layout const l_layout = scan(l_data, a_url.size());
    host_layout const l_host = scan_host(l_data, l_layout, scan_userinfo(l_data, l_layout));
    // The brackets of an IPv6 address go, unless there is nothing but brackets.
    size_type l_from = l_host.m_h;
    size_type l_to = l_host.m_t;
    while (l_from < l_to && (l_data[l_from] == '[' || l_data[l_from] == ']')) {
        ++l_from;
    }
    if (l_from == l_to) {
        l_from = l_host.m_h;
    } else {
        while (l_data[l_to - 1] == '[' || l_data[l_to - 1] == ']') {
            --l_to;
        }
    }
    return stretch(a_url, l_from, l_to, false);
}

std::string url_service(std::string const &a_url, bool a_decode)
{
    char const *const l_data = a_url.data();
    url_layout const l_layout = scan(l_data, a_url.size());
    host_layout const l_host = scan_host(l_data, l_layout, scan_userinfo(l_data, l_layout));
    return l_host.m_t < l_layout.m_b ? stretch(a_url, l_host.m_t + 1, l_layout.m_b, a_decode) : std::string();
}

std::string url_path(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_end = find_any<';', '?'>(a_url.data(), l_layout.m_b, l_layout.m_e);
    return stretch(a_url, l_layout.m_b, l_end, a_decode);
}

std::string url_params(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    tail_layout const l_tail = scan_tail(a_url.data(), l_layout);
    return l_tail.m_semicolon < l_tail.m_q ? stretch(a_url, l_tail.m_semicolon + 1, l_tail.m_q, a_decode)
                                           : std::string();
}

std::string url_query(std::string const &a_url, bool a_decode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_q = find_byte(a_url.data(), '?', l_layout.m_b, l_layout.m_e);
    return l_q < l_layout.m_e ? stretch(a_url, l_q + 1, l_layout.m_e, a_decode) : std::string();
}

std::string url_fragment(std::string const &a_url, bool a_decode)
{
    size_type const l_hash = find_byte(a_url.data(), '#', 0, a_url.size());
    return l_hash < a_url.size() ? stretch(a_url, l_hash + 1, a_url.size(), a_decode) : std::string();
}

void url_query_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    add_pairs(a_out, url_query(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

void url_params_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    add_pairs(a_out, url_params(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

void url_fragment_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator,
                        char a_kv_separator)
{
    add_pairs(a_out, url_fragment(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

kvmap url_query_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_query_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

kvmap url_params_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_params_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

kvmap url_fragment_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_fragment_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

// --- Coding -------------------------------------------------------------------------------------

// Counts the bytes to encode first, so the result is allocated once at its final length (and a
// text with nothing to encode is returned as it is).
std::string url_encode(std::string const &a_text, bool a_slash)
{
    auto const *const l_data = reinterpret_cast<unsigned char const *>(a_text.data());
    size_type const l_size = a_text.size();
    size_type l_coded = 0;
    for (size_type l_iter = 0; l_iter < l_size; ++l_iter) {
        unsigned char const l_byte = l_data[l_iter];
        l_coded += !k_coding.m_keep[l_byte] || (a_slash && l_byte == '/');
    }
    if (l_coded == 0) {
        return a_text;
    }
    std::string l_result(l_size + 2 * l_coded, '\0');
    char *l_out = &l_result[0];
    for (size_type l_iter = 0; l_iter < l_size; ++l_iter) {
        unsigned char const l_byte = l_data[l_iter];
        if (k_coding.m_keep[l_byte] && !(a_slash && l_byte == '/')) {
            *l_out++ = static_cast<char>(l_byte);
        } else {
            l_out[0] = '%';
            l_out[1] = k_hex_digits_lower[l_byte >> 4];
            l_out[2] = k_hex_digits_lower[l_byte & 0x0f];
            l_out += 3;
        }
    }
    return l_result;
}

std::string url_decode(std::string const &a_text)
{
    std::string l_result;
    append_decoded(l_result, a_text.data(), a_text.size());
    return l_result;
}

std::string url_protected_output(std::string const &a_url)
{
    if (url_password(a_url, true).empty()) {
        return a_url;
    }
    return url_new_password(a_url, "********", true);
}

std::pair<std::string, std::string> split_scheme(std::string const &a_text, char a_separator)
{
    size_type const l_at = find_byte(a_text.data(), a_separator, 0, a_text.size());
    return std::make_pair(a_text.substr(0, l_at), a_text.substr(l_at));
}

// --- Editing the authority ----------------------------------------------------------------------
// Each setter writes its part and the delimiters that make the scan find it again, and a removal
// takes only the delimiters that no remaining part needs. Values are encoded with '/' as well: a
// '/' written into the authority would end it.

// The whole authority goes or is replaced; its "//" goes with it or comes with a new one.
std::string &url_set_authority(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_a = l_layout.m_a;
    size_type const l_b = l_layout.m_b;
    if (a_value.empty()) {
        a_url.erase(l_a, l_b - l_a);
        erase_mark(a_url, l_a);
        return a_url;
    }
    if (l_a == l_b) {
        open_authority(a_url, l_a, l_b);
    }
    a_url.replace(l_a, l_b - l_a, encoded(a_value, a_encode, true));
    if (l_a == l_b) {
        mark_authority(a_url, l_a);
    }
    return a_url;
}

std::string &url_set_domain(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    size_type const l_a = l_layout.m_a;
    if (a_value.empty()) {
        // The domain and its ';'; the '@' stays for the user information that may follow.
        if (l_a != 0 && l_info.m_has_domain) {
            size_type const l_end = l_info.m_c + 1;
            a_url.erase(l_a, l_end - l_a);
            if (l_end == l_layout.m_b) {
                erase_mark(a_url, l_a);
            }
        }
        return a_url;
    }
    size_type l_end = l_a;
    if (l_info.m_has_domain) {
        l_end = l_info.m_c;
    } else if (l_a == l_layout.m_b || a_url[l_a] != ';') {
        // A domain always comes with its ';' and the '@' that ends the user information, even
        // without a user: the ';' divides domain from user only in front of an '@', and without one
        // it would be read as host text. Both go in at l_a, the '@' first, so that the text reads
        // ";@".
        if (l_a == l_layout.m_b) {
            open_authority(a_url, l_a, l_layout.m_b);
        }
        if (!l_info.m_has_at) {
            a_url.insert(l_a, 1, '@');
        }
        a_url.insert(l_a, 1, ';');
    }
    a_url.replace(l_a, l_end - l_a, encoded(a_value, a_encode, true));
    mark_authority(a_url, l_a);
    return a_url;
}

std::string &url_set_user(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    size_type const l_s = l_info.m_s;
    size_type const l_end = l_info.m_colon;
    if (a_value.empty()) {
        if (l_s == 0) {
            return a_url;
        }
        // Behind a domain the ';' and the '@' stay: the domain needs both.
        if (l_info.m_has_domain) {
            a_url.erase(l_s, l_end - l_s);
            return a_url;
        }
        // Without one the user's '@' goes with it, unless a password stands between them and keeps
        // the '@' for itself.
        size_type l_cut = l_end;
        if (l_cut < a_url.size() && a_url[l_cut] == '@') {
            ++l_cut;
        }
        a_url.erase(l_s, l_cut - l_s);
        if (l_cut == l_layout.m_b) {
            erase_mark(a_url, l_s);
        }
        return a_url;
    }
    // A new user needs the '@' that tells it from the host, unless one follows already: directly,
    // behind an empty user ("x://d;@h"), or behind a password (":pw@").
    if (l_s == l_end) {
        if (l_s == l_layout.m_b) {
            open_authority(a_url, l_s, l_layout.m_b);
            a_url.insert(l_s, 1, '@');
        } else if (a_url[l_s] != ':' && a_url[l_s] != '@') {
            a_url.insert(l_s, 1, '@');
        }
    }
    a_url.replace(l_s, l_end - l_s, encoded(a_value, a_encode, true));
    if (l_s == l_layout.m_a) {
        mark_authority(a_url, l_s);
    }
    return a_url;
}

std::string &url_set_password(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    userinfo_layout const l_info = scan_userinfo(a_url.data(), l_layout);
    size_type const l_u = l_info.m_u;
    bool const l_has_password = l_info.m_colon < l_u;
    size_type const l_p = l_has_password ? l_info.m_colon + 1 : l_u;
    if (a_value.empty()) {
        if (l_p == 0) {
            return a_url;
        }
        // The password and its ':'; the '@' stays, as the user may still need it.
        if (l_has_password) {
            a_url.erase(l_info.m_colon, l_u - l_info.m_colon);
        }
        if (l_layout.m_a == l_layout.m_b) {
            erase_mark(a_url, l_layout.m_a);
        }
        return a_url;
    }
    // A password needs the '@' behind it, or "user:password" would read as host and service, and
    // the ':' in front of it, which divides it from the user (even an empty one: "x://:pw@host").
    if (l_p == l_u) {
        if (l_p == l_layout.m_b) {
            open_authority(a_url, l_p, l_layout.m_b);
            a_url.insert(l_p, 1, '@');
        } else if (a_url[l_p] != '@') {
            a_url.insert(l_p, 1, '@');
        }
    }
    a_url.replace(l_p, l_u - l_p, encoded(a_value, a_encode, true));
    if (l_p == l_layout.m_a) {
        a_url.insert(l_p, 1, ':');
        mark_authority(a_url, l_p);
    } else if (a_url[l_p - 1] != ':') {
        a_url.insert(l_p, 1, ':');
    }
    return a_url;
}

// The host is never encoded and gets no brackets: the caller writes an IPv6 address in its
// brackets, without which its first ':' would start the service.
std::string &url_set_host(std::string &a_url, std::string const &a_value)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    host_layout const l_host = scan_host(a_url.data(), l_layout, scan_userinfo(a_url.data(), l_layout));
    size_type const l_h = l_host.m_h;
    size_type const l_end = l_host.m_t;
    if (a_value.empty()) {
        if (l_h == 0) {
            return a_url;
        }
        // A host that was the whole authority takes the "//" along; user information or a service
        // keeps it.
        a_url.erase(l_h, l_end - l_h);
        if (l_end == l_layout.m_b && a_url[l_h - 1] == '/') {
            erase_mark(a_url, l_h);
        }
        return a_url;
    }
    if (l_h == l_layout.m_b) {
        open_authority(a_url, l_h, l_layout.m_b);
    }
    a_url.replace(l_h, l_end - l_h, a_value);
    // Behind user information the host stands behind its '@'.
    if (l_h == l_layout.m_a) {
        mark_authority(a_url, l_h);
    } else if (a_url[l_h - 1] != '@') {
        a_url.insert(l_h, 1, '@');
    }
    return a_url;
}

// The service stands behind the host's ':', which comes and goes with it.
std::string &url_set_service(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    host_layout const l_host = scan_host(a_url.data(), l_layout, scan_userinfo(a_url.data(), l_layout));
    size_type const l_b = l_layout.m_b;
    bool const l_has_service = l_host.m_t < l_b;
    size_type const l_v = l_has_service ? l_host.m_t + 1 : l_b;
    if (a_value.empty()) {
        if (l_v == 0) {
            return a_url;
        }
        size_type l_new_b = l_b;
        if (l_has_service) {
            a_url.erase(l_host.m_t, l_b - l_host.m_t);
            l_new_b = l_host.m_t;
        }
        if (l_new_b == l_layout.m_a) {
            erase_mark(a_url, l_layout.m_a);
        }
        return a_url;
    }
    if (l_v == l_b) {
        open_authority(a_url, l_v, l_b);
    }
    a_url.replace(l_v, l_b - l_v, encoded(a_value, a_encode, true));
    if (l_v == l_layout.m_a) {
        a_url.insert(l_v, 1, ':');
        mark_authority(a_url, l_v);
    } else if (a_url[l_v - 1] != ':') {
        a_url.insert(l_v, 1, ':');
    }
    return a_url;
}

// --- Editing behind the authority ---------------------------------------------------------------

std::string &url_set_path(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_p = l_layout.m_b;
    size_type const l_end = find_any<';', '?'>(a_url.data(), l_p, l_layout.m_e);
    std::string const l_value = encoded(a_value, a_encode, false);
    a_url.replace(l_p, l_end - l_p, l_value);
    // Behind an authority a path is rooted, or its first segment would read as part of the
    // authority; behind a bare scheme, or with nothing in front, it may stay relative ("x:n").
    // Encoding keeps the '/' separators.
    if (!l_value.empty() && l_p != 0 && a_url[l_p - 1] != ':' && l_value[0] != '/') {
        a_url.insert(l_p, 1, '/');
    }
    return a_url;
}

// The params go between the path and the query. Right behind an authority without an '@' they
// read back as host text, since there a ';' is no delimiter; the scan of the authority says why.
std::string &url_set_params(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    tail_layout const l_tail = scan_tail(a_url.data(), l_layout);
    bool const l_present = l_tail.m_semicolon < l_tail.m_q;
    return set_delimited(a_url, l_present ? l_tail.m_semicolon + 1 : l_tail.m_q, l_tail.m_q, l_present, ';', a_value,
                         a_encode);
}

// The query runs from the first '?' behind the path's start up to the fragment; a new one goes in
// right in front of the fragment.
std::string &url_set_query(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_q = find_byte(a_url.data(), '?', l_layout.m_b, l_layout.m_e);
    bool const l_present = l_q < l_layout.m_e;
    return set_delimited(a_url, l_present ? l_q + 1 : l_layout.m_e, l_layout.m_e, l_present, '?', a_value, a_encode);
}

// The fragment is everything behind the text's first '#', whatever stands in front of it, so the
// search needs no scan of the rest.
std::string &url_set_fragment(std::string &a_url, std::string const &a_value, bool a_encode)
{
    size_type const l_hash = find_byte(a_url.data(), '#', 0, a_url.size());
    bool const l_present = l_hash < a_url.size();
    return set_delimited(a_url, l_present ? l_hash + 1 : a_url.size(), a_url.size(), l_present, '#', a_value, a_encode);
}

std::string &url_set_params(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                            char a_kv_separator)
{
    return url_set_params(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

std::string &url_set_query(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                           char a_kv_separator)
{
    return url_set_query(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

std::string &url_set_fragment(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                              char a_kv_separator)
{
    return url_set_fragment(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

// --- Editing the scheme -------------------------------------------------------------------------

// The scheme comes with its ':' and goes with it. A text without a scheme takes one in front of
// whatever it is ("dir" becomes "s:dir"); a text that opens with ':' has an empty scheme, whose ':'
// serves.
std::string &uri_set_scheme(std::string &a_url, std::string const &a_value)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    if (a_value.empty()) {
        if (l_layout.m_has_scheme) {
            a_url.erase(0, l_layout.m_d + 1);
        }
        return a_url;
    }
    size_type l_end = 0;
    if (l_layout.m_has_scheme && l_layout.m_d != 0) {
        l_end = l_layout.m_d;
    } else if (a_url.empty() || a_url[0] != ':') {
        a_url.insert(0, 1, ':');
    }
    a_url.replace(0, l_end, a_value);
    return a_url;
}

std::string &url_set_scheme(std::string &a_url, std::string const &a_value)
{
    return uri_set_scheme(a_url, a_value);
}

std::string &uri_set_scheme_specific(std::string &a_url, std::string const &a_value)
{
    url_layout const l_layout = scan(a_url.data(), a_url.size());
    size_type const l_keep = l_layout.m_has_scheme && l_layout.m_d != 0 ? l_layout.m_s : 0;
    a_url.replace(l_keep, std::string::npos, a_value);
    return a_url;
}

void url_correct_domain(std::string &a_url)
{
    std::string const l_user = url_user(a_url, true);
    if (l_user.empty()) {
        return;
    }
    size_type l_mark = l_user.find('/');
    if (l_mark == std::string::npos) {
        l_mark = l_user.find('\\');
        if (l_mark == std::string::npos) {
            return;
        }
    }
    if (url_domain(a_url, true).empty()) {
        url_set_domain(a_url, l_user.substr(0, l_mark), false);
    }
    url_set_user(a_url, l_user.substr(l_mark + 1), true);
}

// --- Copying twins ------------------------------------------------------------------------------

std::string url_new_authority(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_authority(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_domain(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_domain(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_user(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_user(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_password(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_password(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_host(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    url_set_host(l_copy, a_value);
    return l_copy;
}

std::string url_new_service(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_service(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_path(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_path(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_params(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_params(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_query(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_query(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_fragment(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_fragment(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_params(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                           char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_params(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string url_new_query(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                          char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_query(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string url_new_fragment(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                             char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_fragment(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string uri_new_scheme(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme(l_copy, a_value);
    return l_copy;
}

std::string url_new_scheme(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme(l_copy, a_value);
    return l_copy;
}

std::string uri_new_scheme_specific(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme_specific(l_copy, a_value);
    return l_copy;
}

// --- The path -----------------------------------------------------------------------------------

namespace {

// Runs a path function over the decoded path and writes the result back encoded.
template <typename t_edit> std::string &edit_path(std::string &a_url, t_edit const &a_edit)
{
    std::string l_path = url_path(a_url, true);
    a_edit(l_path);
    return url_set_path(a_url, l_path, true);
}

template <typename t_edit> std::string edited_path(std::string const &a_url, t_edit const &a_edit)
{
    std::string l_copy(a_url);
    edit_path(l_copy, a_edit);
    return l_copy;
}

} // namespace

std::string url_path_front(std::string const &a_url)
{
    return path_front(url_path(a_url, true), '/');
}

std::string url_path_back(std::string const &a_url)
{
    return path_back(url_path(a_url, true), '/');
}

std::string url_path_file(std::string const &a_url)
{
    return path_file(url_path(a_url, true), '/');
}

std::string url_path_name(std::string const &a_url)
{
    return path_name(url_path(a_url, true), '/');
}

std::string url_path_directory(std::string const &a_url, unsigned int a_levels)
{
    return path_directory(url_path(a_url, true), '/', a_levels);
}

std::string url_path_suffix(std::string const &a_url, unsigned int a_count)
{
    return path_suffix(url_path(a_url, true), '/', a_count);
}

std::string &url_path_append(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_append(a_path, a_other, '/'); });
}

std::string url_path_appended(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_append(a_path, a_other, '/'); });
}

std::string &url_path_push_back(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_push_back(a_path, a_other, '/'); });
}

std::string url_path_pushed_back(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_push_back(a_path, a_other, '/'); });
}

std::string &url_path_prepend(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_prepend(a_path, a_other, '/'); });
}

std::string url_path_prepended(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_prepend(a_path, a_other, '/'); });
}

std::string &url_path_push_front(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_push_front(a_path, a_other, '/'); });
}

std::string url_path_pushed_front(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_push_front(a_path, a_other, '/'); });
}

std::string &url_path_pop_back(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_pop_back(a_path, '/'); });
}

std::string url_path_popped_back(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_pop_back(a_path, '/'); });
}

std::string &url_path_pop_front(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_pop_front(a_path, '/'); });
}

std::string url_path_popped_front(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_pop_front(a_path, '/'); });
}

std::string &url_path_set_directory(std::string &a_url, std::string const &a_directory, unsigned int a_levels)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_directory(a_path, a_directory, '/', a_levels); });
}

std::string url_path_new_directory(std::string const &a_url, std::string const &a_directory, unsigned int a_levels)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_directory(a_path, a_directory, '/', a_levels); });
}

std::string &url_path_set_file(std::string &a_url, std::string const &a_file)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_file(a_path, a_file, '/'); });
}

std::string url_path_new_file(std::string const &a_url, std::string const &a_file)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_file(a_path, a_file, '/'); });
}

std::string &url_path_set_name(std::string &a_url, std::string const &a_name)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_name(a_path, a_name, '/'); });
}

std::string url_path_new_name(std::string const &a_url, std::string const &a_name)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_name(a_path, a_name, '/'); });
}

std::string &url_path_set_suffix(std::string &a_url, std::string const &a_suffix, unsigned int a_count)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_suffix(a_path, a_suffix, '/', a_count); });
}

std::string url_path_new_suffix(std::string const &a_url, std::string const &a_suffix, unsigned int a_count)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_suffix(a_path, a_suffix, '/', a_count); });
}

std::string &url_path_normalize(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_normalize(a_path, '/'); });
}

std::string url_path_normalized(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_normalize(a_path, '/'); });
}

std::string &url_path_root(std::string &a_url, std::string const &a_root)
{
    return edit_path(a_url, [&](std::string &a_path) { path_root(a_path, a_root); });
}

std::string url_path_rooted(std::string const &a_url, std::string const &a_root)
{
    return edited_path(a_url, [&](std::string &a_path) { path_root(a_path, a_root); });
}

std::string &url_path_unroot(std::string &a_url, std::string const &a_root)
{
    return edit_path(a_url, [&](std::string &a_path) { path_unroot(a_path, a_root); });
}

std::string url_path_unrooted(std::string const &a_url, std::string const &a_root)
{
    return edited_path(a_url, [&](std::string &a_path) { path_unroot(a_path, a_root); });
}

} // namespace ordwel
