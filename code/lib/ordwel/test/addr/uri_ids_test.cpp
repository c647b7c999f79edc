#include <ordwel/uri_ids.h>

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

TEST(plid, fields_by_their_slashes)
{
    struct row {
        char const *text, *category, *type, *key, *version;
    } const l_rows[] = {
        {"plid:", "", "", "", ""},
        {"plid:cat", "cat", "", "", ""},
        {"plid:cat/", "cat", "", "", ""},
        {"plid:cat/type", "cat", "type", "", ""},
        {"plid:cat/type/key", "cat", "type", "key", ""},
        {"plid:cat/type/key/1.0", "cat", "type", "key", "1.0"},
        {"plid:cat/type/key/1.0/x", "cat", "type", "key", "1.0"},
        {"plid:/t", "", "t", "", ""},
        {"plid:///v", "", "", "", "v"},
        {"cat/type", "cat", "type", "", ""},
        {"", "", "", "", ""},
        {"x:a:b/c", "a:b", "c", "", ""},
        // A '#' ends the fields: a '/' behind it divides nothing.
        {"plid:a/b#f/g", "a", "b", "", ""},
        {"plid:a#f/g", "a", "", "", ""},
        {"plid:a/%2f/K%2fx", "a", "%2f", "K%2fx", ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EQ(plid_category(l_row.text), l_row.category);
        EXPECT_EQ(plid_type(l_row.text), l_row.type);
        EXPECT_EQ(plid_key(l_row.text, false), l_row.key);
        EXPECT_EQ(plid_version(l_row.text), l_row.version);
    }
}

TEST(plid, key_decodes_when_asked)
{
    EXPECT_EQ(plid_key("plid:a/%2f/K%2fx", true), "K/x");
    EXPECT_EQ(plid_key("plid:a/b/%00%41", true), "%00A");
    EXPECT_EQ(plid_type("plid:a/%41/k"), "%41"); // no other field is ever decoded
}

TEST(plid, setters_add_the_slashes_they_need)
{
    enum class field { category, type, key, version };
    struct row {
        char const *text;
        field which;
        char const *value, *expected;
    } const l_rows[] = {
        {"plid:", field::category, "C", "plid:C"},
        {"plid:", field::type, "T", "plid:/T"},
        {"plid:", field::version, "V", "plid:///V"},
        {"plid:cat", field::type, "T", "plid:cat/T"},
        {"plid:cat", field::key, "k", "plid:cat//k"},
        {"plid:cat/type", field::key, "k", "plid:cat/type/k"},
        {"plid:cat/type", field::version, "V", "plid:cat/type//V"},
        {"plid:cat/type/key", field::version, "V", "plid:cat/type/key/V"},
        {"plid:cat/type/key/1.0", field::type, "T", "plid:cat/T/key/1.0"},
        {"plid:cat/type/key/1.0/x", field::version, "V", "plid:cat/type/key/V/x"},
        {"plid:cat", field::version, "V", "plid:cat///V"},
        {"plid:cat/", field::version, "V", "plid:cat///V"},
        {"plid:cat/type/key", field::category, "C", "plid:C/type/key"},
        // An empty value empties the field and leaves the '/'.
        {"plid:cat/type/key", field::type, "", "plid:cat//key"},
        {"plid:cat/type", field::category, "", "plid:/type"},
        {"plid:cat", field::category, "", "plid:"},
        // Values go in as given: a '/' in them divides fields.
        {"plid:", field::type, "a/b", "plid:/a/b"},
        // Without a scheme the fields start at the text's beginning.
        {"", field::type, "T", "/T"},
        {"cat", field::key, "k", "cat//k"},
        // Missing '/' go in front of a fragment.
        {"plid:a#f", field::type, "T", "plid:a/T#f"},
        {"plid:a/b#f/g", field::version, "V", "plid:a/b//V#f/g"},
        {"plid:a/b#f/g", field::type, "T", "plid:a/T#f/g"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.text) + " <- " + l_row.value);
        std::string l_plid = l_row.text;
        std::string const l_source = l_row.text;
        std::string l_copy;
        switch (l_row.which) {
        case field::category:
            EXPECT_EQ(&plid_set_category(l_plid, l_row.value), &l_plid);
            l_copy = plid_new_category(l_source, l_row.value);
            break;
        case field::type:
            EXPECT_EQ(&plid_set_type(l_plid, l_row.value), &l_plid);
            l_copy = plid_new_type(l_source, l_row.value);
            break;
        case field::key:
            EXPECT_EQ(&plid_set_key(l_plid, l_row.value, false), &l_plid);
            l_copy = plid_new_key(l_source, l_row.value, false);
            break;
        case field::version:
            EXPECT_EQ(&plid_set_version(l_plid, l_row.value), &l_plid);
            l_copy = plid_new_version(l_source, l_row.value);
            break;
        }
        EXPECT_EQ(l_plid, l_row.expected);
        EXPECT_EQ(l_copy, l_row.expected);
        EXPECT_EQ(l_source, l_row.text);
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
    EXPECT_EQ(egid_scheme(), "egid");
    EXPECT_EQ(wtid_scheme(), "wtid");
    EXPECT_EQ(port_scheme(), "port");
    EXPECT_EQ(graph_scheme(), "graph");
    EXPECT_EQ(workflow_scheme(), "workflow");
    EXPECT_EQ(&egid_scheme(), &egid_scheme());
    EXPECT_EQ(plid_new(), "plid:");
    EXPECT_EQ(egid_new(), "egid:");
    EXPECT_EQ(wtid_new(), "wtid:");
    EXPECT_EQ(port_new(), "port:");
    EXPECT_EQ(graph_new(), "graph:");
    EXPECT_EQ(workflow_new(), "workflow:");
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
