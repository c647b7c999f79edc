// SPDX-License-Identifier: MIT
#ifndef ORDWEL_FRACTION_H
#define ORDWEL_FRACTION_H

#include <type_traits>

#include <ordwel/export.h>

namespace ordwel {

/// An exact rational number: an unsigned numerator over an unsigned denominator, kept exactly as
/// set. Nothing reduces it unless simplify() or simplified() is called, so 2/4 and 1/2 are two
/// representations of one value: the comparison operators compare values, eq() compares
/// representations.
///
/// All arithmetic is done in T and wraps modulo 2^width without notice; comparisons are true
/// comparisons only while the cross products fit in T. An integer division by a zero divisor never
/// traps: its quotient is 0 and its remainder is the dividend (so x/0 simplifies to 1/0 and 0/0
/// stays 0/0). Nothing here raises.
///
/// Instantiated for unsigned int (as_float gives float) and unsigned long long (double).
template <typename T> class fraction {
    static_assert(std::is_unsigned<T>::value, "fraction holds unsigned fields");

public:
    /// The floating type of as_float(): float for fields of up to 32 bits, else double.
    using float_type = typename std::conditional<(sizeof(T) <= 4), float, double>::type;

    /// a_numer / a_denom as given, not reduced; the default is 0/1.
    fraction(T a_numer = 0, T a_denom = 1) : m_numer(a_numer), m_denom(a_denom) {}
    /// The same two fields.
    fraction(fraction const &a_other) = default;
    /// Takes over both fields.
    fraction &operator=(fraction const &a_other) = default;
    ~fraction() = default;

    /// The numerator.
    [[nodiscard]] T numer() const { return m_numer; }
    /// The denominator.
    [[nodiscard]] T denom() const { return m_denom; }
    /// Sets the numerator alone.
    void numer(T a_numer) { m_numer = a_numer; }
    /// Sets the denominator alone.
    void denom(T a_denom) { m_denom = a_denom; }
    /// Sets both fields, as given.
    void set(T a_numer, T a_denom)
    {
        m_numer = a_numer;
        m_denom = a_denom;
    }
    /// Takes over both fields of a_other.
    void set(fraction const &a_other) { *this = a_other; }

    /// Value comparisons through cross products (a/b against c/d: a*d against c*b; against v: a
    /// against b*v), so 1/2 == 2/4. The products wrap in T.
    ///@{
    [[nodiscard]] bool operator==(fraction const &a_other) const; ///< Equal value to c/d.
    [[nodiscard]] bool operator!=(fraction const &a_other) const; ///< Different value from c/d.
    [[nodiscard]] bool operator<(fraction const &a_other) const;  ///< Value lower than c/d.
    [[nodiscard]] bool operator<=(fraction const &a_other) const; ///< Value lower than or equal to c/d.
    [[nodiscard]] bool operator>(fraction const &a_other) const;  ///< Value higher than c/d.
    [[nodiscard]] bool operator>=(fraction const &a_other) const; ///< Value higher than or equal to c/d.
    [[nodiscard]] bool operator==(T a_value) const;               ///< Equal value to v.
    [[nodiscard]] bool operator!=(T a_value) const;               ///< Different value from v.
    [[nodiscard]] bool operator<(T a_value) const;                ///< Value lower than v.
    [[nodiscard]] bool operator<=(T a_value) const;               ///< Value lower than or equal to v.
    [[nodiscard]] bool operator>(T a_value) const;                ///< Value higher than v.
    [[nodiscard]] bool operator>=(T a_value) const;               ///< Value higher than or equal to v.
    ///@}

    /// Representation equality: the same two fields (against v: v/1), so 1/2 is not eq 2/4.
    ///@{
    [[nodiscard]] bool eq(fraction const &a_other) const; ///< Same fields as c/d.
    [[nodiscard]] bool eq(T a_value) const;               ///< Same fields as v.
    ///@}

    /// The product (a*c)/(b*d) and the quotient (a*d)/(b*c), not reduced; an integer operand v is
    /// v/1.
    ///@{
    [[nodiscard]] fraction operator*(fraction const &a_other) const; ///< The product with c/d.
    [[nodiscard]] fraction operator/(fraction const &a_other) const; ///< The quotient with c/d.
    ///@}
    /// Sum and difference: the denominators meet at their least common multiple through
    /// gcd(left, right); the result is not reduced: 1/6 + 1/3 is 3/6. The difference wraps below 0.
    ///@{
    [[nodiscard]] fraction operator+(fraction const &a_other) const; ///< The sum with c/d.
    [[nodiscard]] fraction operator-(fraction const &a_other) const; ///< The difference with c/d.
    ///@}
    /// ((a*d) mod e) / e with e = b*c: the denominator is the product itself (7/2 % 3/2 is 2/6).
    [[nodiscard]] fraction operator%(fraction const &a_other) const; ///< The remainder with c/d.
    /// The operators above with v/1 as the right operand.
    ///@{
    [[nodiscard]] fraction operator*(T a_value) const; ///< The product with v.
    [[nodiscard]] fraction operator/(T a_value) const; ///< The quotient with v.
    [[nodiscard]] fraction operator+(T a_value) const; ///< The sum with v.
    [[nodiscard]] fraction operator-(T a_value) const; ///< The difference with v.
    [[nodiscard]] fraction operator%(T a_value) const; ///< The remainder with v.
    ///@}

    /// The binary operator above, stored in this fraction; gives *this.
    ///@{
    fraction &operator*=(fraction const &a_other); ///< Multiplies by c/d.
    fraction &operator/=(fraction const &a_other); ///< Divides by c/d.
    fraction &operator+=(fraction const &a_other); ///< Adds c/d.
    fraction &operator-=(fraction const &a_other); ///< Subtracts c/d.
    fraction &operator%=(fraction const &a_other); ///< Keeps the remainder by c/d.
    fraction &operator*=(T a_value);               ///< Multiplies by v.
    fraction &operator/=(T a_value);               ///< Divides by v.
    fraction &operator+=(T a_value);               ///< Adds v.
    fraction &operator-=(T a_value);               ///< Subtracts v.
    fraction &operator%=(T a_value);               ///< Keeps the remainder by v.
    ///@}

    /// One whole unit: the denominator is added to (or taken from) the numerator. The prefix forms
    /// give *this, the postfix forms the value before the step.
    ///@{
    fraction &operator++();   ///< Adds one unit, gives *this.
    fraction operator++(int); ///< Adds one unit, gives the old value.
    fraction &operator--();   ///< Takes one unit, gives *this.
    fraction operator--(int); ///< Takes one unit, gives the old value.
    ///@}

    /// a/b truncated (0 for a zero denominator).
    [[nodiscard]] T as_int() const;
    /// (a + b/2)/b: rounded half up (0 for a zero denominator).
    [[nodiscard]] T as_rounded_int() const;
    /// a mod b (a itself for a zero denominator).
    [[nodiscard]] T modulus() const;
    /// Numerator and denominator converted as unsigned values, divided once in the floating type:
    /// x/0 is infinity, 0/0 NaN.
    [[nodiscard]] float_type as_float() const;

    /// b/a: the two fields swapped.
    [[nodiscard]] fraction reciprocal() const;
    /// A copy with both fields divided by their greatest common divisor (x/0 gives 1/0, 0/0 stays).
    [[nodiscard]] fraction simplified() const;
    /// Divides both fields by their greatest common divisor; gives *this.
    fraction &simplify();

protected:
    /// Euclid by remainders, body run at least once: gcd(0, b) = b, gcd(a, 0) = a, gcd(0, 0) = 0.
    [[nodiscard]] static T gcd(T a_a, T a_b);

    T m_numer; ///< The numerator.
    T m_denom; ///< The denominator.
};

extern template class ORDWEL_API fraction<unsigned int>;
extern template class ORDWEL_API fraction<unsigned long long>;

} // namespace ordwel

#endif
