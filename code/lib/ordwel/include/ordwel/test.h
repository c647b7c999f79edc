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

class ORDWEL_API suite {
public:
    using units = std::map<std::string, unit const *>;
    using const_iterator = units::const_iterator;

    suite();
    suite(suite const &) = delete;
    suite &operator=(suite const &) = delete;
    // Frees the map; the units, which the suite does not own, stay.
    ~suite();

    const_iterator begin() const;
    const_iterator end() const;
    const_iterator find(std::string a_unit_name) const;
    uint64 size() const;

private:
    friend class registry;
    units m_units;
};

class ORDWEL_API registry {
public:
    using suites = std::map<std::string, suite *>;
    using const_iterator = suites::const_iterator;

    // The one registry, made at the first call and destroyed at exit after every unit.
    static registry &instance();

    registry();
    registry(registry const &) = delete;
    registry &operator=(registry const &) = delete;
    // Deletes the suites.
    ~registry();

    const_iterator begin() const;
    const_iterator end() const;
    const_iterator find(std::string a_suite_name) const;
    uint64 size() const;

private:
    friend class unit;
    // Enters a_unit under a_unit_name in the suite of that name, making the suite if need be.
    // A second unit of one name in one suite ends the process through ds::abort.
    static void insert(unit const &a_unit, std::string const &a_unit_name, std::string const &a_suite_name);

    suites m_suites;
};

// A test unit: a class derived from unit, with one static instance, whose constructor names its
// suite and unit here and then adds its cases (static member functions) with testcase.
class ORDWEL_API unit {
public:
    using function = void (*)();
    using cases = std::vector<std::pair<std::string, function>>;
    using const_iterator = cases::const_iterator;

    unit(std::string const &a_suite_name, std::string const &a_unit_name);
    unit(unit const &) = delete;
    unit &operator=(unit const &) = delete;
    // Does not deregister: units go at exit, before the registry.
    virtual ~unit();

    const_iterator begin() const;
    const_iterator end() const;
    // The first case of that name, or end().
    const_iterator find(std::string a_case_name) const;
    uint64 size() const;

protected:
    void testcase(std::string const &a_name, function const a_case);

private:
    cases m_cases;
};

} // namespace test
} // namespace ordwel

#endif
