#include <kalmyr/nodes/SoTexture3Transform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTexture3Transform)

SoTexture3Transform::SoTexture3Transform()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(rotation, (SbRotation()));
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(scaleOrientation, (SbRotation()));
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
}

SoTexture3Transform::~SoTexture3Transform() = default;

void SoTexture3Transform::initClass()
{
    SO_NODE_INIT_CLASS(SoTexture3Transform, SoNode, "Texture3Transform");
}

void SoTexture3Transform::doAction(SoAction* action)
{
    const auto valueOf = [](const auto& field, const auto& other) {
        return field.isIgnored() ? other : field.getValue();
    };
    const SbVec3f none(0, 0, 0);
    SbMatrix matrix;
    matrix.setTransform(valueOf(translation, none), valueOf(rotation, SbRotation()),
                        valueOf(scaleFactor, SbVec3f(1, 1, 1)),
                        valueOf(scaleOrientation, SbRotation()), valueOf(center, none));
    SoLookExtrasElement::multTextureMatrix(action->getState(), this, matrix);
}
