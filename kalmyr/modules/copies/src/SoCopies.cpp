#include <kalmyr/copies/SoCopies.h>

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/copies/SoCopyDetail.h>
#include <kalmyr/elements/SoMatrixElements.h>

#include <algorithm>

SO_NODE_SOURCE(SoCopies)

SoCopies::SoCopies()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
}

SoCopies::~SoCopies() = default;

void SoCopies::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoCopies, SoGroup, "Copies");
}

void SoCopies::doAction(SoAction* action)
{
    int next = -1;
    const int wanted = std::clamp(getNumCopies(), 0, kMaxCopies);
    const int count = action->isOnPath(next) ? std::min(wanted, 1) : wanted;
    SoRayPickAction* pick = action->isOfType(SoRayPickAction::getClassTypeId())
                                ? static_cast<SoRayPickAction*>(action)
                                : nullptr;
    SoCopyDetail detail;
    SoState* state = action->getState();
    for (int i = 0; i < count && !action->hasTerminated(); ++i) {
        detail.setCopyIndex(i);
        state->push();
        SoModelMatrixElement::mult(state, this, getCopyMatrix(i));
        if (pick)
            pick->pushDetail(this, &detail);
        action->traverseChildren(m_children);
        if (pick)
            pick->popDetail();
        state->pop();
    }
}
