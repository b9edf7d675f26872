#include <kalmyr/vrml/SoVRMLPixelTexture.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLPixelTexture)

SoVRMLPixelTexture::SoVRMLPixelTexture()
{
    SO_NODE_CONSTRUCTOR(SoVRMLTexture);
    SO_VRML_EXPOSED_EMPTY(image);
}

SoVRMLPixelTexture::~SoVRMLPixelTexture() = default;

void SoVRMLPixelTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPixelTexture, SoVRMLTexture, "VRMLPixelTexture");
}
