#include <kalmyr/manips/SoRotateManip.h>

#include <kalmyr/draggers/SoRotateSphericalDragger.h>

SO_NODE_SOURCE(SoRotateManip)

SoRotateManip::SoRotateManip() : SoTransformManip(new SoRotateSphericalDragger)
{
    SO_NODE_CONSTRUCTOR(SoTransformManip);
    followFields();
}

SoRotateManip::~SoRotateManip() = default;

void SoRotateManip::initClass()
{
    SO_NODE_INIT_CLASS(SoRotateManip, SoTransformManip, "RotateManip");
}

void SoRotateManip::takeFromDragger()
{
    const auto* dragger = static_cast<const SoRotateSphericalDragger*>(getDragger());
    kalmyr::detail::putValue(rotation, dragger->rotation.getValue());
}

void SoRotateManip::giveToDragger()
{
    auto* dragger = static_cast<SoRotateSphericalDragger*>(getDragger());
    kalmyr::detail::putValue(dragger->rotation, rotation.getValue());
}

SbMatrix SoRotateManip::getOwnSpace() const
{
    SbMatrix toCenter, matrix;
    toCenter.setTranslate(-center.getValue());
    matrix.setTransform(SbVec3f(), SbRotation(), scaleFactor.getValue(),
                        scaleOrientation.getValue());
    return toCenter * matrix;
}

SbMatrix SoRotateManip::getDraggerPlace() const
{
    SbMatrix matrix;
    matrix.setTranslate(center.getValue() + translation.getValue());
    return matrix;
}
