#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFBitMask.h>
#include <kalmyr/fields/SoValueFields.h>

/// Moves the depth of what follows, so that lines on a surface, or one surface on another, do not
/// fight for the same pixels. Positive values move away from the eye.
class KALMYR_API SoPolygonOffset : public SoNode {
    SO_NODE_HEADER(SoPolygonOffset)

public:
    enum Style { FILLED = 1, LINES = 2, POINTS = 4 };

    SoPolygonOffset();
    static void initClass();

    SoSFFloat factor;   ///< times the slope of the surface
    SoSFFloat units;    ///< times the smallest step of depth
    SoSFBitMask styles; ///< what is moved
    SoSFBool on;

    void doAction(SoAction* action) override;

protected:
    ~SoPolygonOffset() override;
};
