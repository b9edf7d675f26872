#include <kalmyr/nodes/SoClipPlane.h>

SO_NODE_SOURCE(SoClipPlane)

SoClipPlane::SoClipPlane()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(plane, (SbPlane(SbVec3f(1, 0, 0), 0)));
    SO_ADD_FIELD(on, (true));
}

SoClipPlane::~SoClipPlane() = default;

void SoClipPlane::initClass()
{
    SO_NODE_INIT_CLASS(SoClipPlane, SoNode, "ClipPlane");
}
