#include <kalmyr/actions/SoGetBoundingBoxAction.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include "actions/BoundsRun.h"
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
    const int numChildren = children.getLength();
    std::uint64_t key = SoBoundingBoxCache::stateKey(getState());
    int runStart = 0;
    int numMeasured = 0;
    for (int i = 0; !hasTerminated(); ++i) {
        if (addRun(children, *cache, i, key))
            return;
        i = addParts(children, *cache, i, key, numChildren);
        if (i >= numChildren)
            break;
        SoNode* child = children[i];
        const bool isPart = measurePart(child, i, numChildren, *cache, key);
        ++numMeasured;
        if (!isPart || child->affectsState())
            runStart = i + 1;
        if (child->affectsState())
            key = SoBoundingBoxCache::stateKey(getState());
    }
    // Where most have changed, most will do so again.
    const int length = numChildren - runStart;
    if (length >= SoBoundingBoxCache::kMinRun && 2 * numMeasured < length && !hasTerminated()
        && isPlain()) {
        const kalmyr::detail::CacheLock lock;
        (*cache)->renewRun(runStart, children, key);
    }
}

/// Whether its bounds could be remembered.
bool SoGetBoundingBoxAction::measurePart(SoNode* child, int index, int numChildren,
                                         std::unique_ptr<SoBoundingBoxCache>& cache,
                                         std::uint64_t key)
{
    m_closed.node = nullptr;
    traverse(child, index);
    if (m_closed.node != child)
        return false;
    keepPart(cache, index, numChildren, key);
    return true;
}

/// Adds all children from `first` on, looking only at those that changed. False when they must be
/// gone through; some may be added by then.
bool SoGetBoundingBoxAction::addRun(const SoChildList& children,
                                    std::unique_ptr<SoBoundingBoxCache>& cache, int first,
                                    std::uint64_t key)
{
    std::vector<int> changed;
    {
        const kalmyr::detail::CacheLock lock;
        const kalmyr::detail::BoundsRun* run =
            cache ? cache->findRun(first, children, key) : nullptr;
        if (!run || !isPlain())
            return false;
        for (const SoNode* child : run->changed)
            run->collectPlaces(child, changed);
    }
    bool holds = true;
    for (const int i : changed)
        if (addParts(children, cache, i, key, i + 1) == i)
            holds = holds && measurePart(children[i], i, children.getLength(), cache, key);
    // Nothing is edited meanwhile; another reader may have done the same.
    const kalmyr::detail::CacheLock lock;
    kalmyr::detail::BoundsRun* run = cache->findRun(first, children, key);
    if (!run)
        return false;
    for (const int i : changed)
        holds = holds && cache->exchangeInRun(i);
    if (!holds || hasTerminated()) {
        cache->dropRun();
        return false;
    }
    run->changed.clear();
    m_open.back().bounds.addSeveral(run->boxes.get());
    return true;
}

/// Whether children stand in the space of the node that was opened last.
bool SoGetBoundingBoxAction::isPlain() const
{
    return getState()->getValueId(SoModelMatrixElement::getStackIndex()) == 0;
}

/// Adds the children that are known, from `i` on, and returns the index of the first that is not,
/// or the end.
int SoGetBoundingBoxAction::addParts(const SoChildList& children,
                                     const std::unique_ptr<SoBoundingBoxCache>& cache, int i,
                                     std::uint64_t key, int end)
{
    const kalmyr::detail::CacheLock lock;
    if (cache)
        for (; i < end && cache->knowsPart(i, children[i], key); ++i)
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
    const SbMatrix& toOuter = SoModelMatrixElement::get(getState());
    if (isPlain() && !part.isTurnedMass)
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
