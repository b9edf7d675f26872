#include "RotationParts.h"

#include <kalmyr/base/SbVec.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>

namespace rotations {

namespace {

constexpr double kDegree = std::numbers::pi / 180;

double unitOf(const Notation& notation)
{
    return notation.isInDegrees ? kDegree : 1;
}

SbVec4d turnAbout(const SbVec3d& unitAxis, double angle)
{
    return {unitAxis * std::sin(angle / 2), std::cos(angle / 2)};
}

SbVec4d turnAbout(int axis, double angle)
{
    SbVec3d unit;
    unit[axis] = 1;
    return turnAbout(unit, angle);
}

/// First a, then b.
SbVec4d product(const SbVec4d& a, const SbVec4d& b)
{
    const SbVec3d u(a.getValue());
    const SbVec3d v(b.getValue());
    return {u * b[3] + v * a[3] + v.cross(u), a[3] * b[3] - u.dot(v)};
}

void columnMatrix(const SbVec4d& quaternion, Matrix& m)
{
    const SbVec4d q = quaternion.normalized();
    for (int column = 0; column < 3; ++column) {
        SbVec3d v;
        v[column] = 1;
        const SbVec3d u(q.getValue());
        const SbVec3d t = u.cross(v) * 2.;
        const SbVec3d turned = v + t * q[3] + u.cross(t);
        for (int row = 0; row < 3; ++row)
            m[row][column] = turned[row];
    }
}

SbVec4d eulerQuaternion(const EulerOrder& order, const double* angles)
{
    SbVec4d q(0, 0, 0, 1);
    for (const int axis : {order.first, order.second, order.third})
        q = product(q, turnAbout(axis, angles[axis]));
    return q;
}

void splitExactly(const Notation& notation, const SbRotation& rotation, double* numbers)
{
    const SbVec4d q{SbVec4f(rotation.getValue())};
    if (notation.parts == Parts::Quaternion) {
        std::copy_n(q.getValue(), 4, numbers);
        return;
    }
    if (notation.parts == Parts::Euler) {
        Matrix m;
        columnMatrix(q, m);
        splitEuler(kEulerOrders[notation.order], m, numbers);
    } else {
        SbVec3d axis(q.getValue());
        const double sine = axis.normalize();
        if (!(sine > 0))
            axis = SbVec3d(0, 0, 1);
        std::copy_n(axis.getValue(), 3, numbers);
        numbers[3] = 2 * std::atan2(sine, q[3]);
    }
    for (int i = 0; i < numberCount(notation.parts); ++i)
        if (isAngle(notation.parts, i))
            numbers[i] /= unitOf(notation);
}

} // namespace

int numberCount(Parts parts)
{
    return parts == Parts::Euler ? 3 : 4;
}

bool isAngle(Parts parts, int component)
{
    return parts == Parts::Euler || (parts == Parts::AxisAngle && component == 3);
}

bool make(const Notation& notation, const double* numbers, SbRotation& rotation)
{
    const int count = numberCount(notation.parts);
    if (!std::all_of(numbers, numbers + count, [](double number) { return std::isfinite(number); }))
        return false;
    SbVec4d q(0, 0, 0, 1);
    if (notation.parts == Parts::Quaternion) {
        q = SbVec4d(numbers);
        if (!(q.length() > 0))
            return false;
    } else if (notation.parts == Parts::AxisAngle) {
        SbVec3d axis(numbers);
        if (!(axis.normalize() > 0))
            return false;
        q = turnAbout(axis, numbers[3] * unitOf(notation));
    } else {
        double angles[3];
        std::transform(numbers, numbers + 3, angles,
                       [&](double number) { return number * unitOf(notation); });
        q = eulerQuaternion(kEulerOrders[notation.order], angles);
    }
    const SbVec4f single(q);
    rotation.setValue(single[0], single[1], single[2], single[3]);
    return true;
}

void splitEuler(const EulerOrder& order, const Matrix& m, double* angles)
{
    // Where the second angle is this near to a quarter turn, the other two turn about one axis.
    constexpr double kLocked = 1 - 1e-12;
    const auto [i, j, k, name] = order;
    const double sign = (j - i + 3) % 3 == 1 ? 1 : -1; // of the permutation
    const double sine = std::clamp(-sign * m[k][i], -1., 1.);
    angles[j] = std::asin(sine);
    if (std::fabs(sine) < kLocked) {
        angles[i] = std::atan2(sign * m[k][j], m[k][k]);
        angles[k] = std::atan2(sign * m[j][i], m[i][i]);
    } else {
        angles[i] = std::atan2(-sign * m[j][k], m[j][j]);
        angles[k] = 0;
    }
}

void makeEuler(const EulerOrder& order, const double* angles, Matrix& matrix)
{
    columnMatrix(eulerQuaternion(order, angles), matrix);
}

void split(const Notation& notation, const SbRotation& rotation, double* numbers)
{
    splitExactly(notation, rotation, numbers);
    const int count = numberCount(notation.parts);
    for (const double decimals : {1e3, 1e5, 1e7}) {
        double round[4];
        std::transform(numbers, numbers + count, round, [decimals](double number) {
            return static_cast<float>(std::round(number * decimals) / decimals + 0.0); // no -0
        });
        SbRotation made;
        if (make(notation, round, made) && made == rotation) {
            std::copy_n(round, count, numbers);
            return;
        }
    }
}

} // namespace rotations
