#pragma once

#include <kalmyr/base/SbVec.h>

#include <algorithm>
#include <cstdlib>

/// Points that a hand moves in a click.
constexpr float kClickMotion = 3;

/// Whether a pointer that went from one position to the other did more than click.
inline bool isBeyondClick(const SbVec2s& from, const SbVec2s& to, float pixelRatio)
{
    return static_cast<float>(std::max(std::abs(to[0] - from[0]), std::abs(to[1] - from[1])))
           > kClickMotion * pixelRatio;
}
