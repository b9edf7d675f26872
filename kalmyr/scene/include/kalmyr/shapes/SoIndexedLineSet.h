#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoIndexedShape.h>

/// Polylines from indexed positions. PER_PART counts segments, PER_FACE lines.
class KALMYR_API SoIndexedLineSet : public SoIndexedShape {
    SO_NODE_HEADER(SoIndexedLineSet)

public:
    SoIndexedLineSet();
    static void initClass();

protected:
    ~SoIndexedLineSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
