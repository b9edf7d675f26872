#pragma once

#include <kalmyr/vrml/SoVRMLTexture.h>

/// A picture that stands in the scene itself.
class KALMYR_API SoVRMLPixelTexture : public SoVRMLTexture {
    SO_NODE_HEADER(SoVRMLPixelTexture)

public:
    SoVRMLPixelTexture();
    static void initClass();

    SoSFImage image;

    const SbImage& getPicture() override { return image.getValue(); }

protected:
    ~SoVRMLPixelTexture() override;
};
