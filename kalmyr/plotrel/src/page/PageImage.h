#pragma once

#include <kalmyr/base/SbImage.h>

#include <string>

namespace kalmyr::detail {

/// The pixels of a picture as page descriptions want them: rows from the top down.
struct PageImage {
    std::string colors; ///< red, green and blue of each pixel
    std::string alpha;  ///< a byte for each pixel; empty when all of it is opaque

    /// `onWhite` mixes what is not opaque with white, and leaves no alpha.
    explicit PageImage(const SbImage& image, bool onWhite = false);
};

} // namespace kalmyr::detail
