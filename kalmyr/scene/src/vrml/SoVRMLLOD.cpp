#include <kalmyr/vrml/SoVRMLLOD.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "nodes/LevelDistance.h"

#include <algorithm>

SO_NODE_SOURCE(SoVRMLLOD)

SoVRMLLOD::SoVRMLLOD()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_VRML_EXPOSED_EMPTY(level);
    SO_VRML_FIELD(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EMPTY_FIELD(range);
    level.bindTo(&m_children);
}

SoVRMLLOD::~SoVRMLLOD() = default;

void SoVRMLLOD::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLLOD, SoGroup, "VRMLLOD");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoVRMLLOD*>(node)->SoGroup::doAction(action);
    });
}

int SoVRMLLOD::chooseChild(SoState* state) const
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

void SoVRMLLOD::doAction(SoAction* action)
{
    SoState* state = action->getState();
    int chosen = chooseChild(state);
    int next = -1;
    if (action->isOnPath(next) && next >= 0)
        chosen = next;
    if (chosen < 0 || chosen >= getNumChildren())
        return;
    state->push();
    action->traverse(m_children[chosen], chosen);
    state->pop();
}
