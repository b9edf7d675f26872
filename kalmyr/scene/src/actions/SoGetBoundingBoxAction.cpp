#include <kalmyr/actions/SoGetBoundingBoxAction.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

SO_ACTION_SOURCE(SoGetBoundingBoxAction, SoAction, "GetBoundingBoxAction")

void SoGetBoundingBoxAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoGetBoundingBoxAction::SoGetBoundingBoxAction(const SbViewportRegion& region) : m_region(region) {}

void SoGetBoundingBoxAction::beginTraversal(SoNode*)
{
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
    m_open.assign(1, Open());
}

void SoGetBoundingBoxAction::endTraversal(SoNode*)
{
    m_result = m_open.front().bounds;
    m_open.clear();
}

void SoGetBoundingBoxAction::extendBy(const SbBox3f& box, const SbVec3f& center)
{
    m_open.back().bounds.add(box, SoModelMatrixElement::get(getState()), center);
}

bool SoGetBoundingBoxAction::open(const SoNode* node, const SoBoundingBoxCache* cache)
{
    SoState* state = getState();
    const SbMatrix& toOuter = SoModelMatrixElement::get(state);
    if (cache && getPathMode() != IN_PATH && cache->isValid(node, state)) {
        const SoBounds& inside = cache->getBounds();
        Open& outer = m_open.back();
        outer.ownView |= cache->hasOwnView();
        if (inside.count == 1)
            outer.bounds.add(inside.box, inside.matrix * toOuter, inside.center);
        else
            outer.bounds.add(inside.box, toOuter, inside.box.getCenter());
        return false;
    }
    Open& inner = m_open.emplace_back();
    inner.toOuter = &toOuter;
    inner.stateKey = SoBoundingBoxCache::stateKey(state);
    inner.viewId = state->getValueId(SoViewElement::getStackIndex());
    inner.visitsBefore = getNumVisits();
    state->push();
    SoModelMatrixElement::makeIdentity(state, node);
    return true;
}

bool SoGetBoundingBoxAction::isWorthCaching(const Open& open) const
{
    return open.cacheable && !hasTerminated() && getPathMode() != IN_PATH
           && getNumVisits() - open.visitsBefore >= kMinVisitsToCache;
}

void SoGetBoundingBoxAction::close(const SoNode* node, std::unique_ptr<SoBoundingBoxCache>* cache)
{
    SoState* state = getState();
    Open inner = m_open.back();
    inner.ownView |= state->getValueId(SoViewElement::getStackIndex()) != inner.viewId;
    m_open.pop_back();
    state->pop();
    if (cache && isWorthCaching(inner)) {
        if (!*cache)
            *cache = std::make_unique<SoBoundingBoxCache>();
        (*cache)->set(node, inner.stateKey, inner.bounds, inner.ownView);
    }
    Open& outer = m_open.back();
    outer.cacheable &= inner.cacheable;
    outer.ownView |= inner.ownView;
    const SbMatrix& toOuter = SoModelMatrixElement::get(state);
    if (inner.bounds.count == 1)
        outer.bounds.add(inner.bounds.box, inner.bounds.matrix * toOuter, inner.bounds.center);
    else
        outer.bounds.add(inner.bounds.box, toOuter, inner.bounds.box.getCenter());
}

void SoGetBoundingBoxAction::doNotCache()
{
    for (Open& open : m_open)
        open.cacheable = false;
}

void SoGetBoundingBoxAction::resetTransform(const SoNode* node)
{
    SbMatrix toRoot;
    for (const Open& open : m_open) {
        if (open.toOuter)
            toRoot.multLeft(*open.toOuter);
    }
    SoModelMatrixElement::set(getState(), node, toRoot.inverse());
    if (m_open.size() > 1)
        doNotCache();
}

void SoGetBoundingBoxAction::resetBox()
{
    for (Open& open : m_open)
        open.bounds = {};
    doNotCache();
}
