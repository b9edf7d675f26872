#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoTextureCoordinateFunction.h>

/// Leaves texture coordinates to the shapes, in place of given and computed ones.
class KALMYR_API SoTextureCoordinateDefault : public SoTextureCoordinateFunction {
    SO_NODE_HEADER(SoTextureCoordinateDefault)

public:
    SoTextureCoordinateDefault();
    static void initClass();

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinateDefault() override;
};
