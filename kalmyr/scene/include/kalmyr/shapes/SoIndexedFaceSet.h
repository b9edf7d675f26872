#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Polygons from indexed positions. PER_FACE and PER_PART bindings count polygons.
class KALMYR_API SoIndexedFaceSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedFaceSet)

public:
    SoIndexedFaceSet();
    static void initClass();

protected:
    ~SoIndexedFaceSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
