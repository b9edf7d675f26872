#include <kalmyr/base/SbLine.h>

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

// Squared sine of the angle below which two directions count as parallel.
constexpr double kParallel = 1e-14;

// Cuts the interval [near, far] of a line with the slab between min and max on one axis.
bool clipToSlab(double position, double direction, double min, double max, double& near,
                double& far)
{
    if (direction == 0) {
        return position >= min && position <= max;
    }
    double enter = (min - position) / direction;
    double leave = (max - position) / direction;
    if (enter > leave) {
        std::swap(enter, leave);
    }
    near = enter > near ? enter : near;
    far = leave < far ? leave : far;
    return near <= far;
}

} // namespace

SbLine SbLine::transformed(const SbMatrix& m) const
{
    SbLine r;
    if (m.isAffine()) {
        r.setPosDir(m.point(m_position), m.direction(m_direction));
    } else {
        r.setValue(m.point(m_position), m.point(m_position + m_direction));
    }
    return r;
}

SbVec3f SbLine::getClosestPoint(const SbVec3f& p) const
{
    return m_position + m_direction * (p - m_position).dot(m_direction);
}

bool SbLine::getClosestPoints(const SbLine& other, SbVec3f& onThis, SbVec3f& onOther) const
{
    const SbVec3d u(m_direction);
    const SbVec3d v(other.m_direction);
    const SbVec3d between = SbVec3d(other.m_position) - SbVec3d(m_position);
    const SbVec3d normal = u.cross(v);
    const double square = normal.sqrLength();
    if (!(square > kParallel)) {
        onThis = m_position;
        onOther = other.m_position;
        return false;
    }
    const double s = between.cross(v).dot(normal) / square;
    const double t = between.cross(u).dot(normal) / square;
    onThis = SbVec3f(SbVec3d(m_position) + u * s);
    onOther = SbVec3f(SbVec3d(other.m_position) + v * t);
    return true;
}

bool SbLine::intersect(const SbBox3f& box, SbVec3f& enter, SbVec3f& exit) const
{
    double near = -std::numeric_limits<double>::infinity();
    double far = std::numeric_limits<double>::infinity();
    if (box.isEmpty()) {
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        if (!clipToSlab(m_position[i], m_direction[i], box.getMin()[i], box.getMax()[i], near,
                        far)) {
            return false;
        }
    }
    if (!std::isfinite(near) || !std::isfinite(far)) {
        near = far = 0;
    }
    enter = SbVec3f(SbVec3d(m_position) + SbVec3d(m_direction) * near);
    exit = SbVec3f(SbVec3d(m_position) + SbVec3d(m_direction) * far);
    return true;
}

bool SbLine::intersect(const SbXfBox3f& box, SbVec3f& enter, SbVec3f& exit) const
{
    if (box.isEmpty()) {
        return false;
    }
    bool invertible;
    const SbMatrix inverse = box.getTransform().inverse(&invertible);
    if (!invertible) {
        return intersect(box.project(), enter, exit);
    }
    const SbBox3f& local = box;
    if (!transformed(inverse).intersect(local, enter, exit)) {
        return false;
    }
    box.getTransform().multVecMatrix(enter, enter);
    box.getTransform().multVecMatrix(exit, exit);
    return true;
}

bool SbLine::intersect(float radius, const SbBox3f& box) const
{
    const SbVec3f grow(radius, radius, radius);
    SbVec3f enter;
    SbVec3f exit;
    return !box.isEmpty()
           && intersect(SbBox3f(box.getMin() - grow, box.getMax() + grow), enter, exit);
}

bool SbLine::intersect(const SbVec3f& v0, const SbVec3f& v1, const SbVec3f& v2, SbVec3f& point,
                       SbVec3f& barycentric, bool& front) const
{
    const SbVec3d edge1 = SbVec3d(v1) - SbVec3d(v0);
    const SbVec3d edge2 = SbVec3d(v2) - SbVec3d(v0);
    const SbVec3d direction(m_direction);
    const SbVec3d p = direction.cross(edge2);
    const double det = edge1.dot(p);
    if (!(std::fabs(det) > 1e-12 * edge1.length() * edge2.length())) {
        return false;
    }
    const SbVec3d from = SbVec3d(m_position) - SbVec3d(v0);
    const double u = from.dot(p) / det;
    const double v = direction.dot(from.cross(edge1)) / det;
    if (u < 0 || v < 0 || u + v > 1) {
        return false;
    }
    point = SbVec3f(SbVec3d(v0) + edge1 * u + edge2 * v);
    barycentric = SbVec3f(SbVec3d(1 - u - v, u, v));
    front = det > 0;
    return true;
}
