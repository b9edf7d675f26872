#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

/// \file
/// Nodes that later versions of the language added. They keep their values; nothing is drawn of
/// them.

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

/// Several textures, one over the other.
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

protected:
    ~SoVRMLMultiTextureTransform() override;
};

/// A panorama of textures behind the scene.
class KALMYR_API SoVRMLTextureBackground : public SoNode {
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

protected:
    ~SoVRMLTextureBackground() override;
};
