#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Strips of triangles from indexed positions. PER_PART counts strips, PER_FACE triangles.
class KALMYR_API SoIndexedTriangleStripSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedTriangleStripSet)

public:
    SoIndexedTriangleStripSet();
    static void initClass();

protected:
    ~SoIndexedTriangleStripSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
