#include <kalmyr/nodes/SoScale.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoScale)

SoScale::SoScale()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
}

SoScale::~SoScale() = default;

void SoScale::initClass()
{
    SO_NODE_INIT_CLASS(SoScale, SoTransformation, "Scale");
}

void SoScale::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoScale::getLocalMatrix() const
{
    SbMatrix matrix;
    if (!scaleFactor.isIgnored())
        matrix.setScale(scaleFactor.getValue());
    return matrix;
}
