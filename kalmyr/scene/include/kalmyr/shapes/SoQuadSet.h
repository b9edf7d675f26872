#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Quadrilaterals from positions in order, every four of them one. PER_FACE and PER_PART bindings
/// count quadrilaterals.
class KALMYR_API SoQuadSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoQuadSet)

public:
    SoQuadSet();
    static void initClass();

    SoSFInt32 numQuads; ///< -1: as many as the positions that remain make

protected:
    ~SoQuadSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
