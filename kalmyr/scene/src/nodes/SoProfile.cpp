#include <kalmyr/nodes/SoProfile.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoNurbsElements.h>

#include "core/CacheLock.h"

#include <cmath>

namespace {

constexpr SoEnumEntry kLinkages[] = {
    {"START_FIRST", SoProfile::START_FIRST},
    {"START_NEW", SoProfile::START_NEW},
    {"ADD_TO_CURRENT", SoProfile::ADD_TO_CURRENT},
};

std::string gather(const SoProfileCoordinates& given, std::span<const std::int32_t> indices,
                   std::vector<SbVec3d>& points)
{
    const std::size_t count = indices.empty() ? given.size() : indices.size();
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t at = indices.empty() ? static_cast<std::int64_t>(i) : indices[i];
        if (at < 0 || static_cast<std::size_t>(at) >= given.size())
            return "index[" + std::to_string(i) + "] is " + std::to_string(at)
                   + ", out of the range of " + std::to_string(given.size()) + " points";
        const auto n = static_cast<std::size_t>(at);
        if (given.plain.empty())
            points.emplace_back(given.homogeneous[n]);
        else
            points.emplace_back(given.plain[n][0], given.plain[n][1], 1.0);
        const SbVec3d& p = points.back();
        if (!std::isfinite(p[0] + p[1] + p[2]) || !(p[2] > 0))
            return "point " + std::to_string(at)
                   + " is not finite, or its last component is not above 0";
    }
    return {};
}

} // namespace

SO_NODE_SOURCE(SoProfile)

SoProfile::SoProfile()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(index);
    SO_ADD_FIELD(linkage, (START_FIRST));
    linkage.setEnums(kLinkages);
}

SoProfile::~SoProfile() = default;

void SoProfile::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoProfile, SoNode, "Profile");
    SoBoundingBoxCache::addDependency(SoProfileElement::getStackIndex());
}

/// From what was made before, while nothing has changed that it was made from.
std::shared_ptr<const std::vector<SbVec2d>> SoProfile::getLine(SoState* state)
{
    const auto& coordinates = state->get<SoProfileCoordinateElement>();
    const std::uint64_t key =
        SoElement::mix(SoElement::mix(getNodeId(), coordinates.getValueId()),
                       state->getValueId(SoComplexityElement::getStackIndex()));
    {
        const kalmyr::detail::CacheLock lock;
        if (m_line && m_key == key)
            return m_line;
    }
    std::vector<SbVec3d> points;
    auto line = std::make_shared<std::vector<SbVec2d>>();
    std::string fault = gather(coordinates.value(), index.values(), points);
    if (fault.empty())
        fault = makeLine(points, SoComplexityElement::get(state), *line);
    if (!fault.empty()) {
        line->clear();
        SoDebugError::postWarning(getTypeId().getName().getString(), "\"%s\": %s; left out",
                                  getName().getString(), fault.c_str());
    }
    const kalmyr::detail::CacheLock lock;
    m_key = key;
    m_line = line;
    return m_line;
}

void SoProfile::doAction(SoAction* action)
{
    SoState* state = action->getState();
    SoProfilePiece piece{getLine(state), linkage.getValue() != ADD_TO_CURRENT};
    auto& element = state->write<SoProfileElement>();
    if (linkage.getValue() == START_FIRST)
        element.set(this, {});
    element.value().push_back(std::move(piece));
    if (linkage.getValue() != START_FIRST)
        element.accumulatedBy(this);
    element.mixValueId(state->getValueId(SoProfileCoordinateElement::getStackIndex()));
    element.mixValueId(state->getValueId(SoComplexityElement::getStackIndex()));
}
