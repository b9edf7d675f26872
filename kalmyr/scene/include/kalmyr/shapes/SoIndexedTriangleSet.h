#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Triangles from indexed positions: every three of coordIndex are one, with or without a -1
/// behind it. PER_FACE and PER_PART bindings count triangles.
class KALMYR_API SoIndexedTriangleSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedTriangleSet)

public:
    SoIndexedTriangleSet();
    static void initClass();

protected:
    ~SoIndexedTriangleSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
