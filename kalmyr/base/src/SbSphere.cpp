#include <kalmyr/base/SbSphere.h>

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbLine.h>

#include <cmath>

void SbSphere::circumscribe(const SbBox3f& box)
{
    m_center = box.getCenter();
    m_radius = box.getSize().length() / 2;
}

bool SbSphere::intersect(const SbLine& line, SbVec3f& enter, SbVec3f& exit) const
{
    const SbVec3d direction(line.getDirection());
    const SbVec3d from = SbVec3d(line.getPosition()) - SbVec3d(m_center);
    const double middle = -from.dot(direction);
    const SbVec3d nearest = from + direction * middle;
    const double rest = double(m_radius) * m_radius - nearest.sqrLength();
    if (rest < 0) {
        return false;
    }
    const double half = std::sqrt(rest);
    enter = SbVec3f(SbVec3d(line.getPosition()) + direction * (middle - half));
    exit = SbVec3f(SbVec3d(line.getPosition()) + direction * (middle + half));
    return true;
}
