// SPDX-License-Identifier: MIT
// The self-test units "timecode" and "types" of suite "ordwel".
#include <cmath>
#include <string>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>
#include <ordwel/test.h>
#include <ordwel/timecode.h>
#include <ordwel/timestamp.h>
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

// Fails the running case with a_message unless a_condition holds.
void check(bool a_condition, char const *a_file, uint32 a_line, char const *a_message)
{
    if (!a_condition) {
        fail::raise(a_file, a_line, a_message);
    }
}

bool has_fields(timecode const &a_timecode, unsigned int a_hour, unsigned int a_minute, unsigned int a_second,
                unsigned int a_frame)
{
    return a_timecode.hour() == a_hour && a_timecode.minute() == a_minute && a_timecode.second() == a_second &&
           a_timecode.frame() == a_frame;
}

class t__unit__timecode : public unit {
public:
    t__unit__timecode() : unit("ordwel", "timecode")
    {
        testcase("creation", creation);
        testcase("initialization", initialization);
        testcase("comparison", comparison);
        testcase("copy creation", copy_creation);
        testcase("base resolution", base_resolution);
        testcase("get/set", get_set);
        testcase("operators", operators);
        testcase("conversion", conversion);
        testcase("jump detection", jump_detection);
        testcase("total with dropframe", total_with_dropframe);
        testcase("invalid", invalid);
    }

private:
    static void creation()
    {
        timecode const l_invalid(timecode::mode_invalid);
        timecode const l_24(timecode::mode_24);
        timecode const l_25(timecode::mode_25);
        timecode const l_30(timecode::mode_30);
        timecode const l_29_97(timecode::mode_29_97);
        check(l_invalid.base() == 1 && l_24.base() == 24 && l_25.base() == 25 && l_30.base() == 30 &&
                  l_29_97.base() == 30,
              ORDWEL_HERE, nullptr);
        check(l_29_97.is_dropframe() && !l_30.is_dropframe(), ORDWEL_HERE, nullptr);
    }

    static void initialization()
    {
        timecode const l_timecode(timecode::mode_25, 1, 2, 3, 4, 2);
        check(l_timecode.total_frames() == 0x16B97, ORDWEL_HERE, "total_frames()");
        check(l_timecode.base() == 25, ORDWEL_HERE, "base()");
        check(l_timecode.mode() == timecode::mode_25, ORDWEL_HERE, "mode()");
        check(l_timecode.factor() == 2, ORDWEL_HERE, "factor() after initialization");
        timecode const l_tmcd = timecode_with_quicktime_tmcd(timecode::mode_25, 16909060, 2);
        check(l_tmcd.factor() == 2, ORDWEL_HERE, "factor() after initialization");

        // Five frames at 25 are six at 30.
        timecode const l_source(timecode::mode_25, 1, 1, 1, 5, 4);
        timecode const l_converted =
            timecode_with_timestamp(timecode::mode_30, l_source.as_timestamp(), l_source.factor());
        check(l_converted.hour() == 1, ORDWEL_HERE, "timecode_with_timestamp(), hour()");
        check(l_converted.minute() == 1, ORDWEL_HERE, "timecode_with_timestamp(), minute()");
        check(l_converted.second() == 1, ORDWEL_HERE, "timecode_with_timestamp(), second()");
        check(l_converted.frame() == 6, ORDWEL_HERE, "timecode_with_timestamp(), frame()");
        check(l_converted.factor() == 4, ORDWEL_HERE, "timecode_with_timestamp(), factor()");
    }

    static void comparison()
    {
        timecode const l_invalid(timecode::mode_invalid, 1, 0, 0, 0, 1);
        timecode const l_one_hour_25(timecode::mode_25, 1, 0, 0, 0, 1);
        timecode const l_two_hours_25(timecode::mode_25, 2, 0, 0, 0, 1);
        timecode const l_one_hour_24(timecode::mode_24, 1, 0, 0, 0, 1);
        check(!(l_invalid == l_one_hour_25) && !(l_invalid == l_one_hour_24), ORDWEL_HERE, "invalid mode");
        check(!(l_one_hour_25 == l_two_hours_25) && l_one_hour_25 != l_two_hours_25, ORDWEL_HERE, "different time");
        check(!(l_one_hour_25 == l_one_hour_24), ORDWEL_HERE, "different base");
    }

    static void copy_creation()
    {
        timecode const l_timecode(timecode::mode_25, 1, 2, 3, 4, 1);
        timecode const l_copy(l_timecode);
        static_cast<void>(l_copy);
    }

    static void base_resolution()
    {
        check(timecode(timecode::mode_invalid).base() == 1, ORDWEL_HERE, "Invalid base");
        check(timecode(timecode::mode_24).base() == 24, ORDWEL_HERE, "24 Film");
        check(timecode(timecode::mode_25).base() == 25, ORDWEL_HERE, "25 PAL");
        check(timecode(timecode::mode_30).base() == 30 && timecode(timecode::mode_29_97).base() == 30, ORDWEL_HERE,
              "30 NTSC");
    }

    static void get_set()
    {
        timecode l_timecode(timecode::mode_25, 4, 4, 4, 4, 1);
        l_timecode.hour(1);
        check(l_timecode == timecode(timecode::mode_25, 1, 4, 4, 4, 1), ORDWEL_HERE, "set hour()");
        l_timecode.minute(1);
        check(l_timecode == timecode(timecode::mode_25, 1, 1, 4, 4, 1), ORDWEL_HERE, "set minute()");
        l_timecode.second(1);
        check(l_timecode == timecode(timecode::mode_25, 1, 1, 1, 4, 1), ORDWEL_HERE, "set second()");
        l_timecode.frame(1);
        check(l_timecode == timecode(timecode::mode_25, 1, 1, 1, 1, 1), ORDWEL_HERE, "set frame()");
        l_timecode.set(1, 2, 3, 4);
        check(l_timecode == timecode(timecode::mode_25, 1, 2, 3, 4, 1), ORDWEL_HERE, "set()");
        check(has_fields(l_timecode, 1, 2, 3, 4), ORDWEL_HERE, "get hour/minute/second/frame");
    }

    static void operators()
    {
        timecode const l_start(timecode::mode_29_97, 0, 0, 1, 15, 1);
        timecode l_timecode(l_start);
        timecode const l_before = l_timecode++;
        check(l_before.total_frames() == 45, ORDWEL_HERE, "post increment");
        check(l_timecode.total_frames() == 46, ORDWEL_HERE, "after post increment");
        check((++l_timecode).total_frames() == 47, ORDWEL_HERE, "pre increment");
        check(l_start + 2 == l_timecode, ORDWEL_HERE, "operator+");
        check(l_start < l_timecode, ORDWEL_HERE, "operator<");
        check(l_timecode > l_start, ORDWEL_HERE, "operator>");

        // From the last label of every minute of an hour: a crossing into a minute divisible by 10
        // skips nothing, any other skips two labels.
        for (unsigned int l_minute = 0; l_minute < 60; ++l_minute) {
            bool const l_tenth = (l_minute + 1) % 10 == 0;
            timecode l_step(timecode::mode_29_97, 0, l_minute, 59, 29, 1);
            ++l_step;
            check(l_step.frame() == (l_tenth ? 0u : 2u), ORDWEL_HERE,
                  string_with_format("drop frame (++, minute %u)", l_minute).c_str());
            timecode l_add(timecode::mode_29_97, 0, l_minute, 59, 29, 1);
            l_add += 5;
            check(l_add.frame() == (l_tenth ? 4u : 6u), ORDWEL_HERE,
                  string_with_format("drop frame (+=, minute %u)", l_minute).c_str());
            timecode l_step3(timecode::mode_29_97, 0, l_minute, 59, 29, 3);
            ++l_step3;
            check(l_step3.frame() == (l_tenth ? 2u : 4u), ORDWEL_HERE,
                  string_with_format("drop frame (factor=3, ++, minute %u)", l_minute).c_str());
            timecode l_add2(timecode::mode_29_97, 0, l_minute, 59, 29, 2);
            l_add2 += 5;
            check(l_add2.frame() == (l_tenth ? 9u : 11u), ORDWEL_HERE,
                  string_with_format("drop frame (factor=2, +=, minute %u)", l_minute).c_str());
        }
    }

    static void conversion()
    {
        timecode const l_timecode(timecode::mode_25, 0, 0, 1, 20, 1);
        check(l_timecode.as_int() == 1, ORDWEL_HERE, "as_int()");
        check(l_timecode.as_int(1000) == 1800, ORDWEL_HERE, "as_int(1000)");
        check(l_timecode.as_rounded_int() == 2, ORDWEL_HERE, "as_rounded_int()");
        check(l_timecode.as_rounded_int(1000) == 1800, ORDWEL_HERE, "as_rounded_int(1000)");
        check(std::fabs(l_timecode.as_float() - 1.8f) < 1e-6f, ORDWEL_HERE, "as_float()");
        check(std::fabs(l_timecode.as_float(1000) - 1800.0f) < 1e-3f, ORDWEL_HERE, "as_float(1000)");
        check(std::fabs(l_timecode.as_timestamp().as_float() - 1.8) < 1e-12, ORDWEL_HERE, "as_timestamp()");

        timecode const l_tmcd = timecode_with_quicktime_tmcd(timecode::mode_25, 0x1020304, 1);
        check(l_tmcd.as_quicktime_tmcd() == 0x1020304, ORDWEL_HERE, "as_quicktime_tmcd()");
        check(string_with_timecode(l_tmcd, true) == "01:02:03:04", ORDWEL_HERE, "string_with_timecode()");
        timecode const l_drop(timecode::mode_29_97, 1, 2, 3, 4, 1);
        check(l_drop.as_quicktime_tmcd() == (0x1020304u | 0x80u), ORDWEL_HERE, "as_quicktime_tmcd()");
    }

    static void jump_detection()
    {
        timecode l_plain(timecode::mode_30, 0, 8, 59, 29, 1);
        timecode l_drop(timecode::mode_29_97, 0, 8, 59, 29, 1);
        check(l_plain.is_consecutive(l_plain + 1) && (l_plain + 1).is_consecutive(l_plain), ORDWEL_HERE,
              "is_consecutive 30-frame");
        check(l_drop.is_consecutive(l_drop + 1) && (l_drop + 1).is_consecutive(l_drop), ORDWEL_HERE,
              "is_consecutive 30-dropframe");
        check(!l_plain.is_consecutive(l_plain + 2), ORDWEL_HERE, "not is_consecutive 30-frame");
        check(!l_drop.is_consecutive(l_drop + 2), ORDWEL_HERE, "not is_consecutive 30-dropframe");
        l_plain.factor(4);
        l_drop.factor(4);
        check(l_plain.is_consecutive(l_plain + 1), ORDWEL_HERE, "is_consecutive factor=4 30-frame");
        check(l_drop.is_consecutive(l_drop + 1), ORDWEL_HERE, "is_consecutive factor=4 30-dropframe");
    }

    static void total_with_dropframe()
    {
        // 36,539 whole seconds and 29 frames at the true rate.
        check(timecode(timecode::mode_29_97, 10, 8, 59, 29, 1).total_frames() == 1095103, ORDWEL_HERE,
              "total_frames 30-dropframe");
        check(timecode(timecode::mode_29_97, 0, 1, 0, 2, 1).total_frames() == 1800 &&
                  timecode(timecode::mode_29_97, 0, 10, 0, 0, 1).total_frames() == 17982 &&
                  timecode(timecode::mode_29_97, 1, 0, 0, 0, 1).total_frames() == 107892,
              ORDWEL_HERE, "total_frames 30-dropframe");
    }

    static void invalid()
    {
        timecode const l_invalid(timecode::mode_invalid);
        check(!l_invalid.is_valid() && timecode(timecode::mode_25).is_valid(), ORDWEL_HERE, "is_valid");
        check(string_with_timecode(l_invalid, true).empty(), ORDWEL_HERE, "string_with_timecode()");
    }
};

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

t__unit__timecode const g_unit_timecode;
t__unit__types const g_unit_types;

} // namespace
} // namespace test
} // namespace ordwel
