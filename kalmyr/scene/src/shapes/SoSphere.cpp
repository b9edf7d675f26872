#include <kalmyr/shapes/SoSphere.h>

#include "Primitives.h"

#include <cmath>

SO_NODE_SOURCE(SoSphere)

SoSphere::SoSphere()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(radius, (1.0f));
}

SoSphere::~SoSphere() = default;

void SoSphere::initClass()
{
    SO_NODE_INIT_CLASS(SoSphere, SoShape, "Sphere");
}

kalmyr::detail::SharedKey SoSphere::getKey(SoState* state) const
{
    using kalmyr::detail::sizeBits;
    kalmyr::detail::SharedKey key;
    key.kind = kalmyr::detail::SharedKey::SPHERE;
    key.sizes = {sizeBits(radius.getValue())};
    key.segments = kalmyr::detail::segmentsOf(state);
    return key;
}

void SoSphere::computeBBox(SoState*, SbBox3f& box, SbVec3f& center)
{
    const float r = std::abs(radius.getValue());
    box.setBounds({-r, -r, -r}, {r, r, r});
    center = box.getCenter();
}

std::uint64_t SoSphere::stateKey(SoState* state) const
{
    return kalmyr::detail::primitiveStateKey(state, kalmyr::detail::segmentsOf(state), false);
}

SoRef<SoGeometry> SoSphere::findShared(SoState* state)
{
    return kalmyr::detail::sharedGeometry(getKey(state), kalmyr::detail::buildPrimitive);
}

void SoSphere::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildPrimitive(getKey(state), geometry);
}
