#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/elements/SoState.h>

/// The texture image on what follows; an empty image means none.
struct SoTextureValues {
    enum Wrap { REPEAT = 0x2901, CLAMP = 0x2900 };
    /// SURFACE changes what is lit: luminance modulates the diffuse colour, colours replace it, and
    /// alpha replaces the opacity. The others change the lit colour.
    enum Model { SURFACE = 1, MODULATE = 0x2100, DECAL = 0x2101, BLEND = 0x0be2, REPLACE = 0x1e01 };
    SbImage image; ///< shares its pixels with the node's
    Wrap wrapS = REPEAT;
    Wrap wrapT = REPEAT;
    Model model = MODULATE;
    SbColor blendColor{0, 0, 0};

    /// Whether the image has colours, which SURFACE takes instead of others.
    bool hasColors() const { return image.getComponents() >= 3; }
    /// Whether the image has alpha, which SURFACE takes instead of other opacity.
    bool hasAlpha() const { return image.getComponents() % 2 == 0 && !image.isNull(); }
};
class KALMYR_API SoTextureElement final : public SoValueElement<SoTextureElement, SoTextureValues> {
public:
    static int getStackIndex();
};
