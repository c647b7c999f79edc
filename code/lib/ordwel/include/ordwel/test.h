// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_H
#define ORDWEL_TEST_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <ordwel/es.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

// The library's self-test bookkeeping: a process-wide registry of suites, each a map of units by
// name, each unit an ordered list of named test cases. Units register themselves at load; the
// library's own five ("object_refcount", "object", "timecode" and "types" in suite "ordwel",
// "parseopt" in suite "ordkin") are there as soon as the library is loaded.
//
// Running is the host's: for each case of the units it selects, call the function; a return is a
// pass, a throw a failure. A failed check throws test::fail (see <ordwel/es.h>), whose file() and
// line() locate the check and whose message() gives its text.
namespace ordwel {
namespace test {

class unit;

/// The units of one suite, by name. Made by the registry when the first unit of the suite
/// registers; the registry owns it.
class ORDWEL_API suite {
public:
    using units = std::map<std::string, unit const *>; ///< Unit name to unit, in name order.
    using const_iterator = units::const_iterator;      ///< Walks (name, unit) pairs in name order.

    /// An empty suite.
    suite();
    suite(suite const &) = delete;
    suite &operator=(suite const &) = delete;
    /// Frees the map; the units, which the suite does not own, stay.
    ~suite();

    /// The units in name order.
    ///@{
    [[nodiscard]] const_iterator begin() const;
    [[nodiscard]] const_iterator end() const;
    ///@}
    /// The unit of that name, or end().
    [[nodiscard]] const_iterator find(std::string a_unit_name) const;
    /// The number of units.
    [[nodiscard]] uint64 size() const;

private:
    friend class registry;
    units m_units;
};

/// The process-wide registry of test suites, by name. Units enter it by constructing themselves.
class ORDWEL_API registry {
public:
    using suites = std::map<std::string, suite *>; ///< Suite name to suite, in name order.
    using const_iterator = suites::const_iterator; ///< Walks (name, suite) pairs in name order.

    /// The one registry, made at the first call and destroyed at exit after every unit.
    [[nodiscard]] static registry &instance();

    /// An empty registry; the process uses instance().
    registry();
    registry(registry const &) = delete;
    registry &operator=(registry const &) = delete;
    /// Deletes the suites.
    ~registry();

    /// The suites in name order.
    ///@{
    [[nodiscard]] const_iterator begin() const;
    [[nodiscard]] const_iterator end() const;
    ///@}
    /// The suite of that name, or end().
    [[nodiscard]] const_iterator find(std::string a_suite_name) const;
    /// The number of suites.
    [[nodiscard]] uint64 size() const;

private:
    friend class unit;
    // Enters a_unit under a_unit_name in the suite of that name, making the suite if need be.
    // A second unit of one name in one suite ends the process through ds::abort.
    static void insert(unit const &a_unit, std::string const &a_unit_name, std::string const &a_suite_name);

    suites m_suites;
};

/// A test unit: a class derived from unit, with one static instance, whose constructor names its
/// suite and unit here and then adds its cases (static member functions) with testcase.
class ORDWEL_API unit {
public:
    using function = void (*)();                                 ///< A test case: returns or throws.
    using cases = std::vector<std::pair<std::string, function>>; ///< Named cases in the order added.
    using const_iterator = cases::const_iterator;                ///< Walks (name, case) pairs in order.

    /// Registers this unit under a_unit_name in suite a_suite_name. A second unit of one name in
    /// one suite ends the process through ds::abort.
    unit(std::string const &a_suite_name, std::string const &a_unit_name);
    unit(unit const &) = delete;
    unit &operator=(unit const &) = delete;
    /// Does not deregister: units go at exit, before the registry.
    virtual ~unit();

    /// The cases in the order they were added.
    ///@{
    [[nodiscard]] const_iterator begin() const;
    [[nodiscard]] const_iterator end() const;
    ///@}
    /// The first case of that name, or end().
    [[nodiscard]] const_iterator find(std::string a_case_name) const;
    /// The number of cases.
    [[nodiscard]] uint64 size() const;

protected:
    /// Adds a case under a_name, behind those added before; names may repeat.
    void testcase(std::string const &a_name, function const a_case);

private:
    cases m_cases;
};

} // namespace test
} // namespace ordwel

#endif
