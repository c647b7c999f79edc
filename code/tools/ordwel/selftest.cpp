// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <iterator>
#include <vector>

#if defined(_WIN32)
#include <io.h>
#define ORDWEL_TOOLBOX_DUP _dup
#define ORDWEL_TOOLBOX_DUP2 _dup2
#define ORDWEL_TOOLBOX_CLOSE _close
#define ORDWEL_TOOLBOX_FILENO _fileno
#else
#include <unistd.h>
#define ORDWEL_TOOLBOX_DUP dup
#define ORDWEL_TOOLBOX_DUP2 dup2
#define ORDWEL_TOOLBOX_CLOSE close
#define ORDWEL_TOOLBOX_FILENO fileno
#endif

#include <ordwel/es.h>
#include <ordwel/test.h>
#include <ordwel/version.h>

#include "options.h"
#include "tool_io.h"

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

// A bare name stands for the suite of that name, or else for the one unit of that name in any
// suite; false after an error line when it names no unit or several.
bool bare_name_resolved(std::string &a_text)
{
    registry const &l_registry = registry::instance();
    if (a_text.empty() || a_text.find('/') != std::string::npos || l_registry.find(a_text) != l_registry.end()) {
        return true;
    }
    std::vector<std::string> l_units;
    for (auto const &l_suite : l_registry) {
        if (l_suite.second->find(a_text) != l_suite.second->end()) {
            l_units.push_back(l_suite.first + "/" + a_text);
        }
    }
    if (l_units.size() == 1) {
        a_text = l_units.front();
        return true;
    }
    if (l_units.empty()) {
        std::fprintf(stderr, "*** no such test suite or unit `%s'\n", a_text.c_str());
    } else {
        std::string l_names;
        for (std::string const &l_unit : l_units) {
            l_names += " " + l_unit;
        }
        std::fprintf(stderr, "*** test unit `%s' is in several suites:%s\n", a_text.c_str(), l_names.c_str());
    }
    return false;
}

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
bool select_cases(std::string a_text, std::vector<selected_case> &a_cases)
{
    if (!bare_name_resolved(a_text)) {
        return false;
    }
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

// While it lives, what the program writes to standard output and standard error (through either
// the C or the C++ streams, or the descriptors) goes to a temporary file; text() reads it back.
class output_capture {
public:
    output_capture() : m_file(std::tmpfile())
    {
        flush_all();
        if (m_file == nullptr) {
            return;
        }
        m_saved_out = ORDWEL_TOOLBOX_DUP(1);
        m_saved_err = ORDWEL_TOOLBOX_DUP(2);
        ORDWEL_TOOLBOX_DUP2(ORDWEL_TOOLBOX_FILENO(m_file), 1);
        ORDWEL_TOOLBOX_DUP2(ORDWEL_TOOLBOX_FILENO(m_file), 2);
    }
    output_capture(output_capture const &) = delete;
    output_capture &operator=(output_capture const &) = delete;
    ~output_capture()
    {
        restore();
        if (m_file != nullptr) {
            std::fclose(m_file);
        }
    }

    // Ends the capture and gives what was written.
    std::string text()
    {
        restore();
        std::string l_text;
        if (m_file == nullptr) {
            return l_text;
        }
        std::rewind(m_file);
        char l_chunk[4096];
        for (std::size_t l_count; (l_count = std::fread(l_chunk, 1, sizeof l_chunk, m_file)) > 0;) {
            l_text.append(l_chunk, l_count);
        }
        return l_text;
    }

private:
    static void flush_all()
    {
        std::cout.flush();
        std::cerr.flush();
        std::fflush(stdout);
        std::fflush(stderr);
    }
    void restore()
    {
        flush_all();
        if (m_saved_out >= 0) {
            ORDWEL_TOOLBOX_DUP2(m_saved_out, 1);
            ORDWEL_TOOLBOX_CLOSE(m_saved_out);
            m_saved_out = -1;
        }
        if (m_saved_err >= 0) {
            ORDWEL_TOOLBOX_DUP2(m_saved_err, 2);
            ORDWEL_TOOLBOX_CLOSE(m_saved_err);
            m_saved_err = -1;
        }
    }

    std::FILE *m_file;
    int m_saved_out = -1;
    int m_saved_err = -1;
};

struct case_result {
    std::string m_name;
    std::string m_failure;
    std::string m_output;
};

case_result result_of(selected_case const &a_case)
{
    output_capture l_capture;
    std::string l_failure = failure_of(a_case.m_function);
    return {a_case.m_name, l_failure, l_capture.text()};
}

// One case's lines of the report: a failure always, with what the case wrote; a pass with -v.
void print_case(case_result const &a_result, bool a_verbose)
{
    if (!a_result.m_failure.empty()) {
        std::printf("FAILED  %s  %s\n", a_result.m_name.c_str(), a_result.m_failure.c_str());
    } else if (a_verbose) {
        std::printf("ok      %s\n", a_result.m_name.c_str());
    }
    if ((a_verbose || !a_result.m_failure.empty()) && !a_result.m_output.empty()) {
        std::fwrite(a_result.m_output.data(), 1, a_result.m_output.size(), stdout);
    }
    std::fflush(stdout);
}

void print_json(std::vector<case_result> const &a_results)
{
    unsigned long l_failed = 0;
    std::string l_cases;
    for (case_result const &l_result : a_results) {
        l_failed += l_result.m_failure.empty() ? 0 : 1;
        l_cases += std::string(l_cases.empty() ? "" : ", ") + "{\"name\": " + json_string(l_result.m_name) +
                   ", \"passed\": " + (l_result.m_failure.empty() ? "true" : "false") +
                   (l_result.m_failure.empty() ? "" : ", \"failure\": " + json_string(l_result.m_failure)) + "}";
    }
    std::printf("{\"passed\": %lu, \"failed\": %lu, \"cases\": [%s]}\n",
                static_cast<unsigned long>(a_results.size()) - l_failed, l_failed, l_cases.c_str());
}

// The results as JUnit XML: one testsuite, a testcase per case named by its suite and unit.
bool write_junit(std::string const &a_path, std::vector<case_result> const &a_results)
{
    std::FILE *const l_file = std::fopen(a_path.c_str(), "w");
    if (l_file == nullptr) {
        return false;
    }
    unsigned long l_failed = 0;
    for (case_result const &l_result : a_results) {
        l_failed += l_result.m_failure.empty() ? 0 : 1;
    }
    std::fprintf(l_file,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"%lu\" failures=\"%lu\">\n"
                 "  <testsuite name=\"ordwel selftest\" tests=\"%lu\" failures=\"%lu\">\n",
                 static_cast<unsigned long>(a_results.size()), l_failed, static_cast<unsigned long>(a_results.size()),
                 l_failed);
    for (case_result const &l_result : a_results) {
        std::string::size_type const l_slash = l_result.m_name.rfind('/');
        std::string l_class = l_result.m_name.substr(0, l_slash);
        l_class[l_class.find('/')] = '.';
        std::fprintf(l_file, "    <testcase classname=\"%s\" name=\"%s\">", xml_text(l_class).c_str(),
                     xml_text(l_result.m_name.substr(l_slash + 1)).c_str());
        if (!l_result.m_failure.empty()) {
            std::fprintf(l_file, "<failure message=\"%s\"/>", xml_text(l_result.m_failure).c_str());
        }
        if (!l_result.m_output.empty()) {
            std::fprintf(l_file, "<system-out>%s</system-out>", xml_text(l_result.m_output).c_str());
        }
        std::fprintf(l_file, "</testcase>\n");
    }
    std::fprintf(l_file, "  </testsuite>\n</testsuites>\n");
    return std::fclose(l_file) == 0;
}

} // namespace

int run_selftest(command_input const &a_input)
{
    if (a_input.m_words.size() > 1) {
        return usage_error("selftest takes at most one selection");
    }
    std::vector<selected_case> l_cases;
    if (!select_cases(a_input.m_words.empty() ? std::string() : a_input.m_words.front(), l_cases)) {
        return k_exit_usage;
    }
    if (a_input.has(k_opt_list)) {
        for (selected_case const &l_case : l_cases) {
            std::printf("%s\n", l_case.m_name.c_str());
        }
        return k_exit_ok;
    }
    bool const l_json = a_input.has(k_opt_json);
    if (!l_json) {
        // What is about to run, so that a long run says something at once; the tally ends it.
        std::printf("ordwel %s self-test: %lu cases\n", ordwel::k_version_string,
                    static_cast<unsigned long>(l_cases.size()));
        std::fflush(stdout);
    }
    std::vector<case_result> l_results;
    unsigned long l_failed = 0;
    for (selected_case const &l_case : l_cases) {
        l_results.push_back(result_of(l_case));
        l_failed += l_results.back().m_failure.empty() ? 0 : 1;
        if (!l_json) {
            print_case(l_results.back(), a_input.has(k_opt_verbose));
        }
    }
    if (l_json) {
        print_json(l_results);
    } else {
        std::printf("%lu passed, %lu failed\n", static_cast<unsigned long>(l_results.size()) - l_failed, l_failed);
    }
    std::string const *const l_junit = a_input.last(k_opt_junit);
    if (l_junit != nullptr && !write_junit(*l_junit, l_results)) {
        return failure("cannot write the JUnit report `" + *l_junit + "'");
    }
    return l_failed > 0 ? k_exit_failed : k_exit_ok;
}

} // namespace ordwel_toolbox
