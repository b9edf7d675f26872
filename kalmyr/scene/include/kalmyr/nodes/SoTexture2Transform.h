#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Scales, turns and moves texture coordinates, about a centre.
class KALMYR_API SoTexture2Transform : public SoNode {
    SO_NODE_HEADER(SoTexture2Transform)

public:
    SoTexture2Transform();
    static void initClass();

    SoSFVec2f translation;
    SoSFFloat rotation; ///< radians
    SoSFVec2f scaleFactor;
    SoSFVec2f center;

    void doAction(SoAction* action) override;

protected:
    ~SoTexture2Transform() override;
};
