#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoNonIndexedShape.h>

/// Polylines from positions in order. PER_PART counts segments, PER_FACE lines.
class KALMYR_API SoLineSet : public SoNonIndexedShape {
    SO_NODE_HEADER(SoLineSet)

public:
    SoLineSet();
    static void initClass();

    SoMFInt32 numVertices; ///< of each line; -1 as the last: all that remain

protected:
    ~SoLineSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
