#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoTextureCoordinateFunction.h>

/// Lets shapes mirror their surroundings: the coordinates are the directions in the world that the
/// surface shows to the eye, as a cube map takes them.
class KALMYR_API SoTextureCoordinateCube : public SoTextureCoordinateFunction {
    SO_NODE_HEADER(SoTextureCoordinateCube)

public:
    SoTextureCoordinateCube();
    static void initClass();

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinateCube() override;
};
