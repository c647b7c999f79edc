#include <ordwel/fraction.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;
using f32 = fraction<unsigned int>;
using f64 = fraction<unsigned long long>;

// Exposes the protected gcd.
struct probe : f32 {
    static unsigned int call_gcd(unsigned int a_a, unsigned int a_b) { return gcd(a_a, a_b); }
};

void expect_fields(f32 const &a_value, unsigned int a_numer, unsigned int a_denom)
{
    EXPECT_EQ(a_value.numer(), a_numer);
    EXPECT_EQ(a_value.denom(), a_denom);
}

TEST(fraction, layout_and_defaults)
{
    static_assert(sizeof(f32) == 2 * sizeof(unsigned int), "two fields, no hidden state");
    static_assert(sizeof(f64) == 2 * sizeof(unsigned long long), "two fields, no hidden state");
    static_assert(std::is_same<f32::float_type, float>::value, "float for 32 bits");
    static_assert(std::is_same<f64::float_type, double>::value, "double for 64 bits");
    expect_fields(f32(), 0, 1);
    EXPECT_EQ(f64().numer(), 0u);
    EXPECT_EQ(f64().denom(), 1u);

    f32 l_value(3, 4);
    l_value.numer(5);
    expect_fields(l_value, 5, 4);
    l_value.denom(0);
    expect_fields(l_value, 5, 0);
    l_value.set(7, 8);
    expect_fields(l_value, 7, 8);
    l_value.set(f32(1, 2));
    expect_fields(l_value, 1, 2);
}

TEST(fraction, conversions_of_45_over_25)
{
    f32 l_value(45, 25);
    EXPECT_EQ(l_value.as_int(), 1u);
    EXPECT_EQ(l_value.as_rounded_int(), 2u);
    EXPECT_EQ(l_value.modulus(), 20u);
    EXPECT_FLOAT_EQ(l_value.as_float(), 1.8f);
    f32 const l_simple = l_value.simplified();
    expect_fields(l_value, 45, 25);
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

// Each comparison operator against fractions and plain numbers: {left, right, ==, !=, <, <=, >, >=}.
TEST(fraction, comparison_table)
{
    struct row {
        f32 left, right;
        bool eq, ne, lt, le, gt, ge;
    } const l_rows[] = {
        {f32(1, 3), f32(1, 2), false, true, true, true, false, false},
        {f32(2, 4), f32(1, 2), true, false, false, true, false, true},
        {f32(3, 4), f32(2, 3), false, true, false, false, true, true},
        {f32(0, 5), f32(0, 1), true, false, false, true, false, true},
        // Cross products wrap in 32 bits: 65536*65536 and 0*1 are both 0.
        {f32(65536, 1), f32(0, 65536), true, false, false, true, false, true},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(l_row.left == l_row.right, l_row.eq);
        EXPECT_EQ(l_row.left != l_row.right, l_row.ne);
        EXPECT_EQ(l_row.left < l_row.right, l_row.lt);
        EXPECT_EQ(l_row.left <= l_row.right, l_row.le);
        EXPECT_EQ(l_row.left > l_row.right, l_row.gt);
        EXPECT_EQ(l_row.left >= l_row.right, l_row.ge);
    }
    struct value_row {
        f32 left;
        unsigned int right;
        bool eq, ne, lt, le, gt, ge;
    } const l_values[] = {
        {f32(6, 2), 3, true, false, false, true, false, true},
        {f32(5, 2), 3, false, true, true, true, false, false},
        {f32(7, 2), 3, false, true, false, false, true, true},
        {f32(0, 0), 9, true, false, false, true, false, true},
    };
    for (value_row const &l_row : l_values) {
        EXPECT_EQ(l_row.left == l_row.right, l_row.eq);
        EXPECT_EQ(l_row.left != l_row.right, l_row.ne);
        EXPECT_EQ(l_row.left < l_row.right, l_row.lt);
        EXPECT_EQ(l_row.left <= l_row.right, l_row.le);
        EXPECT_EQ(l_row.left > l_row.right, l_row.gt);
        EXPECT_EQ(l_row.left >= l_row.right, l_row.ge);
    }
}

enum op { op_mul, op_div, op_add, op_sub, op_mod };

f32 apply(f32 const &a_left, op a_op, f32 const &a_right)
{
    switch (a_op) {
    case op_mul:
        return a_left * a_right;
    case op_div:
        return a_left / a_right;
    case op_add:
        return a_left + a_right;
    case op_sub:
        return a_left - a_right;
    case op_mod:
        return a_left % a_right;
    }
    return f32();
}

f32 &apply_compound(f32 &a_left, op a_op, f32 const &a_right)
{
    switch (a_op) {
    case op_mul:
        return a_left *= a_right;
    case op_div:
        return a_left /= a_right;
    case op_add:
        return a_left += a_right;
    case op_sub:
        return a_left -= a_right;
    case op_mod:
        return a_left %= a_right;
    }
    return a_left;
}

f32 apply(f32 const &a_left, op a_op, unsigned int a_right)
{
    switch (a_op) {
    case op_mul:
        return a_left * a_right;
    case op_div:
        return a_left / a_right;
    case op_add:
        return a_left + a_right;
    case op_sub:
        return a_left - a_right;
    case op_mod:
        return a_left % a_right;
    }
    return f32();
}

f32 &apply_compound(f32 &a_left, op a_op, unsigned int a_right)
{
    switch (a_op) {
    case op_mul:
        return a_left *= a_right;
    case op_div:
        return a_left /= a_right;
    case op_add:
        return a_left += a_right;
    case op_sub:
        return a_left -= a_right;
    case op_mod:
        return a_left %= a_right;
    }
    return a_left;
}

// Results are exact field states: nothing is reduced, and the compound form matches the plain one.
TEST(fraction, arithmetic_table_with_fractions)
{
    unsigned int const k_max = std::numeric_limits<unsigned int>::max();
    struct row {
        f32 left;
        op operation;
        f32 right;
        f32 expected;
    } const l_rows[] = {
        {f32(1, 2), op_add, f32(1, 3), f32(5, 6)},
        {f32(1, 6), op_add, f32(1, 3), f32(3, 6)},
        {f32(1, 2), op_add, f32(1, 2), f32(2, 2)},
        {f32(3, 4), op_sub, f32(1, 4), f32(2, 4)},
        {f32(1, 2), op_sub, f32(1, 3), f32(1, 6)},
        // Below zero wraps in 32 bits.
        {f32(1, 3), op_sub, f32(1, 2), f32(k_max, 6)},
        {f32(2, 3), op_mul, f32(4, 5), f32(8, 15)},
        {f32(2, 4), op_mul, f32(2, 4), f32(4, 16)},
        {f32(2, 3), op_div, f32(4, 5), f32(10, 12)},
        {f32(7, 2), op_mod, f32(3, 2), f32(2, 6)},
        {f32(5, 1), op_mod, f32(2, 1), f32(1, 2)},
        // Products wrap: 65536 * 65536 is 0.
        {f32(65536, 1), op_mul, f32(65536, 3), f32(0, 3)},
        // A zero left denominator passes into the result.
        {f32(3, 0), op_add, f32(1, 2), f32(3, 0)},
        {f32(3, 0), op_sub, f32(1, 2), f32(3, 0)},
    };
    for (row const &l_row : l_rows) {
        f32 const l_plain = apply(l_row.left, l_row.operation, l_row.right);
        EXPECT_TRUE(l_plain.eq(l_row.expected))
            << l_row.left.numer() << "/" << l_row.left.denom() << " op " << l_row.operation << " gives "
            << l_plain.numer() << "/" << l_plain.denom();
        f32 l_compound = l_row.left;
        f32 &l_ref = apply_compound(l_compound, l_row.operation, l_row.right);
        EXPECT_EQ(&l_ref, &l_compound);
        EXPECT_TRUE(l_compound.eq(l_plain)) << "compound form of op " << l_row.operation;
    }
}

TEST(fraction, arithmetic_table_with_numbers)
{
    unsigned int const k_max = std::numeric_limits<unsigned int>::max();
    struct row {
        f32 left;
        op operation;
        unsigned int right;
        f32 expected;
    } const l_rows[] = {
        {f32(3, 4), op_mul, 2, f32(6, 4)},         {f32(3, 4), op_div, 2, f32(3, 8)},
        {f32(3, 4), op_add, 2, f32(11, 4)},        {f32(11, 4), op_sub, 2, f32(3, 4)},
        {f32(1, 4), op_sub, 1, f32(k_max - 2, 4)}, {f32(7, 2), op_mod, 3, f32(1, 6)},
        {f32(9, 1), op_mod, 4, f32(1, 4)},
    };
    for (row const &l_row : l_rows) {
        f32 const l_plain = apply(l_row.left, l_row.operation, l_row.right);
        EXPECT_TRUE(l_plain.eq(l_row.expected))
            << l_row.left.numer() << "/" << l_row.left.denom() << " op " << l_row.operation << " " << l_row.right
            << " gives " << l_plain.numer() << "/" << l_plain.denom();
        f32 l_compound = l_row.left;
        EXPECT_TRUE(apply_compound(l_compound, l_row.operation, l_row.right).eq(l_plain));
    }
}

TEST(fraction, compound_forms_with_the_object_itself)
{
    for (op l_op : {op_mul, op_div, op_add, op_sub, op_mod}) {
        f32 l_value(3, 4);
        f32 const l_plain = apply(l_value, l_op, l_value);
        apply_compound(l_value, l_op, l_value);
        EXPECT_TRUE(l_value.eq(l_plain)) << "op " << l_op;
    }
    f32 l_value(3, 4);
    l_value += l_value;
    EXPECT_TRUE(l_value.eq(f32(6, 4)));
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
