#include <kalmyr/shapes/SoShape.h>

#include "PrimitiveIndex.h"
#include "ShapeActions.h"
#include "TexCoordPlanes.h"

#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/details/SoLineDetail.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/elements/SoViewElements.h>

#include "core/CacheLock.h"

namespace {

/// Details of a shape that has no indices: the face or the number says all.
std::unique_ptr<SoDetail> plainDetail(const SoGeometry& g, SoShape::Primitive primitive, int index)
{
    if (primitive == SoShape::Primitive::POINT)
        return std::make_unique<SoPointDetail>();
    SoPointDetail corner;
    if (primitive == SoShape::Primitive::LINE) {
        auto detail = std::make_unique<SoLineDetail>();
        corner.setMaterialIndex(0);
        detail->setLineIndex(index);
        detail->setPoint0(corner);
        detail->setPoint1(corner);
        return detail;
    }
    const int face =
        g.triangleFaces.empty() ? index : g.triangleFaces[static_cast<std::size_t>(index)];
    // Colours of vertices are those of the parts in a shape without positions of its own.
    corner.setMaterialIndex(g.colors.empty() ? 0 : face);
    auto detail = std::make_unique<SoFaceDetail>();
    detail->setFaceIndex(face);
    detail->setPartIndex(face);
    detail->setPoints(std::vector<SoPointDetail>(3, corner));
    return detail;
}

std::uint32_t numberOf(const SoGeometry& g, SoShape::Primitive primitive, std::size_t index)
{
    const std::vector<std::int32_t>& numbers =
        primitive == SoShape::Primitive::TRIANGLE ? g.triangleFaces
        : primitive == SoShape::Primitive::LINE   ? g.lineNumbers
                                                  : g.pointNumbers;
    return static_cast<std::uint32_t>(numbers.empty() ? static_cast<std::int32_t>(index)
                                                      : numbers[index]);
}

} // namespace

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

void SoShape::fillSource(SoState*, kalmyr::ShapeSource&) const {}

void SoShape::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::ShapeSource source(kalmyr::ShapeSource::GEOMETRY);
    fillSource(state, source);
    source.build(geometry);
}

std::unique_ptr<SoDetail> SoShape::createDetail(SoState* state, const SoGeometry& geometry,
                                                Primitive primitive, std::size_t index,
                                                const SbVec3f&)
{
    using kalmyr::ShapeSource;
    const kalmyr::detail::PrimitiveIndex* known = geometry.getPrimitiveIndex();
    ShapeSource source(known ? ShapeSource::NUMBERS : ShapeSource::INDICES);
    fillSource(state, source);
    if (source.kind == ShapeSource::NONE)
        return plainDetail(geometry, primitive, static_cast<int>(index));
    if (!known) {
        known =
            geometry.setPrimitiveIndex(std::make_unique<kalmyr::detail::PrimitiveIndex>(source));
    }
    return known->createDetail(source, numberOf(geometry, primitive, index));
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
    using kalmyr::detail::withPlanes;
    const std::uint64_t key = stateKey(state) + kalmyr::detail::extrasKey(state);
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
    else
        geometry = withPlanes(geometry, state);
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
