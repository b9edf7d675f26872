#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

class SbLine;
class SbMatrix;

/// An oriented plane: the points with normal . p = distance from the origin. The normal has
/// length 1.
class SbPlane {
public:
    /// z = 0, facing +z.
    SbPlane() = default;
    /// The normal may have any length; the distance is measured along it.
    KALMYRBASE_API SbPlane(const SbVec3f& normal, float distanceFromOrigin);
    KALMYRBASE_API SbPlane(const SbVec3f& normal, const SbVec3f& point);
    /// Through three points; faces the side from which they run counter-clockwise.
    KALMYRBASE_API SbPlane(const SbVec3f& p0, const SbVec3f& p1, const SbVec3f& p2);

    const SbVec3f& getNormal() const { return m_normal; }
    float getDistanceFromOrigin() const { return m_distance; }
    /// Signed distance of a point, positive on the side of the normal.
    float getDistance(const SbVec3f& p) const { return m_normal.dot(p) - m_distance; }
    /// True for points on the plane or on the side of the normal.
    bool isInHalfSpace(const SbVec3f& p) const { return getDistance(p) >= 0; }
    /// Moves the plane along its normal.
    void offset(float distance) { m_distance += distance; }
    /// The plane of all transformed points; the half space stays the half space.
    KALMYRBASE_API void transform(const SbMatrix& m);

    /// The point common to a line and the plane; false when they are parallel.
    KALMYRBASE_API bool intersect(const SbLine& line, SbVec3f& point) const;
    /// The line common to two planes; false when they are parallel.
    KALMYRBASE_API bool intersect(const SbPlane& other, SbLine& line) const;

    friend bool operator==(const SbPlane& a, const SbPlane& b)
    {
        return a.m_normal == b.m_normal && a.m_distance == b.m_distance;
    }

private:
    SbVec3f m_normal{0, 0, 1};
    float m_distance = 0;
};
