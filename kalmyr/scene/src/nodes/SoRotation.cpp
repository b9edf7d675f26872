#include <kalmyr/nodes/SoRotation.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoRotation)

SoRotation::SoRotation()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(rotation, (SbRotation()));
}

SoRotation::~SoRotation() = default;

void SoRotation::initClass()
{
    SO_NODE_INIT_CLASS(SoRotation, SoTransformation, "Rotation");
}

void SoRotation::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoRotation::getLocalMatrix() const
{
    SbMatrix matrix;
    if (!rotation.isIgnored())
        matrix.setRotate(rotation.getValue());
    return matrix;
}
