#include <kalmyr/shapes/SoNurbsSurface.h>

SO_NODE_SOURCE(SoNurbsSurface)

SoNurbsSurface::SoNurbsSurface()
{
    SO_NODE_CONSTRUCTOR(SoNurbsSurfaceShape);
}

SoNurbsSurface::~SoNurbsSurface() = default;

void SoNurbsSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoNurbsSurface, SoNurbsSurfaceShape, "NurbsSurface");
}
