#include <kalmyr/nodes/SoTransform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoTransform)

SoTransform::SoTransform()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(rotation, (SbRotation()));
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(scaleOrientation, (SbRotation()));
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
}

SoTransform::~SoTransform() = default;

void SoTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoTransform, SoTransformation, "Transform");
}

void SoTransform::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoTransform::getLocalMatrix() const
{
    const SbVec3f move = translation.isIgnored() ? SbVec3f() : translation.getValue();
    const SbRotation turn = rotation.isIgnored() ? SbRotation() : rotation.getValue();
    const SbVec3f size = scaleFactor.isIgnored() ? SbVec3f(1, 1, 1) : scaleFactor.getValue();
    SbMatrix matrix;
    // Most transforms only move, or scale along the plain axes about the origin.
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

bool SoTransform::setMatrix(const SbMatrix& matrix)
{
    SbVec3f move, size;
    SbRotation turn, axes;
    if (!matrix.getTransform(move, turn, size, axes, center.getValue()))
        return false;
    translation.setValue(move);
    rotation.setValue(turn);
    scaleFactor.setValue(size);
    scaleOrientation.setValue(axes);
    return true;
}

void SoTransform::recenter(const SbVec3f& newCenter)
{
    const SbMatrix matrix = getLocalMatrix();
    center.setValue(newCenter);
    setMatrix(matrix);
}
