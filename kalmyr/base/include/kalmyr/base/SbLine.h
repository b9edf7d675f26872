#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

class SbBox3f;
class SbMatrix;
class SbXfBox3f;

/// A straight line without ends, with a direction: a position and a unit direction.
class SbLine {
public:
    /// The x axis.
    SbLine() = default;
    /// Through two points, in the direction from the first to the second. Equal points give no
    /// direction (0 0 0).
    SbLine(const SbVec3f& p0, const SbVec3f& p1) { setValue(p0, p1); }

    void setValue(const SbVec3f& p0, const SbVec3f& p1) { setPosDir(p0, p1 - p0); }
    /// The direction may have any length.
    void setPosDir(const SbVec3f& position, const SbVec3f& direction)
    {
        m_position = position;
        m_direction = direction.normalized();
    }

    const SbVec3f& getPosition() const { return m_position; }
    const SbVec3f& getDirection() const { return m_direction; }
    /// The point at a distance from the position along the direction.
    SbVec3f getPoint(float distance) const { return m_position + m_direction * distance; }
    KALMYRBASE_API SbLine transformed(const SbMatrix& m) const;

    KALMYRBASE_API SbVec3f getClosestPoint(const SbVec3f& p) const;
    /// The points of both lines where they are nearest. False, and both positions, when they are
    /// parallel.
    KALMYRBASE_API bool getClosestPoints(const SbLine& other, SbVec3f& onThis,
                                         SbVec3f& onOther) const;

    /// Where the line enters and leaves a box; the box counts as solid, and the line as endless
    /// both ways.
    KALMYRBASE_API bool intersect(const SbBox3f& box, SbVec3f& enter, SbVec3f& exit) const;
    KALMYRBASE_API bool intersect(const SbXfBox3f& box, SbVec3f& enter, SbVec3f& exit) const;
    /// Whether the line meets the box blown up by `radius` on every side.
    KALMYRBASE_API bool intersect(float radius, const SbBox3f& box) const;
    /// Where the line meets a triangle, from either side. `barycentric` are the weights of the
    /// corners; `front` says whether it comes from the side from which the corners run
    /// counter-clockwise. False for triangles without an area or parallel to the line.
    KALMYRBASE_API bool intersect(const SbVec3f& v0, const SbVec3f& v1, const SbVec3f& v2,
                                  SbVec3f& point, SbVec3f& barycentric, bool& front) const;

private:
    SbVec3f m_position;
    SbVec3f m_direction{1, 0, 0};
};
