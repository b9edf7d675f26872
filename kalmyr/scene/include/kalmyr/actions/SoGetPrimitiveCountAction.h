#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <cstdint>

/// Counts triangles, line segments and points; a shape that occurs several times counts each time.
class KALMYR_API SoGetPrimitiveCountAction : public SoAction {
    SO_ACTION_HEADER(SoGetPrimitiveCountAction)

public:
    SoGetPrimitiveCountAction();
    explicit SoGetPrimitiveCountAction(const SbViewportRegion& region);

    std::uint64_t getTriangleCount() const { return m_triangles; }
    std::uint64_t getLineCount() const { return m_lines; }
    std::uint64_t getPointCount() const { return m_points; }
    bool containsNonTriangleShapes() const { return m_lines || m_points; }

    /// For shapes.
    void addTriangles(std::uint64_t count) { m_triangles += count; }
    void addLines(std::uint64_t count) { m_lines += count; }
    void addPoints(std::uint64_t count) { m_points += count; }

protected:
    void beginTraversal(SoNode* root) override;

private:
    SbViewportRegion m_region;
    std::uint64_t m_triangles = 0;
    std::uint64_t m_lines = 0;
    std::uint64_t m_points = 0;
};
