#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Points from indexed positions; a -1 in coordIndex is passed over, and by default it is empty.
/// Every binding but OVERALL counts points.
class KALMYR_API SoIndexedPointSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedPointSet)

public:
    SoIndexedPointSet();
    static void initClass();

protected:
    ~SoIndexedPointSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
