#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoTextureCoordinateFunction.h>

/// Lets shapes mirror their surroundings: the texture shows them as a mirrored ball does, and turns
/// with the eye.
class KALMYR_API SoTextureCoordinateEnvironment : public SoTextureCoordinateFunction {
    SO_NODE_HEADER(SoTextureCoordinateEnvironment)

public:
    SoTextureCoordinateEnvironment();
    static void initClass();

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinateEnvironment() override;
};
