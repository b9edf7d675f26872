#include <kalmyr/shapes/SoCone.h>

#include "Primitives.h"

#include <cmath>

namespace {

constexpr SoEnumEntry kParts[] = {
    {"SIDES", SoCone::SIDES},
    {"BOTTOM", SoCone::BOTTOM},
    {"ALL", SoCone::ALL},
};

} // namespace

SO_NODE_SOURCE(SoCone)

SoCone::SoCone()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(parts, (ALL));
    parts.setEnums(kParts);
    SO_ADD_FIELD(bottomRadius, (1.0f));
    SO_ADD_FIELD(height, (2.0f));
}

SoCone::~SoCone() = default;

void SoCone::initClass()
{
    SO_NODE_INIT_CLASS(SoCone, SoShape, "Cone");
}

kalmyr::detail::SharedKey SoCone::getKey(SoState* state) const
{
    using kalmyr::detail::sizeBits;
    kalmyr::detail::SharedKey key;
    key.kind = kalmyr::detail::SharedKey::CONE;
    key.sizes = {sizeBits(bottomRadius.getValue()), sizeBits(height.getValue())};
    key.parts = parts.getValue();
    key.segments = kalmyr::detail::segmentsOf(state);
    return key;
}

void SoCone::computeBBox(SoState*, SbBox3f& box, SbVec3f& center)
{
    const float r = std::abs(bottomRadius.getValue()), h = std::abs(height.getValue()) / 2;
    box.makeEmpty();
    if (parts.getValue() & ALL)
        box.setBounds({-r, -h, -r}, {r, parts.getValue() & SIDES ? h : -h, r});
    center = box.getCenter();
}

std::uint64_t SoCone::stateKey(SoState* state) const
{
    return kalmyr::detail::primitiveStateKey(state, kalmyr::detail::segmentsOf(state), true);
}

SoRef<SoGeometry> SoCone::findShared(SoState* state)
{
    if (kalmyr::detail::hasPartColors(state))
        return nullptr;
    return kalmyr::detail::sharedGeometry(getKey(state), kalmyr::detail::buildPrimitive);
}

void SoCone::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildPrimitive(getKey(state), geometry);
    if (kalmyr::detail::hasPartColors(state))
        kalmyr::detail::applyPartColors(state, geometry);
}
