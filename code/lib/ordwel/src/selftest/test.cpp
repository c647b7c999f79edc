// SPDX-License-Identifier: MIT
#include <ordwel/test.h>

#include <ordwel/ds.h>

namespace ordwel {
namespace test {

// The built-in units live in object files of their own. In a static library nothing else would
// refer to them and the linker would leave them out; reading one anchor of each from the
// registry's accessor pulls them in with the registry.
extern int const g_anchor_object_refcount_tests;
extern int const g_anchor_parseopt_tests;
extern int const g_anchor_timecode_tests;

namespace {

int volatile g_anchor_sink;

} // namespace

// ---- suite ----

suite::suite() = default;
suite::~suite() = default;

suite::const_iterator suite::begin() const
{
    return m_units.begin();
}

suite::const_iterator suite::end() const
{
    return m_units.end();
}

suite::const_iterator suite::find(std::string a_unit_name) const
{
    return m_units.find(a_unit_name);
}

uint64 suite::size() const
{
    return m_units.size();
}

// ---- registry ----

registry &registry::instance()
{
    static registry s_registry;
    g_anchor_sink = g_anchor_object_refcount_tests + g_anchor_parseopt_tests + g_anchor_timecode_tests;
    return s_registry;
}

registry::registry() = default;

registry::~registry()
{
    for (suites::value_type &l_entry : m_suites) {
        delete l_entry.second;
        l_entry.second = nullptr;
    }
}

registry::const_iterator registry::begin() const
{
    return m_suites.begin();
}

registry::const_iterator registry::end() const
{
    return m_suites.end();
}

registry::const_iterator registry::find(std::string a_suite_name) const
{
    return m_suites.find(a_suite_name);
}

uint64 registry::size() const
{
    return m_suites.size();
}

void registry::insert(unit const &a_unit, std::string const &a_unit_name, std::string const &a_suite_name)
{
    using units = suite::units;
    suites &l_suites = instance().m_suites;
    suites::iterator const l_iter = l_suites.insert(suites::value_type(a_suite_name, nullptr)).first;
    if (l_iter->second == nullptr) {
        l_iter->second = new suite();
    }
    if (false == l_iter->second->m_units.insert(units::value_type(a_unit_name, &a_unit)).second) {
        ds::abort(ORDWEL_HERE, "Abort-If: %s",
                  "false == l_iter->second->m_units.insert(units::value_type(a_unit_name, &a_unit)).second");
    }
}

// ---- unit ----

unit::unit(std::string const &a_suite_name, std::string const &a_unit_name) : m_cases()
{
    registry::insert(*this, a_unit_name, a_suite_name);
}

unit::~unit() = default;

unit::const_iterator unit::begin() const
{
    return m_cases.begin();
}

unit::const_iterator unit::end() const
{
    return m_cases.end();
}

unit::const_iterator unit::find(std::string a_case_name) const
{
    for (const_iterator l_iter = m_cases.begin(); l_iter != m_cases.end(); ++l_iter) {
        if (l_iter->first == a_case_name) {
            return l_iter;
        }
    }
    return m_cases.end();
}

uint64 unit::size() const
{
    return m_cases.size();
}

void unit::testcase(std::string const &a_name, function const a_case)
{
    m_cases.push_back(cases::value_type(a_name, a_case));
}

} // namespace test
} // namespace ordwel
