#include <kalmyr/nodes/SoTransformSeparator.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoTransformSeparator)

SoTransformSeparator::SoTransformSeparator()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
}

SoTransformSeparator::~SoTransformSeparator() = default;

void SoTransformSeparator::initClass()
{
    SO_NODE_INIT_CLASS(SoTransformSeparator, SoGroup, "TransformSeparator");
}

void SoTransformSeparator::doAction(SoAction* action)
{
    // The whole element comes back, not just its value: caches know the old matrix by its id.
    SoState* state = action->getState();
    SoModelMatrixElement before;
    before.copyFrom(state->get<SoModelMatrixElement>());
    action->traverseChildren(m_children);
    state->write<SoModelMatrixElement>().copyFrom(before);
}
