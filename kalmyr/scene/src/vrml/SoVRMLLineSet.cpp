#include <kalmyr/vrml/SoVRMLLineSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/FaceBuilder.h>
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

void SoVRMLLineSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const auto colors = kalmyr::detail::packedColors(state, color);
    kalmyr::VertexInput in;
    in.node = this;
    in.positions = kalmyr::detail::pointsOf(coord);
    const auto numPoints = static_cast<std::int32_t>(in.positions.size());
    std::vector<std::int32_t> indices;
    std::int32_t next = 0;
    for (const std::int32_t count : vertexCount.values()) {
        for (std::int32_t i = 0; i < count && next < numPoints; ++i)
            indices.push_back(next++);
        indices.push_back(-1);
    }
    in.coordIndex = indices;
    in.colors.values = colors;
    in.colors.binding = SoBinding::PER_VERTEX_INDEXED;
    in.colors.indices = indices;
    kalmyr::LineBuilder(in).build(geometry);
}
