#pragma once

#include "SimplePolygon.h"

#include <kalmyr/base/SbVec.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kalmyr::detail {

/// Cuts any polygon into triangles: concave ones, and those that touch or cross themselves.
class FaceTessellator {
public:
    /// A point where edges cross; the corner that weighs most.
    struct NewPoint {
        SbVec3f position;
        std::uint32_t like;
    };

    FaceTessellator();
    ~FaceTessellator();
    FaceTessellator(const FaceTessellator&) = delete;
    FaceTessellator& operator=(const FaceTessellator&) = delete;

    /// Corners of triangles as indices into `polygon`, new points behind its last corner. Triangles
    /// turn the way the polygon turns about `normal`. False, and no triangle, when it cannot,
    /// or when a polygon of hundreds of corners crosses itself nearly everywhere.
    bool tessellate(std::span<const SbVec3f> polygon, const SbVec3f& normal);
    const std::vector<std::uint32_t>& getTriangles() const { return m_triangles; }
    const std::vector<NewPoint>& getNewPoints() const { return m_newPoints; }

private:
    bool cutSimple(std::span<const SbVec3f> polygon, const SbVec3f& normal);
    bool prepare(std::span<const SbVec3f> polygon, const SbVec3f& normal);

    struct Glu;
    SimplePolygon m_simple;
    std::unique_ptr<Glu> m_glu; ///< for polygons that touch or cross themselves
    std::vector<std::uint32_t> m_triangles;
    std::vector<NewPoint> m_newPoints;
};

} // namespace kalmyr::detail
