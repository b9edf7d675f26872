#include "IndexCheck.h"

#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoCoordinate4.h>
#include <kalmyr/nodes/SoLevelOfDetail.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/shapes/SoIndexedShape.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// The number of points that a node gives to what follows; -1 for none.
int pointsOf(const SoNode* node)
{
    if (!node)
        return -1;
    if (node->isOfType(SoCoordinate3::getClassTypeId()))
        return static_cast<const SoCoordinate3*>(node)->point.getNum();
    if (node->isOfType(SoCoordinate4::getClassTypeId()))
        return static_cast<const SoCoordinate4*>(node)->point.getNum();
    if (!node->isOfType(SoVertexProperty::getClassTypeId()))
        return -1;
    const int own = static_cast<const SoVertexProperty*>(node)->vertex.getNum();
    return own > 0 ? own : -1;
}

std::optional<std::string> strayIndex(const SoIndexedShape& shape, std::int64_t count)
{
    const auto indices = shape.coordIndex.values();
    const auto fault = std::find_if(indices.begin(), indices.end(), [count](std::int32_t index) {
        return index < -1 || index >= count;
    });
    if (fault == indices.end())
        return std::nullopt;
    return "coordIndex[" + std::to_string(fault - indices.begin()) + "] is "
           + std::to_string(*fault) + ", but there are " + std::to_string(count) + " points";
}

} // namespace

void IndexCheck::take(const SoNode* node)
{
    if (const int points = pointsOf(node); points >= 0)
        m_points = points;
}

void IndexCheck::reuse(const SoNode* node)
{
    take(node);
    // What a group sets was seen where it stood first; it is not worth another walk.
    if (node && node->affectsState() && node->getChildren())
        m_points = kUnknown;
}

std::optional<std::string> IndexCheck::close(const SoNode* node, Scope before)
{
    if (node->isOfType(SoIndexedShape::getClassTypeId())) {
        const auto& shape = static_cast<const SoIndexedShape&>(*node);
        const int own = pointsOf(shape.vertexProperty.getValue());
        const std::int64_t count = own >= 0 ? own : before;
        m_points = before;
        return count == kUnknown ? std::nullopt : strayIndex(shape, count);
    }
    const bool mayChoose = node->isOfType(SoSwitch::getClassTypeId());
    const bool isLevels = node->isOfType(SoLOD::getClassTypeId())
                          || node->isOfType(SoLevelOfDetail::getClassTypeId());
    if (!node->affectsState() || isLevels)
        m_points = before;
    else if (mayChoose && m_points != before)
        m_points = kUnknown;
    take(node);
    return std::nullopt;
}

} // namespace kalmyr::detail
