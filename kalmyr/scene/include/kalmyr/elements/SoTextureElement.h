#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/elements/SoState.h>

/// The texture image on what follows; an empty image means none.
struct SoTextureValues {
    enum Wrap { REPEAT = 0x2901, CLAMP = 0x2900 };
    enum Model { MODULATE = 0x2100, DECAL = 0x2101, BLEND = 0x0be2, REPLACE = 0x1e01 };
    SbImage image; ///< shares its pixels with the node's
    Wrap wrapS = REPEAT;
    Wrap wrapT = REPEAT;
    Model model = MODULATE;
    SbColor blendColor{0, 0, 0};
};
class KALMYR_API SoTextureElement final : public SoValueElement<SoTextureElement, SoTextureValues> {
public:
    static int getStackIndex();
};
