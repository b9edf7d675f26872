#include <kalmyr/vrml/SoVRMLPointSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/ShapeSource.h>
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

void SoVRMLPointSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    source.kind = kalmyr::ShapeSource::POINTS;
    source.input.node = this;
    source.input.positions = kalmyr::detail::pointsOf(coord);
    source.input.colors = kalmyr::detail::colorsOf(state, color, SoMFInt32(), true, source);
    source.input.colors.binding = SoBinding::PER_VERTEX;
}
