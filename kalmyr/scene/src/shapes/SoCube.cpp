#include <kalmyr/shapes/SoCube.h>

#include "Primitives.h"

#include <cmath>

SO_NODE_SOURCE(SoCube)

SoCube::SoCube()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(width, (2.0f));
    SO_ADD_FIELD(height, (2.0f));
    SO_ADD_FIELD(depth, (2.0f));
}

SoCube::~SoCube() = default;

void SoCube::initClass()
{
    SO_NODE_INIT_CLASS(SoCube, SoShape, "Cube");
}

kalmyr::detail::SharedKey SoCube::getKey(SoState* state) const
{
    using kalmyr::detail::sizeBits;
    kalmyr::detail::SharedKey key;
    key.kind = kalmyr::detail::SharedKey::CUBE;
    key.sizes = {sizeBits(width.getValue()), sizeBits(height.getValue()),
                 sizeBits(depth.getValue())};
    static_cast<void>(state);
    return key;
}

void SoCube::computeBBox(SoState*, SbBox3f& box, SbVec3f& center)
{
    const SbVec3f half(std::abs(width.getValue()) / 2, std::abs(height.getValue()) / 2,
                       std::abs(depth.getValue()) / 2);
    box.setBounds(-half, half);
    center = box.getCenter();
}

std::uint64_t SoCube::stateKey(SoState* state) const
{
    return kalmyr::detail::primitiveStateKey(state, 0, true);
}

SoRef<SoGeometry> SoCube::findShared(SoState* state)
{
    if (kalmyr::detail::hasPartColors(state))
        return nullptr;
    return kalmyr::detail::sharedGeometry(getKey(state), kalmyr::detail::buildPrimitive);
}

void SoCube::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildPrimitive(getKey(state), geometry);
    if (kalmyr::detail::hasPartColors(state))
        kalmyr::detail::applyPartColors(state, geometry);
}
