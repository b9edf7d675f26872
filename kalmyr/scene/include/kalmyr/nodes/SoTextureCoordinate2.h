#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Texture coordinates for the vertex shapes that follow.
class KALMYR_API SoTextureCoordinate2 : public SoNode {
    SO_NODE_HEADER(SoTextureCoordinate2)

public:
    SoTextureCoordinate2();
    static void initClass();

    SoMFVec2f point;

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCoordinate2() override;
};
