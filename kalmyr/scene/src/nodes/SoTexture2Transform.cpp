#include <kalmyr/nodes/SoTexture2Transform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTexture2Transform)

SoTexture2Transform::SoTexture2Transform()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(translation, (0.0f, 0.0f));
    SO_ADD_FIELD(rotation, (0.0f));
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f));
    SO_ADD_FIELD(center, (0.0f, 0.0f));
}

SoTexture2Transform::~SoTexture2Transform() = default;

void SoTexture2Transform::initClass()
{
    SO_NODE_INIT_CLASS(SoTexture2Transform, SoNode, "Texture2Transform");
}

void SoTexture2Transform::doAction(SoAction* action)
{
    const SbVec2f move = translation.isIgnored() ? SbVec2f() : translation.getValue();
    const SbVec2f size = scaleFactor.isIgnored() ? SbVec2f(1, 1) : scaleFactor.getValue();
    const SbVec2f pivot = center.isIgnored() ? SbVec2f() : center.getValue();
    const float angle = rotation.isIgnored() ? 0.0f : rotation.getValue();
    SbMatrix matrix;
    matrix.setTransform({move[0], move[1], 0}, SbRotation(SbVec3f(0, 0, 1), angle),
                        {size[0], size[1], 1}, SbRotation(), {pivot[0], pivot[1], 0});
    SoLookExtrasElement::multTextureMatrix(action->getState(), this, matrix);
}
