// SPDX-License-Identifier: MIT
// The identifier functions on arbitrary text: no crash, no sanitizer report; every field read
// undecoded is a stretch of the text; a field set to plain letters and digits reads back.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <ordwel/uri_ids.h>

#include "fuzz_check.h"

namespace {

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    using namespace ordwel;
    std::string const l_input(reinterpret_cast<char const *>(a_data), a_size);
    std::string::size_type const l_newline = l_input.find('\n');
    std::string const l_id = l_input.substr(0, l_newline);
    std::string const l_value = l_newline == std::string::npos ? std::string() : l_input.substr(l_newline + 1);

    for (std::string const &l_field :
         {plid_category(l_id), plid_type(l_id), plid_key(l_id, false), plid_version(l_id)}) {
        check(l_id.find(l_field) != std::string::npos);
    }
    check(plid_key(l_id, true).size() <= plid_key(l_id, false).size());

    // Letters and digits divide nothing and are never coded.
    std::string l_plain;
    for (char const l_byte : l_value) {
        if (std::isalnum(static_cast<unsigned char>(l_byte)) != 0) {
            l_plain.push_back(l_byte);
        }
    }
    check(plid_category(plid_new_category(l_id, l_plain)) == l_plain);
    check(plid_type(plid_new_type(l_id, l_plain)) == l_plain);
    check(plid_key(plid_new_key(l_id, l_plain, false), false) == l_plain);
    check(plid_version(plid_new_version(l_id, l_plain)) == l_plain);
    // An encoded key holds any text but NUL.
    if (l_value.find('\0') == std::string::npos) {
        check(plid_key(plid_new_key(l_id, l_value, true), true) == l_value);
    }
    std::string l_edited = l_id;
    plid_set_version(plid_set_key(plid_set_type(plid_set_category(l_edited, l_value), l_value), l_value, true),
                     l_value);

    (void)egid_instance(egid_new_instance(egid_new_entity(l_id, l_value), l_value));
    (void)wtid_plid(wtid_new_plid(l_id, l_value));
    (void)port_type(port_new_type(port_new_param(port_new_id(l_id, l_value), l_value), l_value));
    check(graph_id(graph_new_id(l_id, l_value)).size() <= l_id.size() + l_value.size());
    (void)workflow_id(l_id);
    return 0;
}
