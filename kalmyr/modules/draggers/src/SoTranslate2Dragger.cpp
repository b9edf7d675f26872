#include <kalmyr/draggers/SoTranslate2Dragger.h>

#include "DragMotions.h"

#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoShape.h>

SO_KIT_SOURCE(SoTranslate2Dragger)

SoTranslate2Dragger::SoTranslate2Dragger()
{
    SO_NODE_CONSTRUCTOR(SoDragger);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_KIT_MAKE_PARTS();
    static_cast<SoCube*>(getPart("shape"))->depth.initValue(0.1f); // flat, as its motion is
}

SoTranslate2Dragger::~SoTranslate2Dragger() = default;

void SoTranslate2Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTranslate2Dragger, SoDragger, "Translate2Dragger");
    s_catalog->narrowTypes("shape", SoShape::getClassTypeId(), SoCube::getClassTypeId());
    s_catalog->setNullByDefault("shape", false);
}

SbMatrix SoTranslate2Dragger::getMotionMatrix() const
{
    SbMatrix matrix;
    matrix.setTranslate(translation.getValue());
    return matrix;
}

void SoTranslate2Dragger::begin(const SbVec3f& hit, const Pointer&)
{
    m_hit = hit;
    m_before = translation.getValue();
}

void SoTranslate2Dragger::follow(const Pointer& pointer)
{
    const SbPlane plane(SbVec3f(0, 0, 1), m_hit);
    translation.setValue(m_before + kalmyr::detail::moveInPlane(plane, m_hit, pointer.line));
}
