#include <kalmyr/shapes/SoCylinder.h>

#include "Primitives.h"

#include <cmath>

namespace {

constexpr SoEnumEntry kParts[] = {
    {"SIDES", SoCylinder::SIDES},
    {"TOP", SoCylinder::TOP},
    {"BOTTOM", SoCylinder::BOTTOM},
    {"ALL", SoCylinder::ALL},
};

} // namespace

SO_NODE_SOURCE(SoCylinder)

SoCylinder::SoCylinder()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(parts, (ALL));
    parts.setEnums(kParts);
    SO_ADD_FIELD(radius, (1.0f));
    SO_ADD_FIELD(height, (2.0f));
}

SoCylinder::~SoCylinder() = default;

void SoCylinder::initClass()
{
    SO_NODE_INIT_CLASS(SoCylinder, SoShape, "Cylinder");
}

kalmyr::detail::SharedKey SoCylinder::getKey(SoState* state) const
{
    using kalmyr::detail::sizeBits;
    kalmyr::detail::SharedKey key;
    key.kind = kalmyr::detail::SharedKey::CYLINDER;
    key.sizes = {sizeBits(radius.getValue()), sizeBits(height.getValue())};
    key.parts = parts.getValue();
    key.segments = kalmyr::detail::segmentsOf(state);
    return key;
}

void SoCylinder::computeBBox(SoState*, SbBox3f& box, SbVec3f& center)
{
    const float r = std::abs(radius.getValue()), h = std::abs(height.getValue()) / 2;
    const int shown = parts.getValue();
    box.makeEmpty();
    if (shown & ALL)
        box.setBounds({-r, shown & (SIDES | BOTTOM) ? -h : h, -r},
                      {r, shown & (SIDES | TOP) ? h : -h, r});
    center = box.getCenter();
}

std::uint64_t SoCylinder::stateKey(SoState* state) const
{
    return kalmyr::detail::primitiveStateKey(state, kalmyr::detail::segmentsOf(state), true);
}

SoRef<SoGeometry> SoCylinder::findShared(SoState* state)
{
    if (kalmyr::detail::hasPartColors(state))
        return nullptr;
    return kalmyr::detail::sharedGeometry(getKey(state), kalmyr::detail::buildPrimitive);
}

void SoCylinder::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildPrimitive(getKey(state), geometry);
    if (kalmyr::detail::hasPartColors(state))
        kalmyr::detail::applyPartColors(state, geometry);
}
