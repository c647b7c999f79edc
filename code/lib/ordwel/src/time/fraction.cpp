// SPDX-License-Identifier: MIT
#include <ordwel/fraction.h>

#include "core/arith.h"

namespace ordwel {

using arith::quotient;
using arith::remainder;

template <typename T> bool fraction<T>::operator==(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) == T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator!=(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) != T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator<(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) < T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator<=(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) <= T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator>(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) > T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator>=(fraction const &a_other) const
{
    return T(m_numer * a_other.m_denom) >= T(a_other.m_numer * m_denom);
}

template <typename T> bool fraction<T>::operator==(T a_value) const
{
    return m_numer == T(m_denom * a_value);
}

template <typename T> bool fraction<T>::operator!=(T a_value) const
{
    return m_numer != T(m_denom * a_value);
}

template <typename T> bool fraction<T>::operator<(T a_value) const
{
    return m_numer < T(m_denom * a_value);
}

template <typename T> bool fraction<T>::operator<=(T a_value) const
{
    return m_numer <= T(m_denom * a_value);
}

template <typename T> bool fraction<T>::operator>(T a_value) const
{
    return m_numer > T(m_denom * a_value);
}

template <typename T> bool fraction<T>::operator>=(T a_value) const
{
    return m_numer >= T(m_denom * a_value);
}

template <typename T> bool fraction<T>::eq(fraction const &a_other) const
{
    return m_numer == a_other.m_numer && m_denom == a_other.m_denom;
}

template <typename T> bool fraction<T>::eq(T a_value) const
{
    return m_numer == a_value && m_denom == 1;
}

template <typename T> fraction<T> fraction<T>::operator*(fraction const &a_other) const
{
    return fraction(T(m_numer * a_other.m_numer), T(m_denom * a_other.m_denom));
}

template <typename T> fraction<T> fraction<T>::operator/(fraction const &a_other) const
{
    return fraction(T(m_numer * a_other.m_denom), T(m_denom * a_other.m_numer));
}

template <typename T> fraction<T> fraction<T>::operator+(fraction const &a_other) const
{
    T const l_gcd = gcd(m_denom, a_other.m_denom);
    T const l_left = quotient(a_other.m_denom, l_gcd);
    T const l_right = quotient(m_denom, l_gcd);
    return fraction(T(m_numer * l_left + a_other.m_numer * l_right), T(l_right * a_other.m_denom));
}

template <typename T> fraction<T> fraction<T>::operator-(fraction const &a_other) const
{
    T const l_gcd = gcd(m_denom, a_other.m_denom);
    T const l_left = quotient(a_other.m_denom, l_gcd);
    T const l_right = quotient(m_denom, l_gcd);
    return fraction(T(m_numer * l_left - a_other.m_numer * l_right), T(l_right * a_other.m_denom));
}

template <typename T> fraction<T> fraction<T>::operator%(fraction const &a_other) const
{
    T const l_denom = T(m_denom * a_other.m_numer);
    return fraction(remainder(T(m_numer * a_other.m_denom), l_denom), l_denom);
}

template <typename T> fraction<T> fraction<T>::operator*(T a_value) const
{
    return fraction(T(m_numer * a_value), m_denom);
}

template <typename T> fraction<T> fraction<T>::operator/(T a_value) const
{
    return fraction(m_numer, T(m_denom * a_value));
}

template <typename T> fraction<T> fraction<T>::operator+(T a_value) const
{
    return fraction(T(m_numer + m_denom * a_value), m_denom);
}

template <typename T> fraction<T> fraction<T>::operator-(T a_value) const
{
    return fraction(T(m_numer - m_denom * a_value), m_denom);
}

template <typename T> fraction<T> fraction<T>::operator%(T a_value) const
{
    T const l_denom = T(m_denom * a_value);
    return fraction(remainder(m_numer, l_denom), l_denom);
}

// Each compound form computes its plain form into a temporary first, so an operand that is the
// object itself is read before anything is stored.
template <typename T> fraction<T> &fraction<T>::operator*=(fraction const &a_other)
{
    return *this = *this * a_other;
}

template <typename T> fraction<T> &fraction<T>::operator/=(fraction const &a_other)
{
    return *this = *this / a_other;
}

template <typename T> fraction<T> &fraction<T>::operator+=(fraction const &a_other)
{
    return *this = *this + a_other;
}

template <typename T> fraction<T> &fraction<T>::operator-=(fraction const &a_other)
{
    return *this = *this - a_other;
}

template <typename T> fraction<T> &fraction<T>::operator%=(fraction const &a_other)
{
    return *this = *this % a_other;
}

template <typename T> fraction<T> &fraction<T>::operator*=(T a_value)
{
    return *this = *this * a_value;
}

template <typename T> fraction<T> &fraction<T>::operator/=(T a_value)
{
    return *this = *this / a_value;
}

template <typename T> fraction<T> &fraction<T>::operator+=(T a_value)
{
    return *this = *this + a_value;
}

template <typename T> fraction<T> &fraction<T>::operator-=(T a_value)
{
    return *this = *this - a_value;
}

template <typename T> fraction<T> &fraction<T>::operator%=(T a_value)
{
    return *this = *this % a_value;
}

template <typename T> fraction<T> &fraction<T>::operator++()
{
    m_numer = T(m_numer + m_denom);
    return *this;
}

template <typename T> fraction<T> fraction<T>::operator++(int)
{
    fraction const l_before = *this;
    m_numer = T(m_numer + m_denom);
    return l_before;
}

template <typename T> fraction<T> &fraction<T>::operator--()
{
    m_numer = T(m_numer - m_denom);
    return *this;
}

template <typename T> fraction<T> fraction<T>::operator--(int)
{
    fraction const l_before = *this;
    m_numer = T(m_numer - m_denom);
    return l_before;
}

template <typename T> T fraction<T>::as_int() const
{
    return quotient(m_numer, m_denom);
}

template <typename T> T fraction<T>::as_rounded_int() const
{
    return quotient(T(m_numer + m_denom / 2), m_denom);
}

template <typename T> T fraction<T>::modulus() const
{
    return remainder(m_numer, m_denom);
}

template <typename T> typename fraction<T>::float_type fraction<T>::as_float() const
{
    return static_cast<float_type>(m_numer) / static_cast<float_type>(m_denom);
}

template <typename T> fraction<T> fraction<T>::reciprocal() const
{
    return fraction(m_denom, m_numer);
}

template <typename T> fraction<T> fraction<T>::simplified() const
{
    fraction l_result = *this;
    l_result.simplify();
    return l_result;
}

template <typename T> fraction<T> &fraction<T>::simplify()
{
    T const l_gcd = gcd(m_numer, m_denom);
    m_numer = quotient(m_numer, l_gcd);
    m_denom = quotient(m_denom, l_gcd);
    return *this;
}

template <typename T> T fraction<T>::gcd(T a_a, T a_b)
{
    do {
        T const l_before = a_a;
        a_a = a_b;
        a_b = remainder(l_before, a_a);
    } while (a_b != 0);
    return a_a;
}

template class fraction<unsigned int>;
template class fraction<unsigned long long>;

} // namespace ordwel
