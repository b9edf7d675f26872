#pragma once

#include <kalmyr/base/SbImage.h>

#include <array>

namespace kalmyr::detail {

/// Pictures behind the scene: six around the eye, or one on the screen.
struct BackgroundPictures {
    /// Sides of a box around the eye, each as it is seen from the middle, upright; the lower edge
    /// of the top and the upper edge of the bottom lie in front.
    enum Side { FRONT, BACK, LEFT, RIGHT, TOP, BOTTOM, NUM_SIDES };
    std::array<SbImage, NUM_SIDES> sides;

    /// How a picture lies on the screen, as in SoImageBackground.
    enum Style { STRETCH, FIT, FILL, CENTER, TILE };
    SbImage screen;
    Style style = STRETCH;
};

} // namespace kalmyr::detail
