#pragma once

#include <kalmyr/base/SbVec.h>

#include <cstdint>

/// One corner of a triangle or line segment, or a point, in object space.
struct SoPrimitiveVertex {
    SbVec3f point;
    SbVec3f normal{0, 0, 1};
    SbVec2f texCoord{0, 0};
    std::uint32_t color = 0xccccccff; ///< diffuse, 0xRRGGBBAA
};
