#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>

#include <algorithm>
#include <cmath>

namespace {

/// Boxes are taken a little larger than they are: their corners were rounded.
constexpr float kBoxSlack = 4e-6f;

/// Narrows an interval of the ray to a slab between two planes; false when nothing is left.
bool clip(float origin, float direction, float low, float high, float& tMin, float& tMax)
{
    if (direction == 0)
        return origin >= low && origin <= high;
    const float a = (low - origin) / direction;
    const float b = (high - origin) / direction;
    tMin = std::max(tMin, std::min(a, b));
    tMax = std::min(tMax, std::max(a, b));
    return tMin <= tMax;
}

/// Where a segment a + u * ab comes nearest to a ray o + s * d (d of unit length), both limited.
void nearest(const SbVec3d& o, const SbVec3d& d, double sMin, double sMax, const SbVec3d& a,
             const SbVec3d& ab, double& s, double& u)
{
    const SbVec3d oa = a - o;
    const double length2 = ab.dot(ab);
    const double along = ab.dot(d);
    const double square = length2 - along * along;
    // Parallel: any place does; take the segment's start.
    u = square > 1e-12 * length2 ? (along * oa.dot(d) - ab.dot(oa)) / square : 0;
    u = std::clamp(u, 0.0, 1.0);
    s = (oa + ab * u).dot(d);
    if (s >= sMin && s <= sMax)
        return;
    s = std::clamp(s, sMin, sMax);
    if (length2 > 0)
        u = std::clamp(ab.dot(d * s - oa) / length2, 0.0, 1.0);
}

} // namespace

bool SoRayPickAction::isCulled(const SoNode* node, const SoBoundingBoxCache* cache)
{
    if (!cache || cache->hasOwnView() || !hasRay() || !cache->isValid(node, getState()))
        return false;
    const SoBounds& bounds = cache->getBounds();
    return bounds.isEmpty() || !mayHit(bounds);
}

bool SoRayPickAction::mayHit(const SoBounds& bounds)
{
    if (!hasRay())
        return false;
    SbBox3f world = bounds.box;
    const SbMatrix& model = SoModelMatrixElement::get(getState());
    world.transform(bounds.matrixTo(model));
    return mayHitWorldBox(world);
}

bool SoRayPickAction::mayHit(const SbBox3f& box)
{
    if (box.isEmpty() || !hasRay())
        return false;
    SbBox3f world = box;
    world.transform(SoModelMatrixElement::get(getState()));
    return mayHitWorldBox(world);
}

bool SoRayPickAction::mayHitWorldBox(const SbBox3f& box) const
{
    const SbVec3f& low = box.getMin();
    const SbVec3f& high = box.getMax();
    const float farthest =
        (box.getCenter() - m_ray.origin).dot(m_ray.direction) + box.getSize().length() / 2;
    float radius = radiusAt(std::clamp(farthest, 0.0f, m_ray.tMax));
    for (int i = 0; i < 3; ++i)
        radius = std::max(radius,
                          radiusAt(0) + kBoxSlack * std::max(std::abs(low[i]), std::abs(high[i])));
    float tMin = m_ray.tMin;
    float tMax = limit();
    for (int i = 0; i < 3; ++i) {
        if (!clip(m_ray.origin[i], m_ray.direction[i], low[i] - radius, high[i] + radius, tMin,
                  tMax))
            return false;
    }
    return true;
}

bool SoRayPickAction::intersectTriangle(const SbVec3f& p0, const SbVec3f& p1, const SbVec3f& p2,
                                        SoPickHit& hit, SbVec3f* barycentric)
{
    const SoPickRay ray = getObjectRay();
    const SbVec3d a(p0), ab = SbVec3d(p1) - a, ac = SbVec3d(p2) - a, d(ray.direction);
    const SbVec3d p = d.cross(ac);
    const double determinant = ab.dot(p);
    if (determinant == 0)
        return false;
    const SbVec3d oa = SbVec3d(ray.origin) - a;
    const SbVec3d q = oa.cross(ab);
    const double u = oa.dot(p) / determinant;
    const double v = d.dot(q) / determinant;
    const double t = ac.dot(q) / determinant;
    if (!(u >= 0 && v >= 0 && u + v <= 1 && t >= ray.tMin && t <= ray.tMax))
        return false;
    hit.t = static_cast<float>(t);
    hit.point = SbVec3f(a + ab * u + ac * v);
    hit.normal = SbVec3f(ab.cross(ac).normalized());
    if (barycentric)
        *barycentric = SbVec3f(SbVec3d(1 - u - v, u, v));
    return true;
}

bool SoRayPickAction::intersectLine(const SbVec3f& p0, const SbVec3f& p1, SoPickHit& hit)
{
    if (!hasRay())
        return false;
    // In world space, where the radius is the same in all directions.
    const SbMatrix& model = SoModelMatrixElement::get(getState());
    const SbVec3d a(model.point(p0)), ab = SbVec3d(model.point(p1)) - a;
    const SbVec3d o(m_ray.origin), d(m_ray.direction);
    double s = 0, u = 0;
    nearest(o, d, m_ray.tMin, m_ray.tMax, a, ab, s, u);
    if ((a + ab * u - o - d * s).length() > radiusAt(static_cast<float>(s)))
        return false;
    hit.t = static_cast<float>(s);
    hit.point = p0 + (p1 - p0) * static_cast<float>(u);
    hit.normal = -getObjectRay().direction.normalized();
    return hit.t <= limit();
}

bool SoRayPickAction::intersectPoint(const SbVec3f& p, SoPickHit& hit)
{
    return intersectLine(p, p, hit);
}

bool SoRayPickAction::intersectBox(const SbBox3f& box, SoPickHit& hit)
{
    const SoPickRay ray = getObjectRay();
    if (box.isEmpty() || ray.tMin > ray.tMax)
        return false;
    float tMin = std::numeric_limits<float>::lowest();
    float tMax = std::numeric_limits<float>::max();
    for (int i = 0; i < 3; ++i) {
        if (!clip(ray.origin[i], ray.direction[i], box.getMin()[i], box.getMax()[i], tMin, tMax))
            return false;
    }
    hit.t = tMin >= ray.tMin ? tMin : tMax; // from inside: where the ray leaves
    if (hit.t < ray.tMin || hit.t > ray.tMax)
        return false;
    hit.point = ray.origin + ray.direction * hit.t;
    // The side that the point lies on, or nearest to it after rounding.
    float best = std::numeric_limits<float>::max();
    for (int side = 0; side < 6; ++side) {
        const int axis = side / 2;
        const float at = side % 2 ? box.getMax()[axis] : box.getMin()[axis];
        if (const float off = std::abs(hit.point[axis] - at); off < best) {
            best = off;
            hit.normal = SbVec3f();
            hit.normal[axis] = side % 2 ? 1.0f : -1.0f;
        }
    }
    return true;
}
