#include <kalmyr/nodes/SoMatrixTransform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoMatrixTransform)

SoMatrixTransform::SoMatrixTransform()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(matrix, (SbMatrix()));
}

SoMatrixTransform::~SoMatrixTransform() = default;

void SoMatrixTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoMatrixTransform, SoTransformation, "MatrixTransform");
}

void SoMatrixTransform::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoMatrixTransform::getLocalMatrix() const
{
    return matrix.isIgnored() ? SbMatrix() : matrix.getValue();
}
