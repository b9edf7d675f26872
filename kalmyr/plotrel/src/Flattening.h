#pragma once

#include "VectorDrawing.h"

#include <kalmyr/base/Export.h>
#include <kalmyr/plotrel/SoVectorOutput.h>

#include <span>
#include <vector>

/// \file
/// Makes a drawing fit for formats that can do less. Where a format needs several passes, they run
/// in the order in which they stand here.

namespace kalmyr::detail {

/// Replaces polygons with an image by ones with colours: the gradient that comes nearest to the
/// pixels under the polygon, so their average where they have no trend. Transparent pixels count
/// less and make the polygon transparent. Cost: the pixels under the polygons, at most 300,000
/// each.
PLOTREL_API void averageImages(VectorDrawing& drawing);

/// Replaces what is transparent by opaque things in mixed colours: each transparent polygon by its
/// intersections with what is seen through it, the background or the paper included. Lines and
/// points behind a polygon count as polygons; a transparent line or point takes, segment by
/// segment, the colour that it has in front of what lies below its middle. Images below or in
/// transparent polygons are averaged. Cost: n log n in the things that overlap transparent ones
/// plus what is written.
PLOTREL_API void mixTransparency(VectorDrawing& drawing, const SbColor& paper = SbColor(1, 1, 1));

/// Replaces shaded triangles by flat polygons, each of which holds colours that differ by at most
/// `tolerance`, from 1/255 to 1. Edges are divided at the same places from both sides, and none
/// that is shorter than 0.1 mm. All colours become multiples of 1/255. Cost: linear in what is
/// written.
PLOTREL_API void divideShading(VectorDrawing& drawing, float tolerance);

/// Grey by luminance (Rec. 709); black and white by its half, shaded triangles cut there. Images
/// and the background are converted, opacities are not: what is to be black and white must be
/// opaque.
PLOTREL_API void convertColors(VectorDrawing& drawing, SoVectorOutput::ColorMode mode);

/// Sets the colours of the corners of a polygon to those of the image below; returns its opacity.
float fitImage(const VectorImage& image, std::span<VectorVertex> corners);

} // namespace kalmyr::detail
