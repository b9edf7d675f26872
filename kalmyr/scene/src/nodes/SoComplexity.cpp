#include <kalmyr/nodes/SoComplexity.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>

#include <algorithm>

SO_NODE_SOURCE(SoComplexity)

SoComplexity::SoComplexity()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(value, (0.5f));
}

SoComplexity::~SoComplexity() = default;

void SoComplexity::initClass()
{
    SO_NODE_INIT_CLASS(SoComplexity, SoNode, "Complexity");
}

void SoComplexity::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (value.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::COMPLEXITY))
        return;
    state->write<SoComplexityElement>().set(this, {std::clamp(value.getValue(), 0.0f, 1.0f)});
}
