#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoContract.h>

class SbMatrix;

/// A rotation, kept as a unit quaternion x, y, z, w. Angles are in radians, right-handed.
/// In `a * b` the rotation a happens first, as with SbMatrix.
class SbRotation {
public:
    /// No rotation.
    constexpr SbRotation() = default;
    /// About an axis of any length; a zero axis gives no rotation.
    SbRotation(const SbVec3f& axis, float radians) { setValue(axis, radians); }
    /// The shortest rotation that turns one direction into the other. Opposite directions turn
    /// about some axis square to them; a zero direction gives no rotation.
    SbRotation(const SbVec3f& from, const SbVec3f& to) { setValue(from, to); }
    /// From a quaternion of any length; zero length gives no rotation.
    SbRotation(float x, float y, float z, float w) { setValue(x, y, z, w); }
    explicit SbRotation(const float* quaternion) { setValue(quaternion); }
    /// The rotation of the upper left 3x3 part; lengths of its rows do not matter.
    explicit SbRotation(const SbMatrix& m) { setValue(m); }

    static constexpr SbRotation identity() { return SbRotation(); }

    KALMYRBASE_API SbRotation& setValue(const SbVec3f& axis, float radians);
    KALMYRBASE_API SbRotation& setValue(const SbVec3f& from, const SbVec3f& to);
    KALMYRBASE_API SbRotation& setValue(float x, float y, float z, float w);
    /// Nothing changes, and an error is posted, without a quaternion.
    SbRotation& setValue(const float* q)
    {
        return kalmyr::holds(q, "four values") ? setValue(q[0], q[1], q[2], q[3]) : *this;
    }
    KALMYRBASE_API SbRotation& setValue(const SbMatrix& m);

    /// The quaternion x, y, z, w.
    constexpr const float* getValue() const { return m_q.getValue(); }
    void getValue(float& x, float& y, float& z, float& w) const { m_q.getValue(x, y, z, w); }
    /// Unit axis and angle from 0 to 2 pi. No rotation gives the axis 0 0 1 and the angle 0.
    KALMYRBASE_API void getValue(SbVec3f& axis, float& radians) const;
    KALMYRBASE_API void getValue(SbMatrix& m) const;

    SbRotation inverse() const;
    SbRotation& invert() { return *this = inverse(); }
    KALMYRBASE_API void multVec(const SbVec3f& src, SbVec3f& dst) const;
    /// The turned vector.
    SbVec3f rotated(const SbVec3f& v) const
    {
        SbVec3f r;
        multVec(v, r);
        return r;
    }
    /// The same axis, the angle multiplied.
    KALMYRBASE_API void scaleAngle(float factor);

    SbRotation& operator*=(const SbRotation& o) { return *this = *this * o; }
    KALMYRBASE_API friend SbRotation operator*(const SbRotation& a, const SbRotation& b);

    /// Between two rotations the shorter way round: `a` at 0, `b` at 1; even angular speed.
    KALMYRBASE_API static SbRotation slerp(const SbRotation& a, const SbRotation& b, float t);

    /// The same rotation within a tolerance on the quaternion; q and -q are one rotation.
    KALMYRBASE_API bool equals(const SbRotation& o, float tolerance) const;
    /// The same four numbers.
    friend constexpr bool operator==(const SbRotation& a, const SbRotation& b)
    {
        return a.m_q == b.m_q;
    }

private:
    SbVec4f m_q{0, 0, 0, 1};
};

inline SbRotation SbRotation::inverse() const
{
    SbRotation r;
    r.m_q = SbVec4f(-m_q[0], -m_q[1], -m_q[2], m_q[3]);
    return r;
}
