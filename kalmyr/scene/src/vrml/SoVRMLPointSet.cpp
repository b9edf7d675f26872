#include <kalmyr/vrml/SoVRMLPointSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLPointSet)

SoVRMLPointSet::SoVRMLPointSet()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(coord);
}

SoVRMLPointSet::~SoVRMLPointSet() = default;

void SoVRMLPointSet::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPointSet, SoVRMLGeometry, "VRMLPointSet");
}

std::uint64_t SoVRMLPointSet::stateKey(SoState* state) const
{
    return kalmyr::detail::lookKey(state, color);
}

void SoVRMLPointSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const auto colors = kalmyr::detail::packedColors(state, color);
    kalmyr::VertexInput in;
    in.node = this;
    in.positions = kalmyr::detail::pointsOf(coord);
    in.colors.values = colors;
    in.colors.binding = SoBinding::PER_VERTEX;
    kalmyr::PointBuilder(in).build(geometry);
}
