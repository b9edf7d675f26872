#include <kalmyr/vrml/SoVRMLIndexedLineSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLIndexedLineSet)

SoVRMLIndexedLineSet::SoVRMLIndexedLineSet()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(coord);
    SO_VRML_EMPTY_FIELD(colorIndex);
    SO_VRML_FIELD(colorPerVertex, (true));
    SO_VRML_EMPTY_FIELD(coordIndex);
    SO_VRML_EVENT_IN(set_colorIndex);
    SO_VRML_EVENT_IN(set_coordIndex);
}

SoVRMLIndexedLineSet::~SoVRMLIndexedLineSet() = default;

void SoVRMLIndexedLineSet::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLIndexedLineSet, SoVRMLGeometry, "VRMLIndexedLineSet");
}

std::uint64_t SoVRMLIndexedLineSet::stateKey(SoState* state) const
{
    return kalmyr::detail::lookKey(state, color);
}

void SoVRMLIndexedLineSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    using namespace kalmyr::detail;
    source.kind = kalmyr::ShapeSource::LINES;
    kalmyr::FaceInput& in = source.input;
    in.node = this;
    in.positions = pointsOf(coord);
    in.coordIndex = coordIndex.values();
    in.colors = colorsOf(state, color, colorIndex, colorPerVertex.getValue(), source);
}
