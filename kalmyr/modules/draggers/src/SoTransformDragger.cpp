#include <kalmyr/draggers/SoTransformDragger.h>

#include "DragMotions.h"

#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoShape.h>

SO_KIT_SOURCE(SoTransformDragger)

SoTransformDragger::SoTransformDragger()
{
    SO_NODE_CONSTRUCTOR(SoDragger);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(rotation, (SbRotation()));
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_KIT_MAKE_PARTS();
}

SoTransformDragger::~SoTransformDragger() = default;

void SoTransformDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTransformDragger, SoDragger, "TransformDragger");
    s_catalog->narrowTypes("shape", SoShape::getClassTypeId(), SoCube::getClassTypeId());
    s_catalog->setNullByDefault("shape", false);
}

SbMatrix SoTransformDragger::getMotionMatrix() const
{
    SbMatrix matrix;
    matrix.setTransform(translation.getValue(), rotation.getValue(), scaleFactor.getValue());
    return matrix;
}

void SoTransformDragger::begin(const SbVec3f& hit, const Pointer& pointer)
{
    m_hit = hit;
    m_plane = SbPlane(-pointer.ahead, hit);
    m_moved = translation.getValue();
    m_turned = rotation.getValue();
    m_scaled = scaleFactor.getValue();
}

void SoTransformDragger::follow(const Pointer& pointer)
{
    using namespace kalmyr::detail;
    if (pointer.shift)
        rotation.setValue(m_turned * turnBall(m_moved, m_hit, pointer.line));
    else if (pointer.ctrl)
        scaleFactor.setValue(m_scaled * scaleAbout(m_moved, m_plane, m_hit, pointer.line));
    else
        translation.setValue(m_moved + moveInPlane(m_plane, m_hit, pointer.line));
}
