#include <kalmyr/shapes/SoNonIndexedShape.h>

#include <algorithm>

SO_NODE_SOURCE(SoNonIndexedShape)

SoNonIndexedShape::SoNonIndexedShape()
{
    SO_NODE_CONSTRUCTOR(SoVertexShape);
    SO_ADD_FIELD(startIndex, (0));
}

SoNonIndexedShape::~SoNonIndexedShape() = default;

void SoNonIndexedShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoNonIndexedShape, SoVertexShape, "NonIndexedShape");
}

std::vector<std::int32_t> SoNonIndexedShape::makeIndices(std::span<const std::int32_t> counts,
                                                         int numPositions) const
{
    std::vector<std::int32_t> indices;
    // However far before the positions it starts, the memory is bounded by them.
    std::int64_t at =
        std::max<std::int64_t>(startIndex.getValue(), -std::int64_t(numPositions) - 3);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const bool rest = counts[i] < 0 && i + 1 == counts.size();
        const std::int64_t remaining = std::max<std::int64_t>(numPositions - at, 0);
        const std::int64_t count = rest ? remaining : std::max(counts[i], 0);
        // One index beyond the positions is enough for the builder to complain.
        const std::int64_t listed = std::min(count, remaining + 1);
        for (std::int64_t k = 0; k < listed; ++k) {
            // A position -1 would read as the end of the run; it is out of range like -2.
            indices.push_back(static_cast<std::int32_t>(at + k == -1 ? -2 : at + k));
        }
        indices.push_back(-1);
        at += count;
    }
    return indices;
}

void SoNonIndexedShape::fillIndices(std::span<const std::int32_t> counts,
                                    kalmyr::ShapeSource& source) const
{
    if (!source.wantsLists())
        return;
    source.coordIndex = makeIndices(counts, static_cast<int>(source.input.positions.size()));
    source.input.coordIndex = source.coordIndex;
}
