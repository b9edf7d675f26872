#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoBackground.h>

/// Fills the view behind the scene with a smooth change between two colours.
class KALMYR_API SoGradientBackground : public SoBackground {
    SO_NODE_HEADER(SoGradientBackground)

public:
    SoGradientBackground();
    static void initClass();

    SoSFColor color0;    ///< at the top
    SoSFColor color1;    ///< at the bottom
    SoSFBool swapColors; ///< exchanges top and bottom

    /// The colours as they are shown.
    const SbColor& getTopColor() const;
    const SbColor& getBottomColor() const;

protected:
    ~SoGradientBackground() override;
};
