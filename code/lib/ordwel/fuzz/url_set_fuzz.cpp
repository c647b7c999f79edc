// SPDX-License-Identifier: MIT
// The URL setters on arbitrary text. The first byte picks the operation, the second whether the
// value is encoded (its low bit) and a path operation (the other bits); the rest is the URL and, behind the first
// newline, the value. No crash, no sanitizer report; the copying twin gives what the in-place form makes; a removal
// never makes the text longer; and the parts that a setter doesn't touch stay readable.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

#include <ordwel/url.h>
#include <ordwel/url_parts.h>

#include "fuzz_check.h"

namespace {

using kvmap = std::map<std::string, std::string>;

// Operations 0 to 9 edit the parts from the authority to the fragment through the parts table
// (table_part serves these only); 10 to 14 are the scheme's uri form, the scheme-specific part and
// the map forms, 15 corrects the domain.
ordwel::url_part const &table_part(unsigned a_which)
{
    return ordwel::k_url_parts[1 + a_which % 16];
}

std::string &set_part(std::string &a_url, unsigned a_which, std::string const &a_value, bool a_encode,
                      kvmap const &a_map)
{
    using namespace ordwel;
    switch (a_which % 16) {
    case 10:
        return uri_set_scheme(a_url, a_value);
    case 11:
        return uri_set_scheme_specific(a_url, a_value);
    case 12:
        return url_set_params(a_url, a_map, a_encode, ';', '=');
    case 13:
        return url_set_query(a_url, a_map, a_encode, '&', '=');
    case 14:
        return url_set_fragment(a_url, a_map, a_encode, '&', '=');
    case 15:
        url_correct_domain(a_url);
        return a_url;
    default:
        return table_part(a_which).m_set(a_url, a_value, a_encode);
    }
}

std::string new_part(std::string const &a_url, unsigned a_which, std::string const &a_value, bool a_encode,
                     kvmap const &a_map)
{
    using namespace ordwel;
    switch (a_which % 16) {
    case 10:
        return uri_new_scheme(a_url, a_value);
    case 11:
        return uri_new_scheme_specific(a_url, a_value);
    case 12:
        return url_new_params(a_url, a_map, a_encode, ';', '=');
    case 13:
        return url_new_query(a_url, a_map, a_encode, '&', '=');
    case 14:
        return url_new_fragment(a_url, a_map, a_encode, '&', '=');
    case 15: {
        std::string l_copy(a_url);
        url_correct_domain(l_copy);
        return l_copy;
    }
    default:
        return table_part(a_which).m_new(a_url, a_value, a_encode);
    }
}

// The path operations: the in-place form's result, checked against the copying form.
void check_path_operation(std::string const &a_url, unsigned a_which, std::string const &a_value)
{
    using namespace ordwel;
    std::string l_url = a_url;
    std::string l_copy;
    unsigned const l_number = static_cast<unsigned char>(a_value.empty() ? 0 : a_value[0]) % 4;
    switch (a_which % 13) {
    case 0:
        l_copy = url_path_appended(a_url, a_value);
        url_path_append(l_url, a_value);
        break;
    case 1:
        l_copy = url_path_pushed_front(a_url, a_value);
        url_path_push_front(l_url, a_value);
        break;
    case 2:
        l_copy = url_path_popped_back(a_url);
        url_path_pop_back(l_url);
        break;
    case 3:
        l_copy = url_path_popped_front(a_url);
        url_path_pop_front(l_url);
        break;
    case 4:
        l_copy = url_path_new_directory(a_url, a_value, l_number);
        url_path_set_directory(l_url, a_value, l_number);
        break;
    case 5:
        l_copy = url_path_new_file(a_url, a_value);
        url_path_set_file(l_url, a_value);
        break;
    case 6:
        l_copy = url_path_new_name(a_url, a_value);
        url_path_set_name(l_url, a_value);
        break;
    case 7:
        l_copy = url_path_new_suffix(a_url, a_value, l_number);
        url_path_set_suffix(l_url, a_value, l_number);
        break;
    case 8:
        l_copy = url_path_normalized(a_url);
        url_path_normalize(l_url);
        break;
    case 9:
        l_copy = url_path_rooted(a_url, a_value);
        url_path_root(l_url, a_value);
        break;
    case 10:
        l_copy = url_path_unrooted(a_url, a_value);
        url_path_unroot(l_url, a_value);
        break;
    case 11:
        l_copy = url_path_prepended(a_url, a_value);
        url_path_prepend(l_url, a_value);
        break;
    default:
        l_copy = l_url;
        (void)url_path_front(a_url);
        (void)url_path_back(a_url);
        (void)url_path_name(a_url);
        (void)url_path_directory(a_url, l_number);
        (void)url_path_suffix(a_url, l_number);
        break;
    }
    check(l_copy == l_url);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    using namespace ordwel;
    if (a_size < 2) {
        return 0;
    }
    unsigned const l_which = a_data[0];
    bool const l_encode = (a_data[1] & 1) != 0;
    std::string const l_rest(reinterpret_cast<char const *>(a_data + 2), a_size - 2);
    std::string::size_type const l_newline = l_rest.find('\n');
    std::string const l_url = l_rest.substr(0, l_newline);
    std::string const l_value = l_newline == std::string::npos ? std::string() : l_rest.substr(l_newline + 1);
    kvmap const l_map = url_query_kvmap("?" + l_value, false, '&', '=');

    std::string l_edited = l_url;
    check(&set_part(l_edited, l_which, l_value, l_encode, l_map) == &l_edited);
    check(new_part(l_url, l_which, l_value, l_encode, l_map) == l_edited);
    if (l_value.empty() && l_which % 16 < 12) {
        check(l_edited.size() <= l_url.size());
    }
    // The fragment is the one part that no setter but its own and the scheme-specific one moves,
    // unless the value brings a '#' of its own (host and scheme are never encoded). Correcting the
    // domain writes decoded user text unencoded, so it may bring one as well.
    unsigned const l_op = l_which % 16;
    bool const l_raw = !l_encode || l_op == 10 || (l_op < 10 && !table_part(l_op).m_coded);
    bool const l_brings_hash = l_raw && l_value.find('#') != std::string::npos;
    if (l_op != 9 && l_op != 11 && l_op != 14 && l_op != 15 && !l_brings_hash) {
        check(url_fragment(l_edited, false) == url_fragment(l_url, false));
    }
    (void)url_protected_output(l_edited);
    check_path_operation(l_url, a_data[1] >> 1, l_value);
    return 0;
}
