#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// A vector of N numbers, stored contiguously, zero unless told otherwise.
/// Trivially copyable: arrays of vectors may be copied, hashed or uploaded as plain numbers.
/// Arithmetic is component by component and stays in T; lengths of whole-number vectors are floats.
/// Indices and pointers are not checked: they stand in inner loops and in constant expressions.
template <typename T, int N>
class SbVec {
    static_assert(std::is_arithmetic_v<T> && N >= 2);

public:
    using Value = T;
    /// The type in which lengths are measured: double for doubles, float for everything else.
    using Real = std::conditional_t<std::is_same_v<T, double>, double, float>;
    static constexpr int kSize = N;

    constexpr SbVec() = default;

    /// One value per component.
    template <typename... A>
    requires(sizeof...(A) == N
             && (std::is_convertible_v<A, T> && ...)) constexpr SbVec(A... components)
        : m_v{static_cast<T>(components)...}
    {
    }

    /// A vector one component shorter and the last component.
    constexpr SbVec(const SbVec<T, (N > 2 ? N - 1 : N)>& head, T last) requires(N > 2)
    {
        for (int i = 0; i < N - 1; ++i) {
            m_v[i] = head[i];
        }
        m_v[N - 1] = last;
    }

    /// Copies N values; unchecked.
    explicit constexpr SbVec(const T* values) { setValue(values); }
    SbVec(std::nullptr_t) = delete;

    /// Converts the components; fractions are cut off when T is a whole number.
    template <typename U>
    requires(!std::is_same_v<U, T>) explicit constexpr SbVec(const SbVec<U, N>& other)
    {
        setValue(other);
    }

    template <typename... A>
    requires(sizeof...(A) == N
             && (std::is_convertible_v<A, T> && ...)) constexpr SbVec& setValue(A... components)
    {
        return *this = SbVec(components...);
    }

    constexpr SbVec& setValue(const T* values)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = values[i];
        }
        return *this;
    }

    template <typename U>
    constexpr SbVec& setValue(const SbVec<U, N>& other)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = static_cast<T>(other[i]);
        }
        return *this;
    }

    /// The N components, contiguous.
    constexpr const T* getValue() const { return m_v; }
    constexpr T* getValue() { return m_v; }

    /// Copies the components into N variables.
    template <typename... A>
    requires(sizeof...(A) == N
             && (std::is_same_v<A, T> && ...)) constexpr void getValue(A&... out) const
    {
        int i = 0;
        ((out = m_v[i++]), ...);
    }

    /// A component, 0 <= i < N; unchecked.
    constexpr T& operator[](int i) { return m_v[i]; }
    constexpr const T& operator[](int i) const { return m_v[i]; }

    constexpr T dot(const SbVec& o) const
    {
        T sum = 0;
        for (int i = 0; i < N; ++i) {
            sum = static_cast<T>(sum + m_v[i] * o.m_v[i]);
        }
        return sum;
    }

    constexpr SbVec cross(const SbVec& o) const requires(N == 3)
    {
        return SbVec(m_v[1] * o.m_v[2] - m_v[2] * o.m_v[1], m_v[2] * o.m_v[0] - m_v[0] * o.m_v[2],
                     m_v[0] * o.m_v[1] - m_v[1] * o.m_v[0]);
    }

    constexpr Real sqrLength() const
    {
        Real sum = 0;
        for (int i = 0; i < N; ++i) {
            sum += static_cast<Real>(m_v[i]) * static_cast<Real>(m_v[i]);
        }
        return sum;
    }

    /// The length, right for the whole float range (summed in double).
    Real length() const { return static_cast<Real>(std::sqrt(sqrLengthInDouble())); }

    /// Makes the length 1 and returns the old one. A zero vector is left alone.
    Real normalize() requires std::is_floating_point_v<T>
    {
        const double old = std::sqrt(sqrLengthInDouble());
        if (old > 0) {
            for (T& c : m_v) {
                c = static_cast<T>(c / old);
            }
        }
        return static_cast<Real>(old);
    }

    /// The vector of length 1 in the same direction; zero for zero.
    SbVec normalized() const requires std::is_floating_point_v<T>
    {
        SbVec r = *this;
        r.normalize();
        return r;
    }

    constexpr void negate() { *this = -*this; }

    /// True when no component differs by more than `tolerance`; never true for not-a-number.
    constexpr bool equals(const SbVec& o, Real tolerance) const
    {
        for (int i = 0; i < N; ++i) {
            const Real d = static_cast<Real>(m_v[i]) - static_cast<Real>(o.m_v[i]);
            if (!(d <= tolerance && -d <= tolerance)) {
                return false;
            }
        }
        return true;
    }

    /// The point that these homogeneous coordinates stand for. A last component of 0 is not divided
    /// by.
    constexpr void getReal(SbVec<T, (N > 2 ? N - 1 : N)>& out) const
        requires(N > 2 && std::is_floating_point_v<T>)
    {
        const T w = m_v[N - 1];
        for (int i = 0; i < N - 1; ++i) {
            out[i] = (w == 0 || w == 1) ? m_v[i] : m_v[i] / w;
        }
    }

    constexpr SbVec& operator+=(const SbVec& o)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = static_cast<T>(m_v[i] + o.m_v[i]);
        }
        return *this;
    }

    constexpr SbVec& operator-=(const SbVec& o)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = static_cast<T>(m_v[i] - o.m_v[i]);
        }
        return *this;
    }

    constexpr SbVec& operator*=(T f)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = static_cast<T>(m_v[i] * f);
        }
        return *this;
    }

    /// Division by zero follows T: infinities for floating point, undefined for whole numbers.
    constexpr SbVec& operator/=(T f)
    {
        for (int i = 0; i < N; ++i) {
            m_v[i] = static_cast<T>(m_v[i] / f);
        }
        return *this;
    }

    constexpr SbVec operator-() const
    {
        SbVec r;
        for (int i = 0; i < N; ++i) {
            r.m_v[i] = static_cast<T>(-m_v[i]);
        }
        return r;
    }

    friend constexpr SbVec operator+(SbVec a, const SbVec& b) { return a += b; }
    friend constexpr SbVec operator-(SbVec a, const SbVec& b) { return a -= b; }
    friend constexpr SbVec operator*(SbVec a, T f) { return a *= f; }
    friend constexpr SbVec operator*(T f, SbVec a) { return a *= f; }
    friend constexpr SbVec operator/(SbVec a, T f) { return a /= f; }

    friend constexpr bool operator==(const SbVec& a, const SbVec& b)
    {
        for (int i = 0; i < N; ++i) {
            if (!(a.m_v[i] == b.m_v[i])) {
                return false;
            }
        }
        return true;
    }

private:
    double sqrLengthInDouble() const
    {
        double sum = 0;
        for (const T& c : m_v) {
            sum += static_cast<double>(c) * static_cast<double>(c);
        }
        return sum;
    }

    T m_v[N] = {};
};

using SbVec2f = SbVec<float, 2>;
using SbVec3f = SbVec<float, 3>;
using SbVec4f = SbVec<float, 4>;
using SbVec2d = SbVec<double, 2>;
using SbVec3d = SbVec<double, 3>;
using SbVec4d = SbVec<double, 4>;
using SbVec2b = SbVec<std::int8_t, 2>;
using SbVec3b = SbVec<std::int8_t, 3>;
using SbVec4b = SbVec<std::int8_t, 4>;
using SbVec2ub = SbVec<std::uint8_t, 2>;
using SbVec3ub = SbVec<std::uint8_t, 3>;
using SbVec4ub = SbVec<std::uint8_t, 4>;
using SbVec2s = SbVec<short, 2>;
using SbVec3s = SbVec<short, 3>;
using SbVec4s = SbVec<short, 4>;
using SbVec2us = SbVec<unsigned short, 2>;
using SbVec3us = SbVec<unsigned short, 3>;
using SbVec4us = SbVec<unsigned short, 4>;
using SbVec2i32 = SbVec<std::int32_t, 2>;
using SbVec3i32 = SbVec<std::int32_t, 3>;
using SbVec4i32 = SbVec<std::int32_t, 4>;
using SbVec2ui32 = SbVec<std::uint32_t, 2>;
using SbVec3ui32 = SbVec<std::uint32_t, 3>;
using SbVec4ui32 = SbVec<std::uint32_t, 4>;
