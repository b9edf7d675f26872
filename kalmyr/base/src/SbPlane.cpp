#include <kalmyr/base/SbPlane.h>

#include <kalmyr/base/SbLine.h>
#include <kalmyr/base/SbMatrix.h>

#include <cmath>

namespace {

constexpr float kParallel = 1e-7f;

} // namespace

SbPlane::SbPlane(const SbVec3f& normal, float distanceFromOrigin)
    : m_normal(normal.normalized()), m_distance(distanceFromOrigin)
{
}

SbPlane::SbPlane(const SbVec3f& normal, const SbVec3f& point) : m_normal(normal.normalized())
{
    m_distance = static_cast<float>(SbVec3d(m_normal).dot(SbVec3d(point)));
}

SbPlane::SbPlane(const SbVec3f& p0, const SbVec3f& p1, const SbVec3f& p2)
{
    const SbVec3d origin(p0);
    const SbVec3d normal = (SbVec3d(p1) - origin).cross(SbVec3d(p2) - origin).normalized();
    m_normal = SbVec3f(normal);
    m_distance = static_cast<float>(normal.dot(origin));
}

void SbPlane::transform(const SbMatrix& m)
{
    // As a column (normal, -distance) a plane goes through the inverse from the left.
    const SbMatrix inverse = m.inverse();
    double plane[4];
    for (int i = 0; i < 4; ++i) {
        const float* row = inverse[i];
        plane[i] = double(row[0]) * m_normal[0] + double(row[1]) * m_normal[1]
                   + double(row[2]) * m_normal[2] - double(row[3]) * m_distance;
    }
    const double length = std::hypot(plane[0], plane[1], plane[2]);
    if (length > 0) {
        m_normal = SbVec3f(SbVec3d(plane) / length);
        m_distance = static_cast<float>(-plane[3] / length);
    }
}

bool SbPlane::intersect(const SbLine& line, SbVec3f& point) const
{
    const float slope = m_normal.dot(line.getDirection());
    if (!(std::fabs(slope) > kParallel)) {
        return false;
    }
    point = line.getPoint(-getDistance(line.getPosition()) / slope);
    return true;
}

bool SbPlane::intersect(const SbPlane& other, SbLine& line) const
{
    const SbVec3d n1(m_normal);
    const SbVec3d n2(other.m_normal);
    const SbVec3d direction = n1.cross(n2);
    const double square = direction.sqrLength();
    if (!(square > double(kParallel) * kParallel)) {
        return false;
    }
    const SbVec3d position = (n2 * m_distance - n1 * other.m_distance).cross(direction) / square;
    line.setPosDir(SbVec3f(position), SbVec3f(direction));
    return true;
}
