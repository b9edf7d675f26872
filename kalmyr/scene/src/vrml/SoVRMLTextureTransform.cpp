#include <kalmyr/vrml/SoVRMLTextureTransform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLTextureTransform)

SoVRMLTextureTransform::SoVRMLTextureTransform()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f));
    SO_VRML_EXPOSED(rotation, (0.0f));
    SO_VRML_EXPOSED(scale, (1.0f, 1.0f));
    SO_VRML_EXPOSED(translation, (0.0f, 0.0f));
}

SoVRMLTextureTransform::~SoVRMLTextureTransform() = default;

void SoVRMLTextureTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTextureTransform, SoNode, "VRMLTextureTransform");
}

void SoVRMLTextureTransform::doAction(SoAction* action)
{
    const auto moved = [](const SbVec2f& by) {
        SbMatrix matrix;
        matrix.setTranslate(SbVec3f(by[0], by[1], 0));
        return matrix;
    };
    SbMatrix turn, size;
    turn.setRotate(SbRotation(SbVec3f(0, 0, 1), rotation.getValue()));
    size.setScale(SbVec3f(scale.getValue()[0], scale.getValue()[1], 1));
    const SbVec2f pivot = center.getValue();
    SoLookExtrasElement::multTextureMatrix(action->getState(), this,
                                           moved(translation.getValue()) * moved(pivot) * turn
                                               * size * moved(-pivot));
}
