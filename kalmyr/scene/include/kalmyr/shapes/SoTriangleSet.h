#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Triangles from positions in order, every three of them one. PER_FACE and PER_PART bindings count
/// triangles.
class KALMYR_API SoTriangleSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoTriangleSet)

public:
    SoTriangleSet();
    static void initClass();

    SoSFInt32 numTriangles; ///< -1: as many as the positions that remain make

protected:
    ~SoTriangleSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
