#include <kalmyr/base/SbRotation.h>

#include <kalmyr/base/SbMatrix.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Quaternions whose squared length is this near to 1 are taken as they are, so that setting a value
// that was read before changes nothing.
constexpr double kUnitTolerance = 4e-7;
// Nearer than this the sine of the angle is noise and a straight line serves.
constexpr double kSlerpStraight = 1e-6;

SbVec3d anySquareTo(const SbVec3d& v)
{
    const bool alongX = std::fabs(v[0]) > std::fabs(v[1]);
    return v.cross(alongX ? SbVec3d(0., 1., 0.) : SbVec3d(1., 0., 0.)).normalized();
}

SbVec4f unitQuaternion(const SbVec4d& q)
{
    const double square = q.sqrLength();
    if (!(square > 0) || !std::isfinite(square)) {
        return {0, 0, 0, 1};
    }
    return SbVec4f(std::fabs(square - 1) <= kUnitTolerance ? q : q / std::sqrt(square));
}

} // namespace

SbRotation& SbRotation::setValue(const SbVec3f& axis, float radians)
{
    const SbVec3d unit = SbVec3d(axis).normalized();
    const double half = 0.5 * radians;
    if (unit.sqrLength() == 0 || !std::isfinite(half)) {
        return *this = SbRotation();
    }
    m_q = unitQuaternion(SbVec4d(unit * std::sin(half), std::cos(half)));
    return *this;
}

SbRotation& SbRotation::setValue(const SbVec3f& from, const SbVec3f& to)
{
    const SbVec3d f = SbVec3d(from).normalized();
    const SbVec3d t = SbVec3d(to).normalized();
    if (f.sqrLength() == 0 || t.sqrLength() == 0) {
        return *this = SbRotation();
    }
    const SbVec3d axis = f.cross(t);
    const double cosine = f.dot(t);
    if (cosine < 0 && axis.sqrLength() < 1e-20) {
        m_q = SbVec4f(SbVec4d(anySquareTo(f), 0));
    } else {
        m_q = SbVec4f(SbVec4d(axis, 1 + cosine).normalized());
    }
    return *this;
}

SbRotation& SbRotation::setValue(float x, float y, float z, float w)
{
    m_q = unitQuaternion(SbVec4d(x, y, z, w));
    return *this;
}

SbRotation& SbRotation::setValue(const SbMatrix& matrix)
{
    SbVec3d m[3];
    for (int i = 0; i < 3; ++i) {
        m[i] = SbVec3d(matrix[i][0], matrix[i][1], matrix[i][2]).normalized();
    }
    // Start from the largest of the four numbers; the others follow from sums and differences.
    const double trace = m[0][0] + m[1][1] + m[2][2];
    SbVec4d q;
    if (trace > 0) {
        q = SbVec4d(m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0], 1 + trace);
    } else {
        int i = m[1][1] > m[0][0] ? 1 : 0;
        i = m[2][2] > m[i][i] ? 2 : i;
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        q[i] = 1 + m[i][i] - m[j][j] - m[k][k];
        q[j] = m[i][j] + m[j][i];
        q[k] = m[i][k] + m[k][i];
        q[3] = m[j][k] - m[k][j];
    }
    m_q = unitQuaternion(q.normalized());
    return *this;
}

void SbRotation::getValue(SbVec3f& axis, float& radians) const
{
    const SbVec4d q(m_q);
    SbVec3d v(q[0], q[1], q[2]);
    const double sine = v.normalize();
    if (sine == 0) {
        axis.setValue(0, 0, 1);
        radians = 0;
        return;
    }
    axis = SbVec3f(v);
    radians = static_cast<float>(2 * std::atan2(sine, q[3]));
}

void SbRotation::getValue(SbMatrix& m) const
{
    m.setRotate(*this);
}

void SbRotation::multVec(const SbVec3f& src, SbVec3f& dst) const
{
    const SbVec3f q(m_q[0], m_q[1], m_q[2]);
    const SbVec3f t = q.cross(src) * 2.f;
    dst = src + t * m_q[3] + q.cross(t);
}

void SbRotation::scaleAngle(float factor)
{
    SbVec3f axis;
    float radians;
    getValue(axis, radians);
    // The shorter way round, so that half of an angle beyond pi is no detour.
    if (radians > std::numbers::pi_v<float>) {
        radians -= 2 * std::numbers::pi_v<float>;
    }
    setValue(axis, radians * factor);
}

SbRotation operator*(const SbRotation& a, const SbRotation& b)
{
    const SbVec4d p(a.m_q);
    const SbVec4d q(b.m_q);
    const SbVec3d u(p[0], p[1], p[2]);
    const SbVec3d v(q[0], q[1], q[2]);
    SbRotation r;
    r.m_q = unitQuaternion(SbVec4d(u * q[3] + v * p[3] + v.cross(u), p[3] * q[3] - u.dot(v)));
    return r;
}

SbRotation SbRotation::slerp(const SbRotation& a, const SbRotation& b, float t)
{
    const SbVec4d p(a.m_q);
    SbVec4d q(b.m_q);
    double cosine = p.dot(q);
    if (cosine < 0) {
        q.negate();
        cosine = -cosine;
    }
    double fromPart = 1 - t;
    double toPart = t;
    if (cosine < 1 - kSlerpStraight) {
        const double angle = std::acos(cosine);
        fromPart = std::sin(angle * fromPart) / std::sin(angle);
        toPart = std::sin(angle * toPart) / std::sin(angle);
    }
    SbRotation r;
    r.m_q = unitQuaternion(p * fromPart + q * toPart);
    return r;
}

bool SbRotation::equals(const SbRotation& o, float tolerance) const
{
    return m_q.equals(o.m_q, tolerance) || m_q.equals(-o.m_q, tolerance);
}
