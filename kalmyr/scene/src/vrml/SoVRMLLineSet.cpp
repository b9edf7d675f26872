#include <kalmyr/vrml/SoVRMLLineSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include <vector>

SO_NODE_SOURCE(SoVRMLLineSet)

SoVRMLLineSet::SoVRMLLineSet()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(coord);
    SO_VRML_EXPOSED_EMPTY(vertexCount);
}

SoVRMLLineSet::~SoVRMLLineSet() = default;

void SoVRMLLineSet::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLLineSet, SoVRMLGeometry, "VRMLLineSet");
}

std::uint64_t SoVRMLLineSet::stateKey(SoState* state) const
{
    return kalmyr::detail::lookKey(state, color);
}

void SoVRMLLineSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    source.kind = kalmyr::ShapeSource::LINES;
    kalmyr::FaceInput& in = source.input;
    in.node = this;
    in.positions = kalmyr::detail::pointsOf(coord);
    in.colors = kalmyr::detail::colorsOf(state, color, SoMFInt32(), true, source);
    if (!source.wantsLists())
        return;
    const auto numPoints = static_cast<std::int32_t>(in.positions.size());
    std::int32_t next = 0;
    for (const std::int32_t count : vertexCount.values()) {
        for (std::int32_t i = 0; i < count && next < numPoints; ++i)
            source.coordIndex.push_back(next++);
        source.coordIndex.push_back(-1);
    }
    in.coordIndex = source.coordIndex;
}
