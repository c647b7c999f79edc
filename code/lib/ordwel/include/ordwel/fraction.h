#ifndef ORDWEL_FRACTION_H
#define ORDWEL_FRACTION_H

#include <type_traits>

#include <ordwel/export.h>

namespace ordwel {

// An exact rational number: an unsigned numerator over an unsigned denominator, kept exactly as
// set. Nothing reduces it unless simplify() or simplified() is called, so 2/4 and 1/2 are two
// representations of one value: the comparison operators compare values, eq() compares
// representations.
//
// All arithmetic is done in T and wraps modulo 2^width without notice; comparisons are true
// comparisons only while the cross products fit in T. An integer division by a zero divisor never
// traps: its quotient is 0 and its remainder is the dividend (so x/0 simplifies to 1/0 and 0/0
// stays 0/0).
//
// Instantiated for unsigned int (as_float gives float) and unsigned long long (double).
template <typename T> class fraction {
    static_assert(std::is_unsigned<T>::value, "fraction holds unsigned fields");

public:
    using float_type = typename std::conditional<(sizeof(T) <= 4), float, double>::type;

    fraction(T a_numer = 0, T a_denom = 1) : m_numer(a_numer), m_denom(a_denom) {}
    fraction(fraction const &a_other) = default;
    fraction &operator=(fraction const &a_other) = default;
    ~fraction() = default;

    T numer() const { return m_numer; }
    T denom() const { return m_denom; }
    void numer(T a_numer) { m_numer = a_numer; }
    void denom(T a_denom) { m_denom = a_denom; }
    void set(T a_numer, T a_denom)
    {
        m_numer = a_numer;
        m_denom = a_denom;
    }
    void set(fraction const &a_other) { *this = a_other; }

    // Value comparisons through cross products (a/b against c/d: a*d against c*b; against v: a
    // against b*v).
    bool operator==(fraction const &a_other) const;
    bool operator!=(fraction const &a_other) const;
    bool operator<(fraction const &a_other) const;
    bool operator<=(fraction const &a_other) const;
    bool operator>(fraction const &a_other) const;
    bool operator>=(fraction const &a_other) const;
    bool operator==(T a_value) const;
    bool operator!=(T a_value) const;
    bool operator<(T a_value) const;
    bool operator<=(T a_value) const;
    bool operator>(T a_value) const;
    bool operator>=(T a_value) const;

    // Representation equality: the same two fields (against v: v/1).
    bool eq(fraction const &a_other) const;
    bool eq(T a_value) const;

    fraction operator*(fraction const &a_other) const;
    fraction operator/(fraction const &a_other) const;
    // The denominators meet at their least common multiple through gcd(left, right); the result
    // is not reduced: 1/6 + 1/3 is 3/6.
    fraction operator+(fraction const &a_other) const;
    fraction operator-(fraction const &a_other) const;
    // ((a*d) mod e) / e with e = b*c: the denominator is the product itself (7/2 % 3/2 is 2/6).
    fraction operator%(fraction const &a_other) const;
    fraction operator*(T a_value) const;
    fraction operator/(T a_value) const;
    fraction operator+(T a_value) const;
    fraction operator-(T a_value) const;
    fraction operator%(T a_value) const;

    fraction &operator*=(fraction const &a_other);
    fraction &operator/=(fraction const &a_other);
    fraction &operator+=(fraction const &a_other);
    fraction &operator-=(fraction const &a_other);
    fraction &operator%=(fraction const &a_other);
    fraction &operator*=(T a_value);
    fraction &operator/=(T a_value);
    fraction &operator+=(T a_value);
    fraction &operator-=(T a_value);
    fraction &operator%=(T a_value);

    // One whole unit: the denominator is added to (or taken from) the numerator.
    fraction &operator++();
    fraction operator++(int);
    fraction &operator--();
    fraction operator--(int);

    // a/b truncated, (a + b/2)/b, and a mod b.
    T as_int() const;
    T as_rounded_int() const;
    T modulus() const;
    // Numerator and denominator converted as unsigned values, divided once in the floating type:
    // x/0 is infinity, 0/0 NaN.
    float_type as_float() const;

    fraction reciprocal() const;
    fraction simplified() const;
    fraction &simplify();

protected:
    // Euclid by remainders, body run at least once: gcd(0, b) = b, gcd(a, 0) = a, gcd(0, 0) = 0.
    static T gcd(T a_a, T a_b);

    T m_numer;
    T m_denom;
};

extern template class ORDWEL_API fraction<unsigned int>;
extern template class ORDWEL_API fraction<unsigned long long>;

} // namespace ordwel

#endif
