#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Points. Every binding but OVERALL counts points.
class KALMYR_API SoPointSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoPointSet)

public:
    SoPointSet();
    static void initClass();

    SoSFInt32 numPoints; ///< -1: all that remain

protected:
    ~SoPointSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
