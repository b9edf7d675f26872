#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Polygons from positions in order. PER_FACE and PER_PART bindings count polygons.
class KALMYR_API SoFaceSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoFaceSet)

public:
    SoFaceSet();
    static void initClass();

    SoMFInt32 numVertices; ///< of each polygon; -1 as the last: all that remain

protected:
    ~SoFaceSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
