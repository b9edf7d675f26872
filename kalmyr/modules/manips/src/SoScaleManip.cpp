#include <kalmyr/manips/SoScaleManip.h>

#include <kalmyr/draggers/SoScale3Dragger.h>

SO_NODE_SOURCE(SoScaleManip)

SoScaleManip::SoScaleManip() : SoTransformManip(new SoScale3Dragger)
{
    SO_NODE_CONSTRUCTOR(SoTransformManip);
    followFields();
}

SoScaleManip::~SoScaleManip() = default;

void SoScaleManip::initClass()
{
    SO_NODE_INIT_CLASS(SoScaleManip, SoTransformManip, "ScaleManip");
}

void SoScaleManip::takeFromDragger()
{
    const auto* dragger = static_cast<const SoScale3Dragger*>(getDragger());
    kalmyr::detail::putValue(scaleFactor, dragger->scaleFactor.getValue());
}

void SoScaleManip::giveToDragger()
{
    auto* dragger = static_cast<SoScale3Dragger*>(getDragger());
    kalmyr::detail::putValue(dragger->scaleFactor, scaleFactor.getValue());
}

SbMatrix SoScaleManip::getOwnSpace() const
{
    SbMatrix toCenter, toAxes;
    toCenter.setTranslate(-center.getValue());
    toAxes.setRotate(scaleOrientation.getValue().inverse());
    return toCenter * toAxes;
}

SbMatrix SoScaleManip::getDraggerPlace() const
{
    SbMatrix turned, moved;
    turned.setRotate(scaleOrientation.getValue() * rotation.getValue());
    moved.setTranslate(center.getValue() + translation.getValue());
    return turned * moved;
}
