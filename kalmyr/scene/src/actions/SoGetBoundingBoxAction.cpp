#include <kalmyr/actions/SoGetBoundingBoxAction.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include "core/CacheLock.h"

#include <utility>

SO_ACTION_SOURCE(SoGetBoundingBoxAction, SoAction, "GetBoundingBoxAction")

void SoGetBoundingBoxAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoGetBoundingBoxAction::SoGetBoundingBoxAction(const SbViewportRegion& region) : m_region(region) {}

void SoGetBoundingBoxAction::beginTraversal(SoNode*)
{
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
    m_open.clear();
    m_open.emplace_back();
}

void SoGetBoundingBoxAction::endTraversal(SoNode*)
{
    m_result = m_open.front().bounds.getAxisParallel();
    m_open.clear();
}

void SoGetBoundingBoxAction::extendBy(const SbBox3f& box, const SbVec3f& center)
{
    if (box.isEmpty())
        return;
    SoBounds single;
    single.box = box;
    single.center = center;
    single.count = 1;
    m_open.back().bounds.add(single, SoModelMatrixElement::get(getState()));
}

bool SoGetBoundingBoxAction::open(const SoNode* node, const SoBoundingBoxCache* cache)
{
    SoState* state = getState();
    const SbMatrix& toOuter = SoModelMatrixElement::get(state);
    if (cache && getPathMode() != IN_PATH && cache->isValid(node, state)) {
        Open& outer = m_open.back();
        outer.ownView |= cache->hasOwnView();
        outer.bounds.add(cache->getBounds(), toOuter);
        m_closed = {node, cache->getBounds(), cache->hasOwnView()};
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

void SoGetBoundingBoxAction::close(const SoNode* node, std::unique_ptr<SoBoundingBoxCache>* cache)
{
    SoState* state = getState();
    const Open inner = std::move(m_open.back());
    m_open.pop_back();
    const bool cacheable = inner.cacheable && !hasTerminated() && getPathMode() != IN_PATH;
    const bool ownView =
        inner.ownView || state->getValueId(SoViewElement::getStackIndex()) != inner.viewId;
    m_closed = {cacheable ? node : nullptr, inner.bounds.get(), ownView};
    state->pop();
    // Where there is a cache already little may have been visited: the parts were remembered.
    const bool worthIt = getNumVisits() - inner.visitsBefore >= kMinVisitsToCache;
    if (cache && cacheable && (*cache || worthIt)) {
        if (!*cache)
            *cache = std::make_unique<SoBoundingBoxCache>();
        (*cache)->set(node, inner.stateKey, m_closed.bounds, ownView);
    }
    Open& outer = m_open.back();
    outer.cacheable &= inner.cacheable;
    outer.ownView |= ownView;
    outer.bounds.add(m_closed.bounds, SoModelMatrixElement::get(state));
}

void SoGetBoundingBoxAction::measureChildren(const SoChildList& children,
                                             std::unique_ptr<SoBoundingBoxCache>* cache)
{
    if (!cache || children.getLength() < kMinParts || getPathAppliedTo()) {
        traverseChildren(children);
        return;
    }
    std::uint64_t key = SoBoundingBoxCache::stateKey(getState());
    for (int i = 0; !hasTerminated(); ++i) {
        i = addParts(children, *cache, i, key);
        if (i >= children.getLength())
            return;
        SoNode* child = children[i];
        m_closed.node = nullptr;
        traverse(child, i);
        if (m_closed.node == child)
            keepPart(*cache, i, children.getLength(), key);
        if (child->affectsState())
            key = SoBoundingBoxCache::stateKey(getState());
    }
}

/// Adds the children that are known, from `i` on, and returns the index of the first that is not.
int SoGetBoundingBoxAction::addParts(const SoChildList& children,
                                     const std::unique_ptr<SoBoundingBoxCache>& cache, int i,
                                     std::uint64_t key)
{
    const kalmyr::detail::CacheLock lock;
    if (cache)
        for (; i < children.getLength() && cache->knowsPart(i, children[i], key); ++i)
            addPart(*cache, i);
    return i;
}

void SoGetBoundingBoxAction::keepPart(std::unique_ptr<SoBoundingBoxCache>& cache, int index,
                                      int numChildren, std::uint64_t key)
{
    const kalmyr::detail::CacheLock lock;
    if (!cache)
        cache = std::make_unique<SoBoundingBoxCache>();
    cache->setPart(index, numChildren, m_closed.node, key, m_closed.bounds, m_closed.ownView);
}

void SoGetBoundingBoxAction::addPart(const SoBoundingBoxCache& cache, int index)
{
    const SoBoundingBoxCache::Part& part = cache.getPart(index);
    const SoBounds& bounds = cache.getPartBounds(index);
    Open& open = m_open.back();
    open.ownView |= part.ownView;
    SoState* state = getState();
    const SbMatrix& toOuter = SoModelMatrixElement::get(state);
    const bool isPlain = state->getValueId(SoModelMatrixElement::getStackIndex()) == 0;
    if (isPlain && !part.isTurnedMass)
        open.bounds.add(bounds, toOuter, part.projected);
    else
        open.bounds.add(bounds, toOuter);
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
