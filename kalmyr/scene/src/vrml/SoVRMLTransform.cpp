#include <kalmyr/vrml/SoVRMLTransform.h>

#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLTransform)

SoVRMLTransform::SoVRMLTransform()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(rotation, (SbRotation()));
    SO_VRML_EXPOSED(scale, (1.0f, 1.0f, 1.0f));
    SO_VRML_EXPOSED(scaleOrientation, (SbRotation()));
    SO_VRML_EXPOSED(translation, (0.0f, 0.0f, 0.0f));
}

SoVRMLTransform::~SoVRMLTransform() = default;

void SoVRMLTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTransform, SoVRMLParent, "VRMLTransform");
}

SbMatrix SoVRMLTransform::getLocalMatrix() const
{
    const SbVec3f move = translation.isIgnored() ? SbVec3f() : translation.getValue();
    const SbRotation turn = rotation.isIgnored() ? SbRotation() : rotation.getValue();
    const SbVec3f size = scale.isIgnored() ? SbVec3f(1, 1, 1) : scale.getValue();
    SbMatrix matrix;
    // Most transforms only move.
    if (turn == SbRotation() && size == SbVec3f(1, 1, 1)) {
        matrix.setTranslate(move);
        return matrix;
    }
    const SbRotation axes =
        scaleOrientation.isIgnored() ? SbRotation() : scaleOrientation.getValue();
    const SbVec3f pivot = center.isIgnored() ? SbVec3f() : center.getValue();
    matrix.setTransform(move, turn, size, axes, pivot);
    return matrix;
}

void SoVRMLTransform::setState(SoState* state)
{
    SoModelMatrixElement::mult(state, this, getLocalMatrix());
}
