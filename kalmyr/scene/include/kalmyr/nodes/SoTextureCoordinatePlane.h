#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTextureCoordinateFunction.h>

/// Computes texture coordinates from positions in object space: each is the product with a
/// direction, so that it repeats after the direction's length put under 1.
class KALMYR_API SoTextureCoordinatePlane : public SoTextureCoordinateFunction {
    SO_NODE_HEADER(SoTextureCoordinatePlane)

public:
    SoTextureCoordinatePlane();
    static void initClass();

    SoSFVec3f directionS;
    SoSFVec3f directionT;
    SoSFVec3f directionR; ///< for volumes

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinatePlane() override;
};
