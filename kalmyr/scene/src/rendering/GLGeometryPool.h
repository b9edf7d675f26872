#pragma once

#include "rendering/RangeAllocator.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <epoxy/gl.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

namespace kalmyr::detail {

class GLGeometryPage;

/// Where the data of one geometry stand in the buffers of one context. Indices count from the
/// geometry's own first vertex and stand one after another: triangles, lines, points.
struct GLGeometry {
    GLGeometryPage* page = nullptr; // Not owned; the pool is.
    GLuint vertexArray = 0;         ///< of the page, with the page's indices bound
    GLuint indices = 0;             ///< buffer of the page's indices
    GLint firstVertex = 0;
    std::uint32_t firstIndex = 0;
    GLuint edges = 0;         ///< a buffer of its own, made when first asked for
    GLuint outline = 0;       ///< pairs of sharp edges, then fours of smooth ones; the same
    std::vector<GLuint> more; ///< buffers of texture coordinate sets and inputs of programs
    GLsizei numTriangleIndices = 0;
    GLsizei numLineIndices = 0;
    GLsizei numPointIndices = 0;
    GLsizei numEdgeIndices = 0;
    GLsizei numSharpIndices = 0;
    GLsizei numSmoothIndices = 0;
    GLsizei numVertices = 0;

    std::uint32_t firstLineIndex() const
    {
        return firstIndex + static_cast<std::uint32_t>(numTriangleIndices);
    }
    std::uint32_t firstPointIndex() const
    {
        return firstLineIndex() + static_cast<std::uint32_t>(numLineIndices);
    }
    std::uint32_t numIndices() const
    {
        return static_cast<std::uint32_t>(numTriangleIndices + numLineIndices + numPointIndices);
    }
};

/// Vertices and indices of many geometries in few buffers, so that they are drawn without a change
/// of state between them.
///
/// A page is one vertex array with room for geometries that have the same attributes; pages double
/// in size up to a limit. A geometry that is large against a page, or has further texture
/// coordinates or inputs of programs, has one of its own. A page whose last geometry goes is freed
/// with it. Every vertex array reads attribute kSlotAttribute, once an instance, from the buffer of
/// slot numbers that the pool is given.
class GLGeometryPool {
public:
    /// `slotNumbers`: a buffer of ints 0, 1, 2, ...; may grow under the same name.
    explicit GLGeometryPool(GLuint slotNumbers);
    ~GLGeometryPool();
    GLGeometryPool(const GLGeometryPool&) = delete;
    GLGeometryPool& operator=(const GLGeometryPool&) = delete;

    GLGeometry add(const SoGeometry& geometry);
    /// Frees the ranges and the geometry's own buffers.
    void remove(const GLGeometry& geometry);
    /// The context is gone: nothing is freed there.
    void abandon() { m_abandoned = true; }

    std::size_t getNumPages() const { return m_pages.size(); }
    /// Of all pages, used or not.
    std::size_t getNumBytes() const;

    static constexpr GLuint kSlotAttribute = 4;

private:
    static constexpr int kNumFormats = 16;
    static constexpr std::uint32_t kFirstPage = 4096; ///< vertices
    static constexpr std::uint32_t kLargestPage = 1u << 18;
    static constexpr std::uint32_t kIndicesPerVertex = 4;
    /// A geometry that takes more of the largest page than this share has a page of its own.
    static constexpr std::uint32_t kLargeShare = 8;

    GLGeometryPage* pageFor(unsigned format, std::uint32_t vertices, std::uint32_t indices);
    GLGeometryPage* addPage(unsigned format, std::uint32_t vertices, std::uint32_t indices);

    std::list<std::unique_ptr<GLGeometryPage>> m_pages;
    GLGeometryPage* m_open[kNumFormats] = {};   // Not owned; filled next, or null.
    std::uint32_t m_nextSize[kNumFormats] = {}; ///< of the latest shared page; 0: begin anew
    GLuint m_slotNumbers;
    bool m_abandoned = false;
};

} // namespace kalmyr::detail
