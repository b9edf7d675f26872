#include <kalmyr/draggers/SoDragHandle.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/draggers/SoDragger.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/nodes/SoSwitch.h>

namespace {

constexpr SoEnumEntry kMotions[] = {
    {"NONE", SoDragHandle::NONE},
    {"MOVE_LINE", SoDragHandle::MOVE_LINE},
    {"MOVE_PLANE", SoDragHandle::MOVE_PLANE},
    {"MOVE_VIEW", SoDragHandle::MOVE_VIEW},
    {"TURN_CYLINDER", SoDragHandle::TURN_CYLINDER},
    {"TURN_DISC", SoDragHandle::TURN_DISC},
    {"TURN_BALL", SoDragHandle::TURN_BALL},
    {"SCALE_LINE", SoDragHandle::SCALE_LINE},
    {"SCALE_PLANE", SoDragHandle::SCALE_PLANE},
    {"SCALE_EVENLY", SoDragHandle::SCALE_EVENLY},
    {"OTHER", SoDragHandle::OTHER},
};

const SoDragger* draggerAbove(const SoAction* action)
{
    for (int up = 1; const SoNode* node = action->getCurNode(up); ++up)
        if (node->isOfType(SoDragger::getClassTypeId()))
            return static_cast<const SoDragger*>(node);
    return nullptr;
}

} // namespace

SO_NODE_SOURCE(SoDragHandle)

SoDragHandle::SoDragHandle()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_EMPTY_FIELD(part);
    SO_ADD_FIELD(motion, (NONE));
    motion.setEnums(kMotions);
    SO_ADD_FIELD(axis, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(position, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(direction, (0.0f, 1.0f, 0.0f));
    SO_ADD_FIELD(size, (0.0f));
    SO_ADD_FIELD(isActive, (false));
}

SoDragHandle::~SoDragHandle() = default;

void SoDragHandle::initClass()
{
    SO_NODE_INIT_CLASS(SoDragHandle, SoGroup, "DragHandle");
}

void SoDragHandle::setActive(bool on)
{
    if (isActive.getValue() != on)
        isActive.setValue(on);
    SoNode* first = getNumChildren() > 0 ? getChild(0) : nullptr;
    if (first && first->isOfType(SoSwitch::getClassTypeId()))
        static_cast<SoSwitch*>(first)->whichChild.setValue(on ? 1 : 0);
}

void SoDragHandle::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    if (const SoDragger* dragger = draggerAbove(action)) {
        // On the screen it has a size of its own, so no list of a separator around may be kept.
        if (dragger->screenSize.getValue() > 0
            && action->isOfType(SoGLRenderAction::getClassTypeId()))
            static_cast<SoGLRenderAction*>(action)->setViewDependent();
        SoModelMatrixElement::mult(state, this, dragger->getHandleMatrix(*this, state));
    }
    SoGroup::doAction(action);
    state->pop();
}
