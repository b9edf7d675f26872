#include <kalmyr/manips/SoTranslateManip.h>

#include <kalmyr/draggers/SoTranslate3Dragger.h>

SO_NODE_SOURCE(SoTranslateManip)

SoTranslateManip::SoTranslateManip() : SoTransformManip(new SoTranslate3Dragger)
{
    SO_NODE_CONSTRUCTOR(SoTransformManip);
    followFields();
}

SoTranslateManip::~SoTranslateManip() = default;

void SoTranslateManip::initClass()
{
    SO_NODE_INIT_CLASS(SoTranslateManip, SoTransformManip, "TranslateManip");
}

void SoTranslateManip::takeFromDragger()
{
    const auto* dragger = static_cast<const SoTranslate3Dragger*>(getDragger());
    kalmyr::detail::putValue(translation, dragger->translation.getValue());
}

void SoTranslateManip::giveToDragger()
{
    auto* dragger = static_cast<SoTranslate3Dragger*>(getDragger());
    kalmyr::detail::putValue(dragger->translation, translation.getValue());
}

SbMatrix SoTranslateManip::getOwnSpace() const
{
    SbMatrix toCenter, matrix;
    toCenter.setTranslate(-center.getValue());
    matrix.setTransform(SbVec3f(), rotation.getValue(), scaleFactor.getValue(),
                        scaleOrientation.getValue());
    return toCenter * matrix;
}

SbMatrix SoTranslateManip::getDraggerPlace() const
{
    SbMatrix matrix;
    matrix.setTranslate(center.getValue());
    return matrix;
}
