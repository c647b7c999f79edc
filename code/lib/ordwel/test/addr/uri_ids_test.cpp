// SPDX-License-Identifier: MIT
#include <ordwel/uri_ids.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

// The four fields of a plid joined by '|', the key as written.
std::string fields_of(std::string const &a_plid)
{
    return plid_category(a_plid) + "|" + plid_type(a_plid) + "|" + plid_key(a_plid, false) + "|" + plid_version(a_plid);
}

// A '#' ends the fields: a '/' behind it divides nothing.
TEST(plid, fields_by_their_slashes)
{
    struct row {
        char const *text, *fields;
    } const l_rows[] = {{"plid:", "|||"},
                        {"plid:cat", "cat|||"},
                        {"plid:cat/", "cat|||"},
                        {"plid:cat/type/key", "cat|type|key|"},
                        {"plid:cat/type/key/1.0", "cat|type|key|1.0"},
                        {"plid:cat/type/key/1.0/x", "cat|type|key|1.0"},
                        {"plid:/t", "|t||"},
                        {"plid:///v", "|||v"},
                        {"", "|||"},
                        {"x:a:b/c", "a:b|c||"},
                        {"plid:a/b#f/g", "a|b||"},
                        {"plid:a/%2f/K%2fx", "a|%2f|K%2fx|"}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(fields_of(l_row.text), l_row.fields) << l_row.text;
    }
    // Only the key is ever decoded, and only when asked.
    EXPECT_EQ(plid_key("plid:a/%2f/K%2fx", true), "K/x");
    EXPECT_EQ(plid_key("plid:a/b/%00%41", true), "%00A");
}

// An empty value empties the field and leaves the '/'; values go in as given, so a '/' in them
// divides fields; without a scheme the fields start at the text's beginning; missing '/' go in
// front of a fragment.
TEST(plid, setters_add_the_slashes_they_need)
{
    using in_place = std::string &(*)(std::string &, std::string const &);
    using copying = std::string (*)(std::string const &, std::string const &);
    std::map<char, std::pair<in_place, copying>> const l_setters = {
        {'c', {plid_set_category, plid_new_category}},
        {'t', {plid_set_type, plid_new_type}},
        {'k',
         {[](std::string &a_plid, std::string const &a_key) -> std::string & {
              return plid_set_key(a_plid, a_key, false);
          },
          [](std::string const &a_plid, std::string const &a_key) { return plid_new_key(a_plid, a_key, false); }}},
        {'v', {plid_set_version, plid_new_version}}};
    struct row {
        char const *text;
        char field; // c, t, k or v
        char const *value, *expected;
    } const l_rows[] = {{"plid:", 'c', "C", "plid:C"},
                        {"plid:", 't', "T", "plid:/T"},
                        {"plid:", 'v', "V", "plid:///V"},
                        {"plid:cat", 't', "T", "plid:cat/T"},
                        {"plid:cat", 'k', "k", "plid:cat//k"},
                        {"plid:cat/type", 'k', "k", "plid:cat/type/k"},
                        {"plid:cat/type", 'v', "V", "plid:cat/type//V"},
                        {"plid:cat/type/key/1.0", 't', "T", "plid:cat/T/key/1.0"},
                        {"plid:cat/type/key/1.0/x", 'v', "V", "plid:cat/type/key/V/x"},
                        {"plid:cat", 'v', "V", "plid:cat///V"},
                        {"plid:cat/", 'v', "V", "plid:cat///V"},
                        {"plid:cat/type/key", 'c', "C", "plid:C/type/key"},
                        {"plid:cat/type/key", 't', "", "plid:cat//key"},
                        {"plid:cat/type", 'c', "", "plid:/type"},
                        {"plid:cat", 'c', "", "plid:"},
                        {"plid:", 't', "a/b", "plid:/a/b"},
                        {"", 't', "T", "/T"},
                        {"cat", 'k', "k", "cat//k"},
                        {"plid:a#f", 't', "T", "plid:a/T#f"},
                        {"plid:a/b#f/g", 'v', "V", "plid:a/b//V#f/g"}};
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.text) + " <- " + l_row.field + " " + l_row.value);
        auto const &l_setter = l_setters.at(l_row.field);
        std::string l_plid = l_row.text;
        EXPECT_EQ(&l_setter.first(l_plid, l_row.value), &l_plid);
        EXPECT_EQ(l_plid, l_row.expected);
        EXPECT_EQ(l_setter.second(l_row.text, l_row.value), l_row.expected);
    }
}

TEST(plid, any_order_of_setting_gives_the_same_text)
{
    std::string l_forward = plid_new();
    plid_set_category(l_forward, "c");
    plid_set_type(l_forward, "t");
    plid_set_key(l_forward, "k", true);
    plid_set_version(l_forward, "v");
    std::string l_backward = plid_new();
    plid_set_version(l_backward, "v");
    plid_set_key(l_backward, "k", true);
    plid_set_type(l_backward, "t");
    plid_set_category(l_backward, "c");
    EXPECT_EQ(l_forward, "plid:c/t/k/v");
    EXPECT_EQ(l_backward, "plid:c/t/k/v");
}

TEST(plid, an_encoded_key_holds_any_text)
{
    std::string const l_plid = plid_new_key("plid:cat/type/old/1", "K/x", true);
    EXPECT_EQ(l_plid, "plid:cat/type/K%2fx/1");
    EXPECT_EQ(plid_key(l_plid, true), "K/x");
    EXPECT_EQ(plid_key(l_plid, false), "K%2fx");
    EXPECT_EQ(plid_version(l_plid), "1");
    for (std::string const l_key : {"a b", "#?;:@", "%41", "\xc3\xa9\xff", "/", "x/y/z/w"}) {
        std::string const l_with_key = plid_new_key("plid:c/t//v", l_key, true);
        EXPECT_EQ(plid_key(l_with_key, true), l_key) << l_with_key;
        EXPECT_EQ(plid_category(l_with_key), "c");
        EXPECT_EQ(plid_type(l_with_key), "t");
        EXPECT_EQ(plid_version(l_with_key), "v");
    }
}

TEST(uri_ids, scheme_words_and_empty_identifiers)
{
    EXPECT_EQ(
        (std::vector<std::string>{egid_scheme(), wtid_scheme(), port_scheme(), graph_scheme(), workflow_scheme()}),
        (std::vector<std::string>{"egid", "wtid", "port", "graph", "workflow"}));
    EXPECT_EQ(&egid_scheme(), &egid_scheme());
    EXPECT_EQ((std::vector<std::string>{plid_new(), egid_new(), wtid_new(), port_new(), graph_new(), workflow_new()}),
              (std::vector<std::string>{"plid:", "egid:", "wtid:", "port:", "graph:", "workflow:"}));
}

TEST(uri_ids, egid_fields_are_coded)
{
    std::string l_egid = egid_new();
    EXPECT_EQ(&egid_set_entity(l_egid, "some/thing;x"), &l_egid);
    EXPECT_EQ(&egid_set_instance(l_egid, "9"), &l_egid);
    EXPECT_EQ(l_egid, "egid:some/thing%3bx#9");
    EXPECT_EQ(egid_entity(l_egid), "some/thing;x");
    EXPECT_EQ(egid_instance(l_egid), "9");
    EXPECT_EQ(egid_new_instance(l_egid, "a#b c"), "egid:some/thing%3bx#a%23b%20c");
    EXPECT_EQ(egid_instance(egid_new_instance(l_egid, "a#b c")), "a#b c");
    EXPECT_EQ(egid_new_entity(l_egid, "e"), "egid:e#9");
    EXPECT_EQ(egid_new_instance(l_egid, ""), "egid:some/thing%3bx");
}

TEST(uri_ids, wtid_holds_a_whole_plid)
{
    std::string l_wtid = wtid_new();
    EXPECT_EQ(&wtid_set_plid(l_wtid, "plid:a/b/c/d"), &l_wtid);
    EXPECT_EQ(l_wtid, "wtid:plid%3aa/b/c/d");
    EXPECT_EQ(wtid_plid(l_wtid), "plid:a/b/c/d");
    std::string const l_plid = plid_new_key("plid:a/b/x/1", "k#1/2", true);
    std::string const l_with = wtid_new_instance(wtid_new_plid(wtid_new(), l_plid), "7");
    EXPECT_EQ(wtid_plid(l_with), l_plid);
    EXPECT_EQ(plid_key(wtid_plid(l_with), true), "k#1/2");
    EXPECT_EQ(wtid_instance(l_with), "7");
    wtid_set_instance(l_wtid, "i");
    EXPECT_EQ(l_wtid, "wtid:plid%3aa/b/c/d#i");
}

TEST(uri_ids, port_id_goes_in_unencoded)
{
    std::string l_port = port_new();
    EXPECT_EQ(&port_set_id(l_port, "a/b"), &l_port);
    EXPECT_EQ(&port_set_param(l_port, "x y"), &l_port);
    EXPECT_EQ(&port_set_type(l_port, "t/1"), &l_port);
    EXPECT_EQ(l_port, "port:a/b;x%20y#t%2f1");
    EXPECT_EQ(port_id(l_port), "a/b");
    EXPECT_EQ(port_param(l_port), "x y");
    EXPECT_EQ(port_type(l_port), "t/1");
    // Written as given, read decoded.
    EXPECT_EQ(port_new_id(l_port, "a%41"), "port:a%41;x%20y#t%2f1");
    EXPECT_EQ(port_id(port_new_id(l_port, "a%41")), "aA");
    EXPECT_EQ(port_new_param(l_port, "p"), "port:a/b;p#t%2f1");
    EXPECT_EQ(port_new_type(l_port, "u"), "port:a/b;x%20y#u");
}

TEST(uri_ids, graph_and_workflow_ids_are_the_scheme_specific_part)
{
    std::string l_graph = graph_new();
    EXPECT_EQ(&graph_set_id(l_graph, "abc"), &l_graph);
    EXPECT_EQ(l_graph, "graph:abc");
    EXPECT_EQ(graph_id("graph:a#b"), "a#b");
    EXPECT_EQ(graph_new_id("graph:a#b", "c d%"), "graph:c d%");
    std::string l_workflow = "workflow:x";
    EXPECT_EQ(&workflow_set_id(l_workflow, "y/z"), &l_workflow);
    EXPECT_EQ(l_workflow, "workflow:y/z");
    EXPECT_EQ(workflow_id(l_workflow), "y/z");
    EXPECT_EQ(workflow_new_id("workflow:x#f", "n"), "workflow:n");
}

} // namespace
