#include <kalmyr/shapes/SoShape.h>

#include "ShapeActions.h"

#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include "core/CacheLock.h"

SO_NODE_SOURCE(SoShape)

SoShape::SoShape()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoShape::~SoShape() = default;

void SoShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoShape, SoNode, "Shape");
    kalmyr::detail::addShapeMethods(getClassTypeId());
}

std::uint64_t SoShape::stateKey(SoState*) const
{
    return 0;
}

SoRef<SoGeometry> SoShape::findShared(SoState*)
{
    return nullptr;
}

SoShape::Cached* SoShape::findCached(std::uint64_t key)
{
    if (m_first.filled && m_first.key == key)
        return &m_first;
    if (!m_more)
        return nullptr;
    for (Cached& result : m_more->results) {
        if (result.filled && result.key == key)
            return &result;
    }
    return nullptr;
}

SoShape::Cached& SoShape::slotForNew()
{
    if (!m_first.filled)
        return m_first;
    if (!m_more)
        m_more = std::make_unique<More>();
    Cached& slot = m_more->results[static_cast<std::size_t>(m_more->next)];
    m_more->next = (m_more->next + 1) % kMoreResults;
    return slot;
}

/// Null with `found` when it is known that there is nothing to see.
SoRef<SoGeometry> SoShape::cached(std::uint64_t key, bool& found)
{
    const kalmyr::detail::CacheLock lock;
    if (m_builtFrom != getNodeId()) {
        m_first = {};
        m_more.reset();
        m_builtFrom = getNodeId();
    }
    const Cached* known = findCached(key);
    found = known;
    return known ? known->geometry : nullptr;
}

SoRef<SoGeometry> SoShape::getGeometry(SoState* state)
{
    const std::uint64_t key = stateKey(state);
    bool found = false;
    if (SoRef<SoGeometry> known = cached(key, found); found)
        return known;
    // Two threads may build the same: better than to build while others are kept waiting.
    SoRef<SoGeometry> geometry = findShared(state);
    if (!geometry) {
        geometry = new SoGeometry;
        buildGeometry(state, *geometry);
    }
    if (geometry->isEmpty())
        geometry.reset();
    const kalmyr::detail::CacheLock lock;
    if (const Cached* known = findCached(key))
        return known->geometry;
    slotForNew() = {key, true, geometry};
    return geometry;
}

void SoShape::computeBBox(SoState* state, SbBox3f& box, SbVec3f& center)
{
    const SoRef<SoGeometry> geometry = getGeometry(state);
    box = geometry ? geometry->getBox() : SbBox3f();
    if (geometry && geometry->isSizedInPixels()) {
        const SoRef<SoGeometry> seen =
            geometry->inView(SoModelMatrixElement::get(state), SoViewElement::get(state),
                             SoViewportRegionElement::get(state));
        if (seen && !seen->positions.empty())
            box = seen->getBox();
    }
    center = box.getCenter();
}
