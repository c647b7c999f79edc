// SPDX-License-Identifier: MIT
#include <ordwel/uri_ids.h>

#include <cstring>

#include <ordwel/url.h>

#include "addr/url_scan.h"

namespace ordwel {

namespace {

using size_type = std::string::size_type;

// --- plid fields --------------------------------------------------------------------------------

constexpr int k_plid_fields = 4;

// The '/' that divide the fields, counted from behind the scheme up to the fragment. A '#' ends
// the fields: a '/' behind it divides nothing, and missing '/' go in front of it.
struct plid_layout {
    size_type m_s = 0;
    size_type m_e = 0;
    size_type m_slash[k_plid_fields] = {};
    int m_slashes = 0;

    bool has(int a_field) const { return a_field <= m_slashes; }
    size_type begin(int a_field) const { return a_field == 0 ? m_s : m_slash[a_field - 1] + 1; }
    size_type end(int a_field) const { return a_field < m_slashes ? m_slash[a_field] : m_e; }
};

plid_layout scan_plid(std::string const &a_plid)
{
    plid_layout l_layout;
    url_scan::front const l_front = url_scan::front_of(a_plid);
    l_layout.m_s = l_front.m_s;
    l_layout.m_e = l_front.m_e;
    size_type l_from = l_front.m_s;
    while (l_layout.m_slashes < k_plid_fields && l_from < l_front.m_e) {
        void const *const l_found = std::memchr(a_plid.data() + l_from, '/', l_front.m_e - l_from);
        if (l_found == nullptr) {
            break;
        }
        size_type const l_slash = static_cast<size_type>(static_cast<char const *>(l_found) - a_plid.data());
        l_layout.m_slash[l_layout.m_slashes++] = l_slash;
        l_from = l_slash + 1;
    }
    return l_layout;
}

std::string plid_field(std::string const &a_plid, int a_field)
{
    plid_layout const l_layout = scan_plid(a_plid);
    if (!l_layout.has(a_field)) {
        return std::string();
    }
    return a_plid.substr(l_layout.begin(a_field), l_layout.end(a_field) - l_layout.begin(a_field));
}

std::string &plid_set_field(std::string &a_plid, int a_field, std::string const &a_value)
{
    plid_layout const l_layout = scan_plid(a_plid);
    if (l_layout.has(a_field)) {
        size_type const l_begin = l_layout.begin(a_field);
        a_plid.replace(l_begin, l_layout.end(a_field) - l_begin, a_value);
        return a_plid;
    }
    std::string l_added(static_cast<size_type>(a_field - l_layout.m_slashes), '/');
    l_added.append(a_value);
    a_plid.insert(l_layout.m_e, l_added);
    return a_plid;
}

enum e_plid_field { field_category = 0, field_type = 1, field_key = 2, field_version = 3 };

// --- Scheme words -------------------------------------------------------------------------------

// All five words in one object, so that they are built together and in this order.
struct scheme_words {
    std::string const m_port{"port"};
    std::string const m_egid{"egid"};
    std::string const m_wtid{"wtid"};
    std::string const m_workflow{"workflow"};
    std::string const m_graph{"graph"};
};

scheme_words const &words()
{
    static scheme_words const k_words;
    return k_words;
}

// Builds the words when the library loads; a static initialiser elsewhere that reads one earlier
// builds them on the spot instead of reading an unbuilt string.
scheme_words const &k_words_at_load = words();

std::string with_colon(std::string const &a_scheme)
{
    std::string l_result;
    l_result.reserve(a_scheme.size() + 1);
    l_result.append(a_scheme).push_back(':');
    return l_result;
}

} // namespace

// --- plid ---------------------------------------------------------------------------------------

std::string plid_new()
{
    return "plid:";
}

std::string plid_category(std::string const &a_plid)
{
    return plid_field(a_plid, field_category);
}

std::string plid_type(std::string const &a_plid)
{
    return plid_field(a_plid, field_type);
}

std::string plid_key(std::string const &a_plid, bool a_decode)
{
    std::string const l_key = plid_field(a_plid, field_key);
    return a_decode ? url_decode(l_key) : l_key;
}

std::string plid_version(std::string const &a_plid)
{
    return plid_field(a_plid, field_version);
}

std::string &plid_set_category(std::string &a_plid, std::string const &a_value)
{
    return plid_set_field(a_plid, field_category, a_value);
}

std::string &plid_set_type(std::string &a_plid, std::string const &a_value)
{
    return plid_set_field(a_plid, field_type, a_value);
}

std::string &plid_set_key(std::string &a_plid, std::string const &a_value, bool a_encode)
{
    return plid_set_field(a_plid, field_key, a_encode ? url_encode(a_value, true) : a_value);
}

std::string &plid_set_version(std::string &a_plid, std::string const &a_value)
{
    return plid_set_field(a_plid, field_version, a_value);
}

std::string plid_new_category(std::string const &a_plid, std::string const &a_value)
{
    std::string l_copy(a_plid);
    return plid_set_category(l_copy, a_value);
}

std::string plid_new_type(std::string const &a_plid, std::string const &a_value)
{
    std::string l_copy(a_plid);
    return plid_set_type(l_copy, a_value);
}

std::string plid_new_key(std::string const &a_plid, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_plid);
    return plid_set_key(l_copy, a_value, a_encode);
}

std::string plid_new_version(std::string const &a_plid, std::string const &a_value)
{
    std::string l_copy(a_plid);
    return plid_set_version(l_copy, a_value);
}

// --- Scheme words -------------------------------------------------------------------------------

std::string const &egid_scheme()
{
    return words().m_egid;
}

std::string const &wtid_scheme()
{
    return words().m_wtid;
}

std::string const &port_scheme()
{
    return words().m_port;
}

std::string const &graph_scheme()
{
    return words().m_graph;
}

std::string const &workflow_scheme()
{
    return words().m_workflow;
}

std::string egid_new()
{
    return with_colon(egid_scheme());
}

std::string wtid_new()
{
    return with_colon(wtid_scheme());
}

std::string port_new()
{
    return with_colon(port_scheme());
}

std::string graph_new()
{
    return with_colon(graph_scheme());
}

std::string workflow_new()
{
    return with_colon(workflow_scheme());
}

// --- egid, wtid ---------------------------------------------------------------------------------

std::string egid_entity(std::string const &a_egid)
{
    return url_path(a_egid, true);
}

std::string &egid_set_entity(std::string &a_egid, std::string const &a_value)
{
    return url_set_path(a_egid, a_value, true);
}

std::string egid_new_entity(std::string const &a_egid, std::string const &a_value)
{
    return url_new_path(a_egid, a_value, true);
}

std::string egid_instance(std::string const &a_egid)
{
    return url_fragment(a_egid, true);
}

std::string &egid_set_instance(std::string &a_egid, std::string const &a_value)
{
    return url_set_fragment(a_egid, a_value, true);
}

std::string egid_new_instance(std::string const &a_egid, std::string const &a_value)
{
    return url_new_fragment(a_egid, a_value, true);
}

std::string wtid_plid(std::string const &a_wtid)
{
    return url_path(a_wtid, true);
}

std::string &wtid_set_plid(std::string &a_wtid, std::string const &a_value)
{
    return url_set_path(a_wtid, a_value, true);
}

std::string wtid_new_plid(std::string const &a_wtid, std::string const &a_value)
{
    return url_new_path(a_wtid, a_value, true);
}

std::string wtid_instance(std::string const &a_wtid)
{
    return url_fragment(a_wtid, true);
}

std::string &wtid_set_instance(std::string &a_wtid, std::string const &a_value)
{
    return url_set_fragment(a_wtid, a_value, true);
}

std::string wtid_new_instance(std::string const &a_wtid, std::string const &a_value)
{
    return url_new_fragment(a_wtid, a_value, true);
}

// --- port ---------------------------------------------------------------------------------------

std::string port_id(std::string const &a_port)
{
    return egid_entity(a_port);
}

std::string &port_set_id(std::string &a_port, std::string const &a_value)
{
    return url_set_path(a_port, a_value, false);
}

std::string port_new_id(std::string const &a_port, std::string const &a_value)
{
    return url_new_path(a_port, a_value, false);
}

std::string port_param(std::string const &a_port)
{
    return url_params(a_port, true);
}

std::string &port_set_param(std::string &a_port, std::string const &a_value)
{
    return url_set_params(a_port, a_value, true);
}

std::string port_new_param(std::string const &a_port, std::string const &a_value)
{
    return url_new_params(a_port, a_value, true);
}

std::string port_type(std::string const &a_port)
{
    return url_fragment(a_port, true);
}

std::string &port_set_type(std::string &a_port, std::string const &a_value)
{
    return url_set_fragment(a_port, a_value, true);
}

std::string port_new_type(std::string const &a_port, std::string const &a_value)
{
    return url_new_fragment(a_port, a_value, true);
}

// --- graph, workflow ----------------------------------------------------------------------------

std::string graph_id(std::string const &a_graph)
{
    return uri_scheme_specific(a_graph);
}

std::string &graph_set_id(std::string &a_graph, std::string const &a_value)
{
    return uri_set_scheme_specific(a_graph, a_value);
}

std::string graph_new_id(std::string const &a_graph, std::string const &a_value)
{
    return uri_new_scheme_specific(a_graph, a_value);
}

std::string workflow_id(std::string const &a_workflow)
{
    return uri_scheme_specific(a_workflow);
}

std::string &workflow_set_id(std::string &a_workflow, std::string const &a_value)
{
    return uri_set_scheme_specific(a_workflow, a_value);
}

std::string workflow_new_id(std::string const &a_workflow, std::string const &a_value)
{
    return uri_new_scheme_specific(a_workflow, a_value);
}

} // namespace ordwel
