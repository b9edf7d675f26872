#include <kalmyr/actions/SoRayPickAction.h>

#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include <algorithm>

SO_ACTION_SOURCE(SoRayPickAction, SoAction, "RayPickAction")

void SoRayPickAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoRayPickAction::SoRayPickAction(const SbViewportRegion& region) : m_region(region) {}

void SoRayPickAction::setPoint(const SbVec2s& windowPixel)
{
    m_source = Source::PIXEL;
    m_pixel = windowPixel;
}

void SoRayPickAction::setNormalizedPoint(const SbVec2f& position)
{
    m_source = Source::POSITION;
    m_position = position;
}

void SoRayPickAction::setRay(const SbVec3f& start, const SbVec3f& direction, float nearDistance,
                             float farDistance, float radius)
{
    m_source = Source::RAY;
    m_ray.origin = start;
    m_ray.direction = direction.normalized();
    m_ray.tMin = std::max(nearDistance, 0.0f);
    m_ray.tMax = farDistance < 0 ? SoPickRay().tMax : farDistance;
    m_radius0 = radius;
    m_radiusSlope = 0;
}

const SoPickedPoint* SoRayPickAction::getPickedPoint(int index) const
{
    if (!kalmyr::holds(index >= 0, "index >= 0"))
        return nullptr;
    const auto i = static_cast<std::size_t>(index);
    return i < m_points.size() ? &m_points[i] : nullptr;
}

void SoRayPickAction::beginTraversal(SoNode*)
{
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
    m_points.clear();
    m_details.clear();
    m_visitOfPath = 0;
    m_viewId = 0;
    m_objectRayKnown = false;
}

void SoRayPickAction::endTraversal(SoNode*)
{
    m_curPath = nullptr;
    std::stable_sort(m_points.begin(), m_points.end(),
                     [](const SoPickedPoint& a, const SoPickedPoint& b) {
                         return a.getDistance() < b.getDistance();
                     });
}

bool SoRayPickAction::hasRay()
{
    if (m_source == Source::RAY)
        return m_ray.direction != SbVec3f(0, 0, 0);
    if (m_source == Source::NONE)
        return false;
    const auto& view = getState()->get<SoViewElement>();
    if (!view.value().valid)
        return false;
    if (view.getValueId() != m_viewId) {
        m_viewId = view.getValueId();
        m_objectRayKnown = false;
        rayFromView(view.value().volume);
    }
    return m_ray.direction != SbVec3f(0, 0, 0);
}

void SoRayPickAction::rayFromView(const SbViewVolume& volume)
{
    // The camera may have narrowed the viewport.
    const SbViewportRegion& region = SoViewportRegionElement::get(getState());
    const SbVec2f position = m_source == Source::PIXEL ? region.normalize(m_pixel) : m_position;
    SbVec3f nearPoint, farPoint, nearEdge, farEdge;
    volume.projectPointToLine(position, nearPoint, farPoint);
    m_ray.origin = nearPoint;
    m_ray.direction = farPoint - nearPoint;
    m_ray.tMin = 0;
    m_ray.tMax = m_ray.direction.normalize();
    // The pick radius on the near and on the far plane; it grows evenly in between.
    const float up = m_radius / static_cast<float>(region.getViewportSizePixels()[1]);
    volume.projectPointToLine(position + SbVec2f(0, up), nearEdge, farEdge);
    m_radius0 = (nearEdge - nearPoint).length();
    const float radius1 = (farEdge - farPoint).length();
    m_radiusSlope = m_ray.tMax > 0 ? (radius1 - m_radius0) / m_ray.tMax : 0;
}

float SoRayPickAction::limit() const
{
    return m_pickAll || m_points.empty() ? m_ray.tMax : m_points.front().getDistance();
}

SoPickRay SoRayPickAction::getObjectRay()
{
    if (!hasRay())
        return {{}, {}, 1, 0};
    const auto& matrix = getState()->get<SoModelMatrixElement>();
    if (!m_objectRayKnown || m_matrixId != matrix.getValueId()) {
        const SbMatrix inverse = matrix.value().inverse(&m_invertible);
        m_objectRay.origin = inverse.point(m_ray.origin);
        // Not made unit length: t stays the same in both spaces.
        m_objectRay.direction = inverse.direction(m_ray.direction);
        m_matrixId = matrix.getValueId();
        m_objectRayKnown = true;
    }
    m_objectRay.tMin = m_invertible ? m_ray.tMin : 1;
    m_objectRay.tMax = m_invertible ? limit() : 0;
    return m_objectRay;
}

void SoRayPickAction::pushDetail(const SoNode* node, const SoDetail* detail)
{
    m_details.push_back({node, detail, SoModelMatrixElement::get(getState())});
}

SoPickedPoint* SoRayPickAction::addHit(const SoPickHit& hit)
{
    const bool inLimits = hit.t >= m_ray.tMin && hit.t <= m_ray.tMax;
    if (!inLimits || (!m_pickAll && !m_points.empty() && hit.t >= limit()))
        return nullptr;
    if (!m_pickAll)
        m_points.clear();
    // The hits of one visit share their path.
    if (m_visitOfPath != getNumVisits() || !m_curPath) {
        m_visitOfPath = getNumVisits();
        m_curPath = getCurPath();
    }
    m_points.emplace_back(m_curPath.get(), SoModelMatrixElement::get(getState()), hit.t, hit.point,
                          hit.normal);
    for (const OnWay& way : m_details)
        m_points.back().addDetail(way.node, way.detail->clone(), way.toWorld);
    return &m_points.back();
}
