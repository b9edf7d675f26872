#pragma once

#include <string>

class SbImage;

namespace kalmyr::detail {

/// The first slice of an image as a PNG file. Empty when it cannot be packed.
std::string makePng(const SbImage& image);

} // namespace kalmyr::detail
