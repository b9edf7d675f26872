#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoVertexShape.h>

/// Base of shapes that use positions in order. Normals, texture coordinates and colours begin with
/// their first value.
class KALMYR_API SoNonIndexedShape : public SoVertexShape {
    SO_NODE_HEADER(SoNonIndexedShape)

public:
    static void initClass();

    SoSFInt32 startIndex; ///< of the first position used

protected:
    SoNonIndexedShape();
    ~SoNonIndexedShape() override;

    /// Coordinate indices for runs of `counts` positions from startIndex, each ended by -1. A count
    /// of -1 as the last takes all that remain. Runs beyond the positions stay as they are, for the
    /// builder to complain.
    std::vector<std::int32_t> makeIndices(std::span<const std::int32_t> counts,
                                          int numPositions) const;
    /// The same as the indices of a source, if it wants them.
    void fillIndices(std::span<const std::int32_t> counts, kalmyr::ShapeSource& source) const;
};
