// The self-test units "timecode" and "types" of suite "ordwel".
#include <ordwel/test.h>
#include <ordwel/types.h>

namespace ordwel {
namespace test {

// Read by the registry's accessor, so that a static link keeps this file's units.
extern int const g_anchor_timecode_tests;
int const g_anchor_timecode_tests = 1;

namespace {

// The sizes of the fixed-width names are checked when this file compiles; the cases that stand for
// them have nothing left to do at run time.
static_assert(sizeof(sint8) == 1, "sint8");
static_assert(sizeof(sint16) == 2, "sint16");
static_assert(sizeof(sint32) == 4, "sint32");
static_assert(sizeof(sint64) == 8, "sint64");
static_assert(sizeof(uint8) == 1, "uint8");
static_assert(sizeof(uint16) == 2, "uint16");
static_assert(sizeof(uint32) == 4, "uint32");
static_assert(sizeof(uint64) == 8, "uint64");
static_assert(sizeof(float32) == 4, "float32");
static_assert(sizeof(float64) == 8, "float64");

class t__unit__types : public unit {
public:
    t__unit__types() : unit("ordwel", "types")
    {
        testcase("type size sint8", checked_at_compile_time);
        testcase("type size sint16", checked_at_compile_time);
        testcase("type size sint32", checked_at_compile_time);
        testcase("type size sint64", checked_at_compile_time);
        testcase("type size uint8", checked_at_compile_time);
        testcase("type size uint16", checked_at_compile_time);
        testcase("type size uint32", checked_at_compile_time);
        testcase("type size uint64", checked_at_compile_time);
        testcase("type size float32", checked_at_compile_time);
        testcase("type size float64", checked_at_compile_time);
    }

private:
    static void checked_at_compile_time() {}
};

t__unit__types const g_unit_types;

} // namespace
} // namespace test
} // namespace ordwel
