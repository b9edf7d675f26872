#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Strips of triangles from positions in order. PER_PART counts strips, PER_FACE triangles.
class KALMYR_API SoTriangleStripSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoTriangleStripSet)

public:
    SoTriangleStripSet();
    static void initClass();

    SoMFInt32 numVertices; ///< of each strip; -1 as the last: all that remain

protected:
    ~SoTriangleStripSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
