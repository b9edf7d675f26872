#include <kalmyr/nodes/SoSwitch.h>

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

void searchSwitch(SoAction* action, SoNode* node)
{
    auto* search = static_cast<SoSearchAction*>(action);
    search->check(node);
    if (search->hasTerminated())
        return;
    if (search->isSearchingAll()) {
        search->searchBelow(node);
        return;
    }
    search->searchFields(node);
    if (static_cast<SoSwitch*>(node)->whichChild.getValue() == SO_SWITCH_INHERIT)
        search->dependsOnPlace();
    node->doAction(action);
}

} // namespace

SO_NODE_SOURCE(SoSwitch)

SoSwitch::SoSwitch()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_FIELD(whichChild, (SO_SWITCH_NONE));
}

SoSwitch::~SoSwitch() = default;

void SoSwitch::initClass()
{
    SO_NODE_INIT_CLASS(SoSwitch, SoGroup, "Switch");
    SoSearchAction::addMethod(getClassTypeId(), searchSwitch);
}

int SoSwitch::chooseChild(SoState* state) const
{
    const int own = whichChild.isIgnored() ? SO_SWITCH_NONE : whichChild.getValue();
    if (own != SO_SWITCH_INHERIT)
        return own;
    const auto& inherited = state->get<SoSwitchElement>();
    return inherited.getNode() ? inherited.value() : SO_SWITCH_NONE;
}

void SoSwitch::doAction(SoAction* action)
{
    SoState* state = action->getState();
    int chosen = chooseChild(state);
    if (whichChild.getValue() != SO_SWITCH_INHERIT)
        state->write<SoSwitchElement>().set(this, chosen);
    if (chosen == SO_SWITCH_ALL) {
        action->traverseChildren(m_children);
        return;
    }
    // On a path the way leads through that child even where the switch shows another.
    int next = -1;
    if (action->isOnPath(next) && next >= 0)
        chosen = next;
    if (chosen >= 0 && chosen < getNumChildren())
        action->traverse(m_children[chosen], chosen);
}
