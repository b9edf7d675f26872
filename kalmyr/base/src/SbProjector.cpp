#include <kalmyr/base/SbProjector.h>

#include <array>
#include <cmath>
#include <optional>

namespace {

/// A point before the division, as it lies on the screen: x, measured in the same unit as y, y, w.
SbVec3d onScreen(const SbVec3d& v, double w, const SbMatrix& toWorld, const SbMatrix& toClip,
                 double aspect)
{
    std::array<double, 4> world{}, clip{};
    const std::array<double, 4> from{v[0], v[1], v[2], w};
    for (std::size_t j = 0; j < 4; ++j)
        for (std::size_t i = 0; i < 4; ++i)
            world[j] += from[i] * toWorld[static_cast<int>(i)][j];
    for (std::size_t j = 0; j < 4; ++j)
        for (std::size_t i = 0; i < 4; ++i)
            clip[j] += world[i] * toClip[static_cast<int>(i)][j];
    return {clip[0] * aspect, clip[1], clip[3]};
}

double sineBetween(const SbVec3d& a, const SbVec3d& b)
{
    const double lengths = a.length() * b.length();
    return lengths > 0 ? a.cross(b).length() / lengths : 0;
}

/// Where a line from `from` along `along` meets the round thing about the origin, or rolls on
/// beside it; both without the part along the axis of a cylinder. The distance along the line and
/// the point.
struct Met {
    double t;
    SbVec3d point;
};

template <class Sees>
std::optional<Met> meetRound(const SbVec3d& from, const SbVec3d& along, double radius, bool front,
                             const Sees& sees)
{
    const double a = along.dot(along);
    if (!(a > 0) || !(radius > 0))
        return std::nullopt;
    const double nearest = -from.dot(along) / a;
    const SbVec3d aside = from + along * nearest;
    const double distance = aside.length();
    if (distance <= radius) {
        const double half = std::sqrt((radius * radius - distance * distance) / a);
        const double first = front && sees(nearest - half) ? nearest - half : nearest + half;
        if (!sees(first))
            return std::nullopt;
        return Met{first, from + along * first};
    }
    if (!sees(nearest))
        return std::nullopt;
    const double rolled = (distance - radius) / radius;
    const double back = front ? 1 : -1; // the silhouette is left to the other side
    return Met{nearest, aside * (radius / distance * std::cos(rolled))
                            + along * (back * radius / std::sqrt(a) * std::sin(rolled))};
}

} // namespace

void SbProjector::setWorkingSpace(const SbMatrix& toWorld)
{
    m_toWorld = toWorld;
    m_fromWorld = toWorld.inverse(&m_invertible);
}

SbProjector::Sight SbProjector::sightThrough(const SbVec2f& position) const
{
    SbLine line;
    m_volume.projectPointToLine(position, line);
    const bool isEndless = m_volume.getProjectionType() == SbViewVolume::ORTHOGRAPHIC;
    const SbVec3f from = isEndless ? line.getPosition() : m_volume.getProjectionPoint();
    return {SbVec3d(m_fromWorld.point(from)), SbVec3d(m_fromWorld.direction(line.getDirection())),
            isEndless};
}

SbVec3d SbProjector::directionToWorld(const SbVec3d& direction) const
{
    SbVec3d result(0, 0, 0);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result[j] += direction[i] * m_toWorld[i][j];
    return result;
}

bool SbLineProjector::project(const SbVec2f& position, SbVec3f& point) const
{
    const SbViewVolume& volume = getViewVolume();
    const SbVec3d from(m_point), along(m_direction);
    if (!isInvertible())
        return false;
    const double aspect = volume.getHeight() > 0 ? volume.getWidth() / volume.getHeight() : 1;
    const SbMatrix toClip = volume.getMatrix();
    const SbVec3d a = onScreen(from, 1, getWorkingSpace(), toClip, aspect);
    const SbVec3d d = onScreen(along, 0, getWorkingSpace(), toClip, aspect);
    const bool isOrthographic = volume.getProjectionType() == SbViewVolume::ORTHOGRAPHIC;
    const SbVec3d sight = isOrthographic ? SbVec3d(volume.getProjectionDirection())
                                         : SbVec3d(getWorkingSpace().point(m_point))
                                               - SbVec3d(volume.getProjectionPoint());
    if (!(a[2] > 0) || sineBetween(sight, directionToWorld(along)) < kMinSine)
        return false;
    // The picture of the line, normal . (x, y) + offset = 0, and its point nearest to the position.
    const SbVec3d picture = a.cross(d);
    const double length = std::hypot(picture[0], picture[1]);
    if (!(length > 0))
        return false;
    const double nx = picture[0] / length, ny = picture[1] / length;
    const double px = (2.0 * position[0] - 1) * aspect, py = 2.0 * position[1] - 1;
    const double off = nx * px + ny * py + picture[2] / length;
    const double along2 = -ny * (px - nx * off) + nx * (py - ny * off);
    const double speed = (-ny * d[0] + nx * d[1]) - along2 * d[2];
    const double t = (along2 * a[2] - (-ny * a[0] + nx * a[1])) / speed;
    if (!std::isfinite(t) || !(a[2] + t * d[2] > 0))
        return false; // beyond the vanishing point
    point = SbVec3f(from + along * t);
    return true;
}

void SbPlaneProjector::setAcrossView(const SbVec3f& point)
{
    // A normal goes with the transposed inverse of the matrix, which leads from the world here.
    const SbVec3f ahead = getViewVolume().getProjectionDirection();
    const SbMatrix& toWorld = getWorkingSpace();
    SbVec3f normal;
    for (int i = 0; i < 3; ++i)
        normal[i] = toWorld[i][0] * ahead[0] + toWorld[i][1] * ahead[1] + toWorld[i][2] * ahead[2];
    m_plane = SbPlane(-normal, point);
}

bool SbPlaneProjector::project(const SbVec2f& position, SbVec3f& point) const
{
    if (!isInvertible())
        return false;
    const Sight sight = sightThrough(position);
    const SbVec3d normal(m_plane.getNormal());
    const double slope = normal.dot(sight.direction);
    // The angle counts as it is seen, in the world.
    const SbVec3d side = std::abs(normal[0]) < 0.5 ? SbVec3d(1, 0, 0) : SbVec3d(0, 1, 0);
    const SbVec3d u = normal.cross(side), v = normal.cross(u);
    const SbVec3d seen = directionToWorld(u).cross(directionToWorld(v)).normalized();
    const double sine = std::abs(seen.dot(directionToWorld(sight.direction).normalized()));
    if (slope == 0 || sine < kMinSine)
        return false;
    const double t = (m_plane.getDistanceFromOrigin() - normal.dot(sight.origin)) / slope;
    if (!sight.sees(t))
        return false;
    point = SbVec3f(sight.at(t));
    return true;
}

void SbCylinderProjector::setCylinder(const SbVec3f& center, const SbVec3f& axis, float radius)
{
    m_center = center;
    m_axis = axis.normalized();
    m_radius = radius;
}

bool SbCylinderProjector::project(const SbVec2f& position, SbVec3f& point) const
{
    if (!isInvertible())
        return false;
    const Sight sight = sightThrough(position);
    const SbVec3d axis(m_axis), center(m_center);
    if (sineBetween(directionToWorld(axis), directionToWorld(sight.direction)) < kMinSine)
        return false;
    const auto across = [&axis](const SbVec3d& v) { return v - axis * axis.dot(v); };
    const auto met = meetRound(across(sight.origin - center), across(sight.direction), m_radius,
                               m_front, [&sight](double t) { return sight.sees(t); });
    if (!met)
        return false;
    point = SbVec3f(center + axis * axis.dot(sight.at(met->t) - center) + met->point);
    return true;
}

bool SbSphereProjector::project(const SbVec2f& position, SbVec3f& point) const
{
    if (!isInvertible())
        return false;
    const Sight sight = sightThrough(position);
    const SbVec3d center(m_center);
    const auto met = meetRound(sight.origin - center, sight.direction, m_radius, m_front,
                               [&sight](double t) { return sight.sees(t); });
    if (!met)
        return false;
    point = SbVec3f(center + met->point);
    return true;
}
