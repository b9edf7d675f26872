#pragma once

#include <QImage>
#include <QRect>

class SbImage;

/// Channels of an image that are shown.
enum class ImageChannels { All, First, Second, Third, Fourth };

/// Converts pixels of images for the screen. Rows of the results go from top to bottom, those of
/// SbImage from bottom to top.
namespace image_pixels {

/// Slices of a volume; 1 of a flat picture, 0 of a null image.
int sliceCount(const SbImage& image);
/// Component that holds the opacity; -1 for none.
int alphaOf(int components);

/// A part of a slice, in pixels from the top left, made `factor` times smaller by averaging (1: as
/// it is). One channel alone is grey. Costs 64 pixels of the part at most for each of
/// the result.
QImage toQImage(const SbImage& image, int slice, ImageChannels channels, QRect part,
                int factor = 1);
/// A picture that shows what a QImage does, with as few components as that takes.
SbImage fromQImage(const QImage& picture);

} // namespace image_pixels
