#include <kalmyr/nodes/SoTranslation.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoTranslation)

SoTranslation::SoTranslation()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
}

SoTranslation::~SoTranslation() = default;

void SoTranslation::initClass()
{
    SO_NODE_INIT_CLASS(SoTranslation, SoTransformation, "Translation");
}

void SoTranslation::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoTranslation::getLocalMatrix() const
{
    SbMatrix matrix;
    if (!translation.isIgnored())
        matrix.setTranslate(translation.getValue());
    return matrix;
}
