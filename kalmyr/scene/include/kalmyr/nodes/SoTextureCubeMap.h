#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoStackTexture.h>

/// Puts what is seen around on the shapes that follow: the six sides of a cube, as square pictures
/// seen from its middle, in the order +x, -x, +y, -y, +z, -z of the world. The sides stand upright;
/// the lower edge of the top and the upper edge of the bottom lie at -z. SoTextureCoordinateCube
/// says which direction each point shows; other coordinates are taken as directions.
class KALMYR_API SoTextureCubeMap : public SoStackTexture {
    SO_NODE_HEADER(SoTextureCubeMap)

public:
    SoTextureCubeMap();
    static void initClass();

    void doAction(SoAction* action) override;

protected:
    ~SoTextureCubeMap() override;
    bool isUsable(const SbImage& image, SbString& reason) const override;
};
