#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Texture coordinates of three components for the vertex shapes that follow.
class KALMYR_API SoTextureCoordinate3 : public SoNode {
    SO_NODE_HEADER(SoTextureCoordinate3)

public:
    SoTextureCoordinate3();
    static void initClass();

    SoMFVec3f point;

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinate3() override;
};
