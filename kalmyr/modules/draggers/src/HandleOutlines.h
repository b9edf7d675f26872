#pragma once

#include <kalmyr/base/SbVec.h>

#include <vector>

namespace kalmyr::detail {

inline constexpr SbVec3f kX{1, 0, 0};
inline constexpr SbVec3f kY{0, 1, 0};
inline constexpr SbVec3f kZ{0, 0, 1};
/// Colours of the axes, and of what belongs to none.
inline constexpr SbVec3f kRed{0.95f, 0.25f, 0.25f};
inline constexpr SbVec3f kGreen{0.3f, 0.85f, 0.3f};
inline constexpr SbVec3f kBlue{0.35f, 0.55f, 1};
inline constexpr SbVec3f kSun{1, 0.95f, 0.6f};
inline constexpr SbVec3f kNeutral{0.85f, 0.85f, 0.85f};

using Polyline = std::vector<SbVec3f>;

/// A polygon as a closed line.
Polyline closed(Polyline polygon);
/// Square to an axis (0 to 2) at a height on it, from -half to half.
Polyline square(int axis, float height, float half);
/// In the plane square to an axis, between two distances on both other axes.
Polyline cornerSquare(int axis, float from, float to);
/// About an axis, closed.
Polyline circle(int axis, float radius = 1, float height = 0);
/// Of the cylinder about the y axis of radius 1; of a flat ring about the z axis.
std::vector<Polyline> band(float halfHeight);
std::vector<Polyline> annulus(float innerRadius);
/// Of the box from -1 to 1: its corners 0 to 7, its edges, and those along an axis.
SbVec3f boxCorner(int i);
std::vector<Polyline> boxEdges(int axis);
std::vector<Polyline> boxEdges();

} // namespace kalmyr::detail
