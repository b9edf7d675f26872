#include <kalmyr/nodes/SoGradientBackground.h>

SO_NODE_SOURCE(SoGradientBackground)

SoGradientBackground::SoGradientBackground()
{
    SO_NODE_CONSTRUCTOR(SoBackground);
    SO_ADD_FIELD(color0, (0.42f, 0.48f, 0.57f));
    SO_ADD_FIELD(color1, (0.09f, 0.1f, 0.13f));
    SO_ADD_FIELD(swapColors, (false));
}

SoGradientBackground::~SoGradientBackground() = default;

void SoGradientBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoGradientBackground, SoBackground, "GradientBackground");
}

const SbColor& SoGradientBackground::getTopColor() const
{
    return swapColors.getValue() ? color1.getValue() : color0.getValue();
}

const SbColor& SoGradientBackground::getBottomColor() const
{
    return swapColors.getValue() ? color0.getValue() : color1.getValue();
}
