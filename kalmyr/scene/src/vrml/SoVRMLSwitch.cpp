#include <kalmyr/vrml/SoVRMLSwitch.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLSwitch)

SoVRMLSwitch::SoVRMLSwitch()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_VRML_EXPOSED_EMPTY(choice);
    SO_VRML_EXPOSED(whichChoice, (-1));
    choice.bindTo(&m_children);
}

SoVRMLSwitch::~SoVRMLSwitch() = default;

void SoVRMLSwitch::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSwitch, SoGroup, "VRMLSwitch");
}

void SoVRMLSwitch::doAction(SoAction* action)
{
    int chosen = whichChoice.isIgnored() ? -1 : whichChoice.getValue();
    // On a path the way leads through that child even where the switch shows another.
    int next = -1;
    if (action->isOnPath(next) && next >= 0)
        chosen = next;
    if (chosen < 0 || chosen >= getNumChildren())
        return;
    SoState* state = action->getState();
    state->push();
    action->traverse(m_children[chosen], chosen);
    state->pop();
}
