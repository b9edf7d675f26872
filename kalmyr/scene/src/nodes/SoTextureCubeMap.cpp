#include <kalmyr/nodes/SoTextureCubeMap.h>

#include <kalmyr/actions/SoAction.h>

SO_NODE_SOURCE(SoTextureCubeMap)

SoTextureCubeMap::SoTextureCubeMap()
{
    SO_NODE_CONSTRUCTOR(SoStackTexture);
}

SoTextureCubeMap::~SoTextureCubeMap() = default;

void SoTextureCubeMap::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCubeMap, SoStackTexture, "TextureCubeMap");
}

void SoTextureCubeMap::doAction(SoAction* action)
{
    set(action, SoTextureStage::CUBE, CLAMP, CLAMP, CLAMP);
}

bool SoTextureCubeMap::isUsable(const SbImage& image, SbString& reason) const
{
    if (image.getDepth() == 6 && image.getWidth() == image.getHeight())
        return true;
    reason = "a cube has six square pictures";
    return false;
}
