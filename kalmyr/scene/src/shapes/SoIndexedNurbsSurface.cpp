#include <kalmyr/shapes/SoIndexedNurbsSurface.h>

SO_NODE_SOURCE(SoIndexedNurbsSurface)

SoIndexedNurbsSurface::SoIndexedNurbsSurface()
{
    SO_NODE_CONSTRUCTOR(SoNurbsSurfaceShape);
    SO_ADD_EMPTY_FIELD(coordIndex);
    SO_ADD_EMPTY_FIELD(textureCoordIndex);
}

SoIndexedNurbsSurface::~SoIndexedNurbsSurface() = default;

void SoIndexedNurbsSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedNurbsSurface, SoNurbsSurfaceShape, "IndexedNurbsSurface");
}
