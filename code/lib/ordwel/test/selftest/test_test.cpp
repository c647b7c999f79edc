// SPDX-License-Identifier: MIT
#include <ordwel/test.h>
#include <ordwel/version.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;

// The names of the units of a suite, or of the cases of a unit, in their order.
template <class C> std::vector<std::string> names_of(C const &a_entries)
{
    std::vector<std::string> l_names;
    for (auto const &l_entry : a_entries) {
        l_names.push_back(l_entry.first);
    }
    return l_names;
}

test::unit const &unit_named(char const *a_suite, char const *a_unit)
{
    test::registry const &l_registry = test::registry::instance();
    auto const l_suite = l_registry.find(a_suite);
    if (l_suite == l_registry.end()) {
        throw std::runtime_error(std::string("no suite ") + a_suite);
    }
    auto const l_unit = l_suite->second->find(a_unit);
    if (l_unit == l_suite->second->end()) {
        throw std::runtime_error(std::string("no unit ") + a_unit);
    }
    return *l_unit->second;
}

TEST(test_registry, built_in_units_are_registered_at_load)
{
    test::registry const &l_registry = test::registry::instance();
    EXPECT_EQ(&l_registry, &test::registry::instance());
    ASSERT_EQ(l_registry.size(), 2u);
    EXPECT_EQ(l_registry.begin()->first, "ordkin");
    EXPECT_EQ(names_of(*l_registry.find("ordkin")->second), (std::vector<std::string>{"parseopt"}));
    // By name, not in order of registration.
    EXPECT_EQ(names_of(*l_registry.find("ordwel")->second),
              (std::vector<std::string>{"object", "object_refcount", "timecode", "types"}));

    struct row {
        char const *suite;
        char const *unit;
        uint64 size;
    } const l_rows[] = {
        {"ordwel", "object_refcount", 4}, {"ordwel", "object", 2}, {"ordkin", "parseopt", 25},
        {"ordwel", "timecode", 11},       {"ordwel", "types", 10},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.unit);
        EXPECT_EQ(unit_named(l_row.suite, l_row.unit).size(), l_row.size);
    }
    EXPECT_EQ(names_of(unit_named("ordwel", "object_refcount")),
              (std::vector<std::string>{"default creation", "trivial copy creation", "copy creation",
                                        "new, retain and release"}));
    std::vector<std::string> const l_parseopt = names_of(unit_named("ordkin", "parseopt"));
    EXPECT_EQ(l_parseopt,
              (std::vector<std::string>{"create",   "add_opts", "add_desc", "parse1",  "parse3",  "parse4",  "parse5",
                                        "parse5_2", "parse6",   "parse8",   "parse9",  "parse10", "parse11", "parse12",
                                        "parse13",  "parse14",  "parse15",  "parse16", "parse17", "parse18", "parse19",
                                        "parse20",  "parse21",  "parse30",  "parse31"}));
    EXPECT_EQ(names_of(unit_named("ordwel", "timecode")),
              (std::vector<std::string>{"creation", "initialization", "comparison", "copy creation", "base resolution",
                                        "get/set", "operators", "conversion", "jump detection", "total with dropframe",
                                        "invalid"}));
    EXPECT_EQ(names_of(unit_named("ordwel", "types")).front(), "type size sint8");
    EXPECT_EQ(names_of(unit_named("ordwel", "types")).back(), "type size float64");
}

TEST(test_registry, find_misses_on_every_level)
{
    test::registry const &l_registry = test::registry::instance();
    EXPECT_TRUE(l_registry.find("nosuch") == l_registry.end());
    EXPECT_TRUE(l_registry.find("") == l_registry.end());
    test::suite const &l_suite = *l_registry.find("ordwel")->second;
    EXPECT_TRUE(l_suite.find("parseopt") == l_suite.end());
    test::unit const &l_unit = unit_named("ordwel", "object_refcount");
    EXPECT_TRUE(l_unit.find("no such case") == l_unit.end());
    EXPECT_EQ(l_unit.find("copy creation")->first, "copy creation");
    EXPECT_EQ(l_unit.find("copy creation") - l_unit.begin(), 2);
}

TEST(test_registry, every_built_in_case_passes)
{
    int l_cases = 0;
    std::vector<std::string> l_failures;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (auto const &l_suite : test::registry::instance()) {
        for (auto const &l_unit : *l_suite.second) {
            for (auto const &l_case : *l_unit.second) {
                ++l_cases;
                try {
                    l_case.second();
                } catch (test::fail const &l_fail) {
                    l_failures.push_back(l_case.first + ": " + l_fail.message());
                } catch (std::exception const &l_error) {
                    l_failures.push_back(l_case.first + ": " + l_error.what());
                }
            }
        }
    }
    std::string const l_output = testing::internal::GetCapturedStdout();
    std::string const l_errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(l_cases, 4 + 2 + 25 + 11 + 10);
    EXPECT_THAT(l_failures, testing::IsEmpty());
    // The help case writes its screen; the failing parses their messages.
    EXPECT_THAT(l_output, testing::HasSubstr("DESCRIPTION\n"));
    EXPECT_THAT(l_errors, testing::HasSubstr("*** too few arguments for option `b'\n"));
}

// Units of the test's own, made in a child process so that the registry of this program stays as
// the library left it.
class local_unit : public test::unit {
public:
    local_unit(char const *a_suite, char const *a_unit) : test::unit(a_suite, a_unit)
    {
        testcase("first", first);
        testcase("twice", twice);
        testcase("twice", twice);
    }

private:
    static void first() {}
    static void twice() {}
};

TEST(test_registry_death, one_unit_name_in_two_suites_is_fine)
{
    auto const l_register = [] {
        local_unit const l_a("suite_a", "shared");
        local_unit const l_b("suite_b", "shared");
        test::registry const &l_registry = test::registry::instance();
        test::unit const &l_unit = *l_registry.find("suite_b")->second->find("shared")->second;
        bool const l_ok = l_registry.size() == 4 && l_registry.find("suite_a")->second->size() == 1 &&
                          l_registry.find("suite_a")->second->find("shared")->second == &l_a && &l_unit == &l_b &&
                          l_unit.size() == 3 && l_unit.begin()->first == "first" &&
                          l_unit.find("twice") - l_unit.begin() == 1;
        std::fprintf(stderr, "registered %s\n", l_ok ? "fine" : "wrongly");
        std::exit(l_ok ? 0 : 2);
    };
    EXPECT_EXIT(l_register(), testing::ExitedWithCode(0), "registered fine");
}

TEST(test_registry_death, second_unit_of_one_name_in_a_suite_aborts)
{
    auto const l_register_twice = [] {
        ordwel_test::redirect_stdout_to_stderr();
        local_unit const l_a("ordwel", "object");
        std::fprintf(stderr, "still running\n");
    };
    std::string const l_expression =
        "'Abort-If: false == l_iter->second->m_units.insert(units::value_type(a_unit_name, &a_unit)).second'";
    EXPECT_EXIT(l_register_twice(), testing::ExitedWithCode(1),
                testing::AllOf(testing::StartsWith("Abort [test.cpp:"), testing::EndsWith("] " + l_expression),
                               testing::Truly([&](std::string const &a_output) {
                                   // Exactly one line: the location's line number and nothing else between.
                                   std::string const l_number =
                                       a_output.substr(16, a_output.size() - 16 - l_expression.size() - 2);
                                   return !l_number.empty() &&
                                          l_number.find_first_not_of("0123456789") == std::string::npos;
                               })));
}

// The loaded library answers for its own version, not for the headers of its caller.
TEST(library_version, matches_the_headers_it_was_built_with)
{
    EXPECT_STREQ(ordwel::library_version_string(), ordwel::k_version_string);
    EXPECT_TRUE(ordwel::library_matches_headers());
    EXPECT_FALSE(ordwel::library_has_version(ordwel::k_version_major + 1, ordwel::k_version_minor));
    EXPECT_FALSE(ordwel::library_has_version(ordwel::k_version_major, ordwel::k_version_minor + 1));
}

} // namespace
