#include <kalmyr/vrml/SoVRMLExtraNodes.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLColorRGBA)

SoVRMLColorRGBA::SoVRMLColorRGBA()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(color);
}

SoVRMLColorRGBA::~SoVRMLColorRGBA() = default;

void SoVRMLColorRGBA::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLColorRGBA, SoNode, "VRMLColorRGBA");
}

SO_NODE_SOURCE(SoVRMLMultiTexture)

SoVRMLMultiTexture::SoVRMLMultiTexture()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(alpha, (1.0f));
    SO_VRML_EXPOSED(color, (1.0f, 1.0f, 1.0f));
    SO_VRML_EXPOSED_EMPTY(function);
    SO_VRML_EXPOSED_EMPTY(mode);
    SO_VRML_EXPOSED_EMPTY(source);
    SO_VRML_EXPOSED_EMPTY(texture);
}

SoVRMLMultiTexture::~SoVRMLMultiTexture() = default;

void SoVRMLMultiTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTexture, SoNode, "VRMLMultiTexture");
}

SO_NODE_SOURCE(SoVRMLMultiTextureCoordinate)

SoVRMLMultiTextureCoordinate::SoVRMLMultiTextureCoordinate()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(texCoord);
}

SoVRMLMultiTextureCoordinate::~SoVRMLMultiTextureCoordinate() = default;

void SoVRMLMultiTextureCoordinate::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTextureCoordinate, SoNode, "VRMLMultiTextureCoordinate");
}

SO_NODE_SOURCE(SoVRMLMultiTextureTransform)

SoVRMLMultiTextureTransform::SoVRMLMultiTextureTransform()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(textureTransform);
}

SoVRMLMultiTextureTransform::~SoVRMLMultiTextureTransform() = default;

void SoVRMLMultiTextureTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTextureTransform, SoNode, "VRMLMultiTextureTransform");
}

SO_NODE_SOURCE(SoVRMLTextureBackground)

SoVRMLTextureBackground::SoVRMLTextureBackground()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(groundAngle);
    SO_VRML_EXPOSED_EMPTY(groundColor);
    SO_VRML_EXPOSED_EMPTY(skyAngle);
    SO_VRML_EXPOSED_EMPTY(skyColor);
    SO_VRML_EXPOSED_EMPTY(backTexture);
    SO_VRML_EXPOSED_EMPTY(bottomTexture);
    SO_VRML_EXPOSED_EMPTY(frontTexture);
    SO_VRML_EXPOSED_EMPTY(leftTexture);
    SO_VRML_EXPOSED_EMPTY(rightTexture);
    SO_VRML_EXPOSED_EMPTY(topTexture);
}

SoVRMLTextureBackground::~SoVRMLTextureBackground() = default;

void SoVRMLTextureBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTextureBackground, SoNode, "VRMLTextureBackground");
}
