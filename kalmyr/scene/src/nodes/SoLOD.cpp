#include <kalmyr/nodes/SoLOD.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoViewElements.h>

#include "nodes/LevelDistance.h"

#include <algorithm>

SO_NODE_SOURCE(SoLOD)

SoLOD::SoLOD()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_EMPTY_FIELD(range);
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
}

SoLOD::~SoLOD() = default;

void SoLOD::initClass()
{
    SO_NODE_INIT_CLASS(SoLOD, SoGroup, "LOD");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoLOD*>(node)->SoGroup::doAction(action);
    });
}

int SoLOD::chooseChild(SoState* state) const
{
    const int last = getNumChildren() - 1;
    const SoView& view = SoViewElement::get(state);
    if (last < 0 || !view.valid || range.isIgnored())
        return std::min(last, 0);
    const float distance = kalmyr::detail::eyeDistance(state, center.getValue());
    const auto ranges = range.values();
    const auto at = std::upper_bound(ranges.begin(), ranges.end(), distance);
    return std::min(last, static_cast<int>(at - ranges.begin()));
}

void SoLOD::doAction(SoAction* action)
{
    int next = -1;
    if (action->isOnPath(next)) {
        if (next >= 0 && next < getNumChildren())
            action->traverse(m_children[next], next);
        return;
    }
    const int chosen = chooseChild(action->getState());
    if (chosen >= 0)
        action->traverse(m_children[chosen], chosen);
}
