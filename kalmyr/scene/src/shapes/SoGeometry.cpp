#include <kalmyr/shapes/SoGeometry.h>

#include "PrimitiveIndex.h"

#include <kalmyr/shapes/TriangleTree.h>

#include "core/CacheLock.h"

#include <atomic>

namespace {

std::uint64_t nextGeometryId()
{
    static std::atomic<std::uint64_t> s_last{0};
    return ++s_last;
}

SoGeometry::DeathObserver s_deathObserver = nullptr;

} // namespace

SoGeometry::SoGeometry() : m_id(nextGeometryId()) {}

SoGeometry::~SoGeometry()
{
    if (m_onDeath)
        m_onDeath(this);
    if (s_deathObserver)
        s_deathObserver(m_id);
}

void SoGeometry::setDeathObserver(DeathObserver observer)
{
    s_deathObserver = observer;
}

const SbBox3f& SoGeometry::getBox() const
{
    const kalmyr::detail::CacheLock lock;
    if (!m_boxKnown) {
        for (const SbVec3f& p : positions)
            m_box.extendBy(p);
        m_boxKnown = true;
    }
    return m_box;
}

const kalmyr::TriangleTree& SoGeometry::getTriangleTree() const
{
    const kalmyr::detail::CacheLock lock;
    if (!m_tree)
        m_tree = std::make_unique<kalmyr::TriangleTree>(positions, triangles);
    return *m_tree;
}

const kalmyr::detail::PrimitiveIndex* SoGeometry::getPrimitiveIndex() const
{
    const kalmyr::detail::CacheLock lock;
    return m_primitives.get();
}

const kalmyr::detail::PrimitiveIndex*
SoGeometry::setPrimitiveIndex(std::unique_ptr<kalmyr::detail::PrimitiveIndex> index) const
{
    const kalmyr::detail::CacheLock lock;
    if (!m_primitives)
        m_primitives = std::move(index);
    return m_primitives.get();
}
