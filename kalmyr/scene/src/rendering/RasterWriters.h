#pragma once

#include <kalmyr/base/SbImage.h>

#include <cstdio>

namespace kalmyr::detail {

/// Write pictures of 3 or 4 components, whose rows run from bottom to top, into open files, which
/// stay open. False, with an error posted, for a null image or when writing fails.
bool writePNG(std::FILE* file, const SbImage& image);
bool writeJPEG(std::FILE* file, const SbImage& image, float quality);
bool writeBMP(std::FILE* file, const SbImage& image);
bool writeTIFF(std::FILE* file, const SbImage& image, bool compressed);
bool writeRGB(std::FILE* file, const SbImage& image);
bool writePostScript(std::FILE* file, const SbImage& image);

} // namespace kalmyr::detail
