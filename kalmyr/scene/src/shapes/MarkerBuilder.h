#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoType.h>
#include <kalmyr/shapes/FaceBuilder.h>

#include <cstdint>
#include <span>

class SoAction;
class SoGeometry;
class SoNode;

namespace kalmyr::detail {

/// More rectangles than this are not drawn; a warning says so.
constexpr std::size_t kMaxMarkerRectangles = 4'000'000;

/// Puts a marker at each of the input's positions: rectangles of whole pixels, whose face is the
/// place of the point in `input.coordIndex`. Of `markers` the last counts for all further points.
void buildMarkers(const VertexInput& input, std::span<const std::int32_t> markers,
                  SoGeometry& geometry);

/// The points alone, one a marker, as what has no size in pixels.
SoRef<SoGeometry> pointsOfMarkers(const SoGeometry& markers);

/// Where the number of a point's position or colour is found.
struct MarkerIndices {
    std::span<const std::int32_t> coord;
    std::span<const std::int32_t> material;
    int start = 0;        ///< position of the first point when nothing is indexed
    bool indexed = false; ///< by `coord`
};

/// Marker sets are measured by their pixels, and counted and handed out as points.
void addMarkerMethods(SoType type);
/// Meets their pixels.
void pickMarkers(SoAction* action, SoNode* node, const MarkerIndices& indices);

} // namespace kalmyr::detail
