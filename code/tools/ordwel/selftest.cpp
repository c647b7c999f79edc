#include "toolbox.h"

#include <exception>
#include <iterator>
#include <vector>

#include <ordwel/es.h>
#include <ordwel/test.h>

namespace ordwel_toolbox {

namespace {

using ordwel::test::registry;
using ordwel::test::suite;
using ordwel::test::unit;

// One selected case, with its full name "suite/unit/case".
struct selected_case {
    std::string m_name;
    unit::function m_function;
};

struct selector {
    std::string m_suite;
    std::string m_unit;
    std::string m_case;
    bool m_has_unit;
    bool m_has_case;
};

selector selector_with_text(std::string const &a_text)
{
    selector l_selector{a_text, "", "", false, false};
    std::string::size_type const l_first = a_text.find('/');
    if (l_first != std::string::npos) {
        l_selector.m_suite = a_text.substr(0, l_first);
        l_selector.m_has_unit = true;
        std::string::size_type const l_second = a_text.find('/', l_first + 1);
        if (l_second != std::string::npos) {
            l_selector.m_unit = a_text.substr(l_first + 1, l_second - l_first - 1);
            l_selector.m_case = a_text.substr(l_second + 1);
            l_selector.m_has_case = true;
        } else {
            l_selector.m_unit = a_text.substr(l_first + 1);
        }
    }
    return l_selector;
}

// The cases that a selector names, in the registry's order; false after an error line.
bool select_cases(std::string const &a_text, std::vector<selected_case> &a_cases)
{
    registry const &l_registry = registry::instance();
    selector const l_selector = selector_with_text(a_text);
    registry::const_iterator l_suite = l_registry.begin();
    registry::const_iterator l_suite_end = l_registry.end();
    if (!a_text.empty()) {
        l_suite = l_registry.find(l_selector.m_suite);
        if (l_suite == l_registry.end()) {
            std::fprintf(stderr, "*** no such test suite `%s'\n", l_selector.m_suite.c_str());
            return false;
        }
        l_suite_end = std::next(l_suite);
    }
    for (; l_suite != l_suite_end; ++l_suite) {
        suite::const_iterator l_unit = l_suite->second->begin();
        suite::const_iterator l_unit_end = l_suite->second->end();
        if (l_selector.m_has_unit) {
            l_unit = l_suite->second->find(l_selector.m_unit);
            if (l_unit == l_suite->second->end()) {
                std::fprintf(stderr, "*** no such test unit `%s/%s'\n", l_selector.m_suite.c_str(),
                             l_selector.m_unit.c_str());
                return false;
            }
            l_unit_end = std::next(l_unit);
        }
        for (; l_unit != l_unit_end; ++l_unit) {
            for (auto const &l_case : *l_unit->second) {
                if (!l_selector.m_has_case || l_case.first == l_selector.m_case) {
                    a_cases.push_back({l_suite->first + "/" + l_unit->first + "/" + l_case.first, l_case.second});
                }
            }
        }
    }
    if (l_selector.m_has_case && a_cases.empty()) {
        std::fprintf(stderr, "*** no such test case `%s'\n", a_text.c_str());
        return false;
    }
    return true;
}

// Runs one case; an empty result is a pass, anything else describes the failure.
std::string failure_of(unit::function a_function)
{
    try {
        a_function();
        return std::string();
    } catch (ordwel::test::fail const &l_fail) {
        return std::string(l_fail.file()) + ":" + std::to_string(l_fail.line()) + ": " + l_fail.message();
    } catch (ordwel::es::base const &l_error) {
        return std::string(l_error.file()) + ":" + std::to_string(l_error.line()) + ": exception: " + l_error.what();
    } catch (std::exception const &l_error) {
        return std::string("exception: ") + l_error.what();
    } catch (...) {
        return "unknown exception";
    }
}

} // namespace

int run_selftest(std::string const &a_selector, bool a_verbose)
{
    std::vector<selected_case> l_cases;
    if (!select_cases(a_selector, l_cases)) {
        return k_exit_usage;
    }
    unsigned long l_passed = 0;
    unsigned long l_failed = 0;
    for (selected_case const &l_case : l_cases) {
        std::string const l_failure = failure_of(l_case.m_function);
        // The report goes out case by case, in order with whatever a case writes itself.
        if (l_failure.empty()) {
            ++l_passed;
            if (a_verbose) {
                std::printf("ok      %s\n", l_case.m_name.c_str());
            }
        } else {
            ++l_failed;
            std::printf("FAILED  %s  %s\n", l_case.m_name.c_str(), l_failure.c_str());
        }
        std::fflush(stdout);
    }
    std::printf("%lu passed, %lu failed\n", l_passed, l_failed);
    std::fflush(stdout);
    return l_failed == 0 ? k_exit_ok : k_exit_failed;
}

int list_selftest(std::string const &a_selector)
{
    std::vector<selected_case> l_cases;
    if (!select_cases(a_selector, l_cases)) {
        return k_exit_usage;
    }
    for (selected_case const &l_case : l_cases) {
        std::printf("%s\n", l_case.m_name.c_str());
    }
    return k_exit_ok;
}

} // namespace ordwel_toolbox
