#include <kalmyr/nodes/SoNormal.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>

SO_NODE_SOURCE(SoNormal)

SoNormal::SoNormal()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(vector);
}

SoNormal::~SoNormal() = default;

void SoNormal::initClass()
{
    SO_NODE_INIT_CLASS(SoNormal, SoNode, "Normal");
}

void SoNormal::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (vector.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::NORMAL))
        return;
    state->write<SoNormalElement>().set(this, vector.values());
}
