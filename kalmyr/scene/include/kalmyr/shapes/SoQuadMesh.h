#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// A grid of quadrilaterals over positions given row by row. PER_PART counts rows, PER_FACE
/// quadrilaterals.
class KALMYR_API SoQuadMesh : public SoNonIndexedShape {
    SO_NODE_HEADER(SoQuadMesh)

public:
    SoQuadMesh();
    static void initClass();

    SoSFInt32 verticesPerColumn; ///< number of rows
    SoSFInt32 verticesPerRow;

protected:
    ~SoQuadMesh() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
