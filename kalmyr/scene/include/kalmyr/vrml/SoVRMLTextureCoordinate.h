#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Texture coordinates for the geometry that holds the node.
class KALMYR_API SoVRMLTextureCoordinate : public SoNode {
    SO_NODE_HEADER(SoVRMLTextureCoordinate)

public:
    SoVRMLTextureCoordinate();
    static void initClass();

    SoMFVec2f point;

protected:
    ~SoVRMLTextureCoordinate() override;
};
