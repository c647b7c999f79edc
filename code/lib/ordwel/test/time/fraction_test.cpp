// SPDX-License-Identifier: MIT
#include <ordwel/fraction.h>

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;
using f32 = fraction<unsigned int>;
using f64 = fraction<unsigned long long>;

// Exposes the protected gcd.
struct probe : f32 {
    static unsigned int call_gcd(unsigned int a_a, unsigned int a_b) { return gcd(a_a, a_b); }
};

std::string text_of(f32 const &a_value)
{
    return std::to_string(a_value.numer()) + "/" + std::to_string(a_value.denom());
}

TEST(fraction, default_is_zero_over_one)
{
    EXPECT_TRUE(f32().eq(f32(0, 1))) << text_of(f32());
    EXPECT_TRUE(f64().eq(f64(0, 1)));
}

TEST(fraction, conversions_of_45_over_25)
{
    f32 l_value(45, 25);
    EXPECT_EQ(l_value.as_int(), 1u);
    EXPECT_EQ(l_value.as_rounded_int(), 2u);
    EXPECT_EQ(l_value.modulus(), 20u);
    EXPECT_FLOAT_EQ(l_value.as_float(), 1.8f);
    f32 const l_simple = l_value.simplified();
    EXPECT_TRUE(l_value.eq(f32(45, 25))) << "simplified leaves its object alone";
    EXPECT_TRUE(l_simple.eq(f32(9, 5)));
    EXPECT_TRUE(l_value.simplify().eq(f32(9, 5)));
    EXPECT_EQ(f32(5, 2).as_rounded_int(), 3u) << "an exact half goes up";
    EXPECT_EQ(f32(4, 3).as_rounded_int(), 1u);
    EXPECT_TRUE(f32(0, 7).simplified().eq(f32(0, 1)));
}

TEST(fraction, value_equality_against_representation_equality)
{
    EXPECT_TRUE(f32(1, 2) == f32(2, 4));
    EXPECT_FALSE(f32(1, 2).eq(f32(2, 4)));
    EXPECT_TRUE(f32(4, 2) == 2u);
    EXPECT_FALSE(f32(4, 2).eq(2u));
    EXPECT_TRUE(f32(2, 1).eq(2u));
    EXPECT_TRUE(f32(6, 2).simplified().eq(3u));
}

// Every comparison operator from the expected order of the two values: -1 below, 0 equal, 1 above.
template <class R> void expect_order(f32 const &a_left, R const &a_right, int a_order)
{
    SCOPED_TRACE(text_of(a_left) + " against order " + std::to_string(a_order));
    EXPECT_EQ(a_left == a_right, a_order == 0);
    EXPECT_EQ(a_left != a_right, a_order != 0);
    EXPECT_EQ(a_left < a_right, a_order < 0);
    EXPECT_EQ(a_left <= a_right, a_order <= 0);
    EXPECT_EQ(a_left > a_right, a_order > 0);
    EXPECT_EQ(a_left >= a_right, a_order >= 0);
}

TEST(fraction, comparison_table)
{
    struct row {
        f32 left, right;
        int order;
    } const l_rows[] = {
        {f32(1, 3), f32(1, 2), -1},
        {f32(2, 4), f32(1, 2), 0},
        {f32(3, 4), f32(2, 3), 1},
        {f32(0, 5), f32(0, 1), 0},
        // Cross products wrap in 32 bits: 65536*65536 and 0*1 are both 0.
        {f32(65536, 1), f32(0, 65536), 0},
    };
    for (row const &l_row : l_rows) {
        expect_order(l_row.left, l_row.right, l_row.order);
    }
    struct value_row {
        f32 left;
        unsigned int right;
        int order;
    } const l_values[] = {{f32(6, 2), 3, 0}, {f32(5, 2), 3, -1}, {f32(7, 2), 3, 1}, {f32(0, 0), 9, 0}};
    for (value_row const &l_row : l_values) {
        expect_order(l_row.left, l_row.right, l_row.order);
    }
}

// The plain and compound forms of one operator, against a fraction and against a number.
struct operation {
    char const *name;
    f32 (*plain)(f32 const &, f32 const &);
    f32 &(*compound)(f32 &, f32 const &);
    f32 (*plain_number)(f32 const &, unsigned int);
    f32 &(*compound_number)(f32 &, unsigned int);
};

#define ORDWEL_FRACTION_OPERATION(a_op, a_compound_op)                                                                 \
    operation                                                                                                          \
    {                                                                                                                  \
#a_op, [](f32 const &a_left, f32 const &a_right) { return f32(a_left a_op a_right); },                         \
            [](f32 &a_left, f32 const &a_right) -> f32 & { return a_left a_compound_op a_right; },                     \
            [](f32 const &a_left, unsigned int a_right) { return f32(a_left a_op a_right); },                          \
            [](f32 &a_left, unsigned int a_right) -> f32 & { return a_left a_compound_op a_right; }       \
    }
operation const k_mul = ORDWEL_FRACTION_OPERATION(*, *=);
operation const k_div = ORDWEL_FRACTION_OPERATION(/, /=);
operation const k_add = ORDWEL_FRACTION_OPERATION(+, +=);
operation const k_sub = ORDWEL_FRACTION_OPERATION(-, -=);
operation const k_mod = ORDWEL_FRACTION_OPERATION(%, %=);
#undef ORDWEL_FRACTION_OPERATION

// Results are exact field states: nothing is reduced, and the compound form matches the plain one.
TEST(fraction, arithmetic_table_with_fractions)
{
    unsigned int const k_max = std::numeric_limits<unsigned int>::max();
    struct row {
        f32 left;
        operation const *op;
        f32 right;
        f32 expected;
    } const l_rows[] = {
        {f32(1, 2), &k_add, f32(1, 3), f32(5, 6)},
        {f32(1, 6), &k_add, f32(1, 3), f32(3, 6)},
        {f32(1, 2), &k_add, f32(1, 2), f32(2, 2)},
        {f32(3, 4), &k_sub, f32(1, 4), f32(2, 4)},
        {f32(1, 2), &k_sub, f32(1, 3), f32(1, 6)},
        // Below zero wraps in 32 bits.
        {f32(1, 3), &k_sub, f32(1, 2), f32(k_max, 6)},
        {f32(2, 3), &k_mul, f32(4, 5), f32(8, 15)},
        {f32(2, 3), &k_div, f32(4, 5), f32(10, 12)},
        {f32(7, 2), &k_mod, f32(3, 2), f32(2, 6)},
        {f32(5, 1), &k_mod, f32(2, 1), f32(1, 2)},
        // Products wrap: 65536 * 65536 is 0.
        {f32(65536, 1), &k_mul, f32(65536, 3), f32(0, 3)},
        // A zero left denominator passes into the result.
        {f32(3, 0), &k_add, f32(1, 2), f32(3, 0)},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(text_of(l_row.left) + " " + l_row.op->name + " " + text_of(l_row.right));
        f32 const l_plain = l_row.op->plain(l_row.left, l_row.right);
        EXPECT_TRUE(l_plain.eq(l_row.expected)) << "gives " << text_of(l_plain);
        f32 l_compound = l_row.left;
        EXPECT_EQ(&l_row.op->compound(l_compound, l_row.right), &l_compound);
        EXPECT_TRUE(l_compound.eq(l_plain)) << "compound form gives " << text_of(l_compound);
    }
}

TEST(fraction, arithmetic_table_with_numbers)
{
    unsigned int const k_max = std::numeric_limits<unsigned int>::max();
    struct row {
        f32 left;
        operation const *op;
        unsigned int right;
        f32 expected;
    } const l_rows[] = {
        {f32(3, 4), &k_mul, 2, f32(6, 4)},         {f32(3, 4), &k_div, 2, f32(3, 8)},
        {f32(3, 4), &k_add, 2, f32(11, 4)},        {f32(11, 4), &k_sub, 2, f32(3, 4)},
        {f32(1, 4), &k_sub, 1, f32(k_max - 2, 4)}, {f32(7, 2), &k_mod, 3, f32(1, 6)},
        {f32(9, 1), &k_mod, 4, f32(1, 4)},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(text_of(l_row.left) + " " + l_row.op->name + " " + std::to_string(l_row.right));
        f32 const l_plain = l_row.op->plain_number(l_row.left, l_row.right);
        EXPECT_TRUE(l_plain.eq(l_row.expected)) << "gives " << text_of(l_plain);
        f32 l_compound = l_row.left;
        EXPECT_TRUE(l_row.op->compound_number(l_compound, l_row.right).eq(l_plain));
    }
}

TEST(fraction, compound_forms_with_the_object_itself)
{
    for (operation const *l_operation : {&k_mul, &k_div, &k_add, &k_sub, &k_mod}) {
        f32 l_value(3, 4);
        f32 const l_plain = l_operation->plain(l_value, l_value);
        l_operation->compound(l_value, l_value);
        EXPECT_TRUE(l_value.eq(l_plain)) << l_operation->name << " gives " << text_of(l_value);
    }
}

TEST(fraction, stepping)
{
    f32 l_value(3, 4);
    f32 const l_before = l_value++;
    EXPECT_TRUE(l_before.eq(f32(3, 4)));
    EXPECT_TRUE(l_value.eq(f32(7, 4)));
    EXPECT_TRUE((++l_value).eq(f32(11, 4)));
    EXPECT_TRUE((l_value--).eq(f32(11, 4)));
    EXPECT_TRUE((--l_value).eq(f32(3, 4)));
    f32 l_small(1, 4);
    --l_small;
    EXPECT_EQ(l_small.numer(), std::numeric_limits<unsigned int>::max() - 2) << "wraps below zero";

    f64 l_wide(std::numeric_limits<unsigned long long>::max(), 2);
    ++l_wide;
    EXPECT_EQ(l_wide.numer(), 1u) << "wraps past 2^64";
}

TEST(fraction, reciprocal_and_float)
{
    EXPECT_TRUE(f32(0, 1).reciprocal().eq(f32(1, 0)));
    EXPECT_TRUE(f32(3, 7).reciprocal().eq(f32(7, 3)));
    EXPECT_TRUE(std::isinf(f32(1, 0).as_float()));
    EXPECT_TRUE(std::isnan(f32(0, 0).as_float()));
    // Converted as unsigned values: a numerator above 2^63 stays positive.
    f64 const l_big(18446744073709551615ull, 2);
    EXPECT_DOUBLE_EQ(l_big.as_float(), 9223372036854775807.5);
    EXPECT_FLOAT_EQ(f32(4294967295u, 1).as_float(), 4294967295.0f);
}

TEST(fraction, gcd_by_remainders)
{
    struct row {
        unsigned int a, b, expected;
    } const l_rows[] = {{12, 18, 6}, {18, 12, 6}, {0, 9, 9}, {9, 0, 9}, {0, 0, 0}, {17, 5, 1}, {1, 1, 1}};
    for (row const &l_row : l_rows) {
        EXPECT_EQ(probe::call_gcd(l_row.a, l_row.b), l_row.expected) << l_row.a << ", " << l_row.b;
    }
}

// The integer divisions with a zero divisor are defined: quotient 0, remainder the dividend.
TEST(fraction, zero_divisors_give_defined_results)
{
    f32 const l_infinite(7, 0);
    EXPECT_EQ(l_infinite.as_int(), 0u);
    EXPECT_EQ(l_infinite.as_rounded_int(), 0u);
    EXPECT_EQ(l_infinite.modulus(), 7u);
    EXPECT_TRUE(l_infinite.simplified().eq(f32(1, 0)));
    EXPECT_TRUE(f32(0, 0).simplified().eq(f32(0, 0)));
    EXPECT_TRUE((f32(1, 2) + f32(3, 0)).eq(f32(3, 0)));
    EXPECT_TRUE((f32(1, 2) - f32(3, 0)).eq(f32(0u - 3u, 0)));
    EXPECT_TRUE((f32(0, 0) + f32(0, 0)).eq(f32(0, 0)));
    EXPECT_TRUE((f32(7, 2) % f32(0, 5)).eq(f32(35, 0)));
    EXPECT_TRUE((f32(7, 2) % 0u).eq(f32(7, 0)));
    EXPECT_EQ(f64(5, 0).as_int(), 0u);
    EXPECT_EQ(f64(5, 0).modulus(), 5u);
}

} // namespace
