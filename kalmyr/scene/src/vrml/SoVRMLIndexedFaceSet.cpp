#include <kalmyr/vrml/SoVRMLIndexedFaceSet.h>

#include "GeometryInput.h"

#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLIndexedFaceSet)

SoVRMLIndexedFaceSet::SoVRMLIndexedFaceSet()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(coord);
    SO_VRML_EXPOSED_EMPTY(normal);
    SO_VRML_EXPOSED_EMPTY(texCoord);
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_EMPTY_FIELD(colorIndex);
    SO_VRML_FIELD(colorPerVertex, (true));
    SO_VRML_FIELD(convex, (true));
    SO_VRML_EMPTY_FIELD(coordIndex);
    SO_VRML_FIELD(creaseAngle, (0.0f));
    SO_VRML_EMPTY_FIELD(normalIndex);
    SO_VRML_FIELD(normalPerVertex, (true));
    SO_VRML_FIELD(solid, (true));
    SO_VRML_EMPTY_FIELD(texCoordIndex);
    SO_VRML_EVENT_IN(set_colorIndex);
    SO_VRML_EVENT_IN(set_coordIndex);
    SO_VRML_EVENT_IN(set_normalIndex);
    SO_VRML_EVENT_IN(set_texCoordIndex);
}

SoVRMLIndexedFaceSet::~SoVRMLIndexedFaceSet() = default;

void SoVRMLIndexedFaceSet::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLIndexedFaceSet, SoVRMLGeometry, "VRMLIndexedFaceSet");
}

std::uint64_t SoVRMLIndexedFaceSet::stateKey(SoState* state) const
{
    return kalmyr::detail::lookKey(state, color);
}

void SoVRMLIndexedFaceSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    using namespace kalmyr::detail;
    source.kind = kalmyr::ShapeSource::FACES;
    kalmyr::FaceInput& in = source.input;
    in.node = this;
    in.positions = pointsOf(coord);
    in.coordIndex = coordIndex.values();
    in.normals = attribute<SbVec3f>(normalsOf(normal), normalIndex, normalPerVertex.getValue(),
                                    "normalIndex");
    in.colors = colorsOf(state, color, colorIndex, colorPerVertex.getValue(), source);
    in.texCoords = attribute<SbVec2f>(texCoordsOf(texCoord), texCoordIndex, true, "texCoordIndex");
    addTexCoordSets(texCoord, in);
    in.convex = convex.getValue();
    in.clockwise = !ccw.getValue();
    in.solid = solid.getValue();
    in.creaseAngle = creaseAngle.getValue();
    in.makeTexCoords = hasTexture(state);
}
