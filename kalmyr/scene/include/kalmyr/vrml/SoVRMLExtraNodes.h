#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

#include <span>

/// \file
/// Nodes that later versions of the language added.

/// Colours with transparency.
class KALMYR_API SoVRMLColorRGBA : public SoNode {
    SO_NODE_HEADER(SoVRMLColorRGBA)

public:
    SoVRMLColorRGBA();
    static void initClass();

    SoMFColorRGBA color;

protected:
    ~SoVRMLColorRGBA() override;
};

/// Several textures, one over the other, up to eight. Each is mixed with what those before it gave,
/// the first with the lit colour, as its entries of `mode`, `source` and `function` say; missing
/// entries mean MODULATE, the colour so far, and no function. Two modes in one entry with a comma
/// between are those of colours and opacity.
class KALMYR_API SoVRMLMultiTexture : public SoNode {
    SO_NODE_HEADER(SoVRMLMultiTexture)

public:
    SoVRMLMultiTexture();
    static void initClass();

    SoSFFloat alpha;
    SoSFColor color;
    SoMFString function;
    SoMFString mode;
    SoMFString source;
    SoMFNode texture;

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLMultiTexture() override;
};

/// Texture coordinates, one node for each of several textures.
class KALMYR_API SoVRMLMultiTextureCoordinate : public SoNode {
    SO_NODE_HEADER(SoVRMLMultiTextureCoordinate)

public:
    SoVRMLMultiTextureCoordinate();
    static void initClass();

    SoMFNode texCoord;

    /// Those of a unit; none where there is no such node.
    std::span<const SbVec2f> getPoints(int unit) const;

protected:
    ~SoVRMLMultiTextureCoordinate() override;
};

/// Texture transforms, one node for each of several textures.
class KALMYR_API SoVRMLMultiTextureTransform : public SoNode {
    SO_NODE_HEADER(SoVRMLMultiTextureTransform)

public:
    SoVRMLMultiTextureTransform();
    static void initClass();

    SoMFNode textureTransform;

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLMultiTextureTransform() override;
};

/// Sky and ground colours and a panorama of textures behind the scene.
class KALMYR_API SoVRMLTextureBackground : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLTextureBackground)

public:
    SoVRMLTextureBackground();
    static void initClass();

    SoMFFloat groundAngle;
    SoMFColor groundColor;
    SoMFFloat skyAngle;
    SoMFColor skyColor;
    SoSFNode backTexture;
    SoSFNode bottomTexture;
    SoSFNode frontTexture;
    SoSFNode leftTexture;
    SoSFNode rightTexture;
    SoSFNode topTexture;

    /// The picture of a side as in SoVRMLBackground; a null image when there is none.
    const SbImage& getPicture(int side) const;

protected:
    ~SoVRMLTextureBackground() override;
};
