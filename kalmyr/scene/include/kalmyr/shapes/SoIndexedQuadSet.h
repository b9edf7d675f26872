#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Quadrilaterals from indexed positions: every four of coordIndex are one, with or without a -1
/// behind it. PER_FACE and PER_PART bindings count quadrilaterals.
class KALMYR_API SoIndexedQuadSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedQuadSet)

public:
    SoIndexedQuadSet();
    static void initClass();

protected:
    ~SoIndexedQuadSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
