#include "TexCoordPlanes.h"

#include "VertexKeys.h"

#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/shapes/SoGeometry.h>

namespace kalmyr::detail {

namespace {

/// Equal shapes share their geometries, so that what is to be changed is copied.
SoRef<SoGeometry> copyOf(const SoGeometry& from)
{
    SoRef<SoGeometry> copy(new SoGeometry);
    copy->positions = from.positions;
    copy->normals = from.normals;
    copy->texCoords = from.texCoords;
    copy->colors = from.colors;
    copy->triangles = from.triangles;
    copy->lines = from.lines;
    copy->points = from.points;
    copy->triangleFaces = from.triangleFaces;
    copy->lineNumbers = from.lineNumbers;
    copy->pointNumbers = from.pointNumbers;
    copy->solid = from.solid;
    copy->twoSided = from.twoSided;
    if (from.extras)
        copy->extras = std::make_unique<SoGeometry::Extras>(*from.extras);
    return copy;
}

void addSet(const SoTextureCoordinateSet& set, SoGeometry& geometry)
{
    std::vector<SbVec4f> values;
    values.reserve(geometry.positions.size());
    for (const SbVec3f& p : geometry.positions)
        values.emplace_back(p.dot(set.planes[0]), p.dot(set.planes[1]), p.dot(set.planes[2]), 1.0f);
    if (set.unit == 0) {
        geometry.texCoords.clear();
        for (const SbVec4f& value : values)
            geometry.texCoords.emplace_back(value[0], value[1]);
    }
    if (!geometry.extras)
        geometry.extras = std::make_unique<SoGeometry::Extras>();
    auto& sets = geometry.extras->texCoordSets;
    std::erase_if(sets, [&set](const auto& one) { return one.unit == set.unit; });
    sets.push_back({set.unit, std::move(values)});
}

} // namespace

std::uint64_t extrasKey(SoState* state)
{
    const std::uint64_t sets = state->getValueId(SoTextureCoordinateSetsElement::getStackIndex());
    const std::uint64_t inputs = state->getValueId(SoVertexAttributeElement::getStackIndex());
    if (!sets && !inputs)
        return 0;
    // Whether there is a texture decides whether the sets are taken at all.
    return addToKey(addToKey(sets, inputs), SoLookExtrasElement::isTextured(state) ? 1 : 0);
}

SoRef<SoGeometry> withPlanes(const SoRef<SoGeometry>& geometry, SoState* state)
{
    // Shapes with a size in pixels bring their own picture.
    if (!geometry || geometry->isSizedInPixels())
        return geometry;
    const auto& sets = state->get<SoTextureCoordinateSetsElement>().value();
    SoRef<SoGeometry> result = geometry;
    for (const SoTextureCoordinateSet& set : sets) {
        if (!set.isPlane || !SoLookExtrasElement::isTextured(state))
            continue;
        if (result.get() == geometry.get())
            result = copyOf(*geometry);
        addSet(set, *result);
    }
    return result;
}

} // namespace kalmyr::detail
