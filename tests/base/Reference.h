#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>

#include <array>
#include <cmath>
#include <random>

// Plain double arithmetic, written apart from the library, to compare it with.
namespace reference {

using Matrix = std::array<std::array<double, 4>, 4>;
using Vector = std::array<double, 4>;

inline Matrix identity()
{
    Matrix m{};
    for (int i = 0; i < 4; ++i)
        m[i][i] = 1;
    return m;
}

inline Matrix from(const SbMatrix& m)
{
    Matrix r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r[i][j] = m[i][j];
    return r;
}

inline Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix r{};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 4; ++k)
                r[i][j] += a[i][k] * b[k][j];
    return r;
}

inline Vector applied(const Vector& v, const Matrix& m)
{
    Vector r{};
    for (int j = 0; j < 4; ++j)
        for (int k = 0; k < 4; ++k)
            r[j] += v[k] * m[k][j];
    return r;
}

inline Matrix translation(const SbVec3f& t)
{
    Matrix m = identity();
    for (int i = 0; i < 3; ++i)
        m[3][i] = t[i];
    return m;
}

inline Matrix scaling(const SbVec3f& s)
{
    Matrix m = identity();
    for (int i = 0; i < 3; ++i)
        m[i][i] = s[i];
    return m;
}

/// Rodrigues' formula.
inline Matrix rotation(const SbVec3f& axis, double angle)
{
    const double length = std::sqrt(double(axis[0]) * axis[0] + double(axis[1]) * axis[1]
                                    + double(axis[2]) * axis[2]);
    const double u[3] = {axis[0] / length, axis[1] / length, axis[2] / length};
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double cross[3][3] = {{0, u[2], -u[1]}, {-u[2], 0, u[0]}, {u[1], -u[0], 0}};
    Matrix m = identity();
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = (i == j ? c : 0) + (1 - c) * u[i] * u[j] + s * cross[i][j];
    return m;
}

/// The largest difference, relative to the size of the expected values where they exceed 1.
inline double difference(const Matrix& expected, const SbMatrix& m)
{
    double worst = 0;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            worst = std::fmax(worst, std::fabs(expected[i][j] - m[i][j])
                                         / std::fmax(1, std::fabs(expected[i][j])));
    return worst;
}

class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    float number(double low, double high)
    {
        return static_cast<float>(std::uniform_real_distribution<double>(low, high)(m_engine));
    }
    SbVec3f vector(double low = -10, double high = 10)
    {
        return {number(low, high), number(low, high), number(low, high)};
    }
    SbVec3f axis()
    {
        SbVec3f v;
        do
            v = vector(-1, 1);
        while (v.length() < 0.1f);
        return v;
    }
    SbRotation rotation() { return {axis(), number(-6, 6)}; }
    SbMatrix affine()
    {
        SbMatrix m;
        m.setTransform(vector(), rotation(), vector(0.2, 5), rotation());
        return m;
    }

private:
    std::mt19937 m_engine;
};

} // namespace reference
