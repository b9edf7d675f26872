#include "Bodies.h"

#include "shapes/Primitives.h"

namespace kalmyr::detail {

SharedKey bodyKey(SharedKey::Kind kind, const SbVec3f& sizes, int parts)
{
    constexpr int kSegments = 32;
    return {kind, parts, kSegments, {sizeBits(sizes[0]), sizeBits(sizes[1]), sizeBits(sizes[2])}};
}

SoRef<SoGeometry> sharedBody(const SharedKey& key, bool isClosed)
{
    return isClosed ? sharedGeometry(key, buildPrimitive) : nullptr;
}

void buildBody(const SharedKey& key, SoGeometry& geometry)
{
    buildPrimitive(key, geometry);
    geometry.solid = true;
    geometry.twoSided = false;
}

} // namespace kalmyr::detail
