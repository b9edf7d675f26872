#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

class SbBox3f;
class SbLine;

/// A ball: a centre and a radius.
class SbSphere {
public:
    /// Radius 1 about the origin.
    SbSphere() = default;
    SbSphere(const SbVec3f& center, float radius) : m_center(center), m_radius(radius) {}

    const SbVec3f& getCenter() const { return m_center; }
    float getRadius() const { return m_radius; }
    void setCenter(const SbVec3f& center) { m_center = center; }
    void setRadius(float radius) { m_radius = radius; }
    /// The smallest ball around the box's centre that holds the box; radius 0 for an empty box.
    KALMYRBASE_API void circumscribe(const SbBox3f& box);

    bool pointInside(const SbVec3f& p) const
    {
        return (p - m_center).sqrLength() <= m_radius * m_radius;
    }
    /// Where the line enters and leaves.
    KALMYRBASE_API bool intersect(const SbLine& line, SbVec3f& enter, SbVec3f& exit) const;

private:
    SbVec3f m_center;
    float m_radius = 1;
};
