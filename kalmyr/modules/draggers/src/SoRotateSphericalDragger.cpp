#include <kalmyr/draggers/SoRotateSphericalDragger.h>

#include "DragMotions.h"

#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/shapes/SoSphere.h>

SO_KIT_SOURCE(SoRotateSphericalDragger)

SoRotateSphericalDragger::SoRotateSphericalDragger()
{
    SO_NODE_CONSTRUCTOR(SoDragger);
    SO_ADD_FIELD(rotation, (SbRotation()));
    SO_KIT_MAKE_PARTS();
}

SoRotateSphericalDragger::~SoRotateSphericalDragger() = default;

void SoRotateSphericalDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoRotateSphericalDragger, SoDragger, "RotateSphericalDragger");
    s_catalog->narrowTypes("shape", SoShape::getClassTypeId(), SoSphere::getClassTypeId());
    s_catalog->setNullByDefault("shape", false);
}

SbMatrix SoRotateSphericalDragger::getMotionMatrix() const
{
    SbMatrix matrix;
    matrix.setRotate(rotation.getValue());
    return matrix;
}

void SoRotateSphericalDragger::begin(const SbVec3f& hit, const Pointer&)
{
    m_hit = hit;
    m_before = rotation.getValue();
}

void SoRotateSphericalDragger::follow(const Pointer& pointer)
{
    rotation.setValue(m_before * kalmyr::detail::turnBall(SbVec3f(), m_hit, pointer.line));
}
