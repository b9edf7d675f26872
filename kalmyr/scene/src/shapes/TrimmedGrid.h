#pragma once

#include <kalmyr/base/SbVec.h>

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// Cuts the unit square into triangles, along the lines of a grid and within outlines.
///
/// An outline runs counter-clockwise around what is kept and clockwise around holes. The grid is
/// halved again and again while outlines pass through a part of it (W. Sutherland and G. Hodgman,
/// "Reentrant polygon clipping"); single cells that they pass through are cut by the tessellator.
/// An outline that crosses a line of the grid has a corner on both sides of it, so nothing opens
/// there.
class TrimmedGrid {
public:
    /// Lines from 0 to 1, rising.
    TrimmedGrid(std::vector<double> u, std::vector<double> v);

    /// False, and nothing is kept, when the outlines cross each other nearly everywhere.
    bool cut(std::span<const std::vector<SbVec2d>> outlines);

    const std::vector<SbVec2d>& getVertices() const { return m_vertices; }
    const std::vector<std::uint32_t>& getTriangles() const { return m_triangles; }
    /// The cell of each triangle: its column and the number of columns times its row.
    const std::vector<std::uint32_t>& getCells() const { return m_cells; }

    static constexpr std::size_t kMaxCorners = 200'000;

private:
    struct Corner {
        SbVec2d at;
        bool isBorder; ///< the edge from here runs along the border of the part
    };
    using Loop = std::vector<Corner>;
    struct Part {
        std::size_t u0, u1, v0, v1; ///< lines around it
    };
    struct CutCell {
        std::size_t column, row;
        std::vector<Loop> loops;
    };
    struct Tessellator;

    void divide(const Part& part, std::vector<Loop>&& loops);
    static Loop clip(const Loop& loop, int axis, double at, bool keepsBelow);
    std::vector<Loop> clipAll(const std::vector<Loop>& loops, int axis, double at, bool keepsBelow);
    bool isKept(const Part& part, const std::vector<Loop>& loops) const;
    void noteEdgePoints();
    void noteEdgePoint(int axis, std::size_t line, double along);
    void insertEdgePoints(const CutCell& cell, Loop& loop) const;
    std::vector<double> between(int axis, std::size_t line, std::size_t cell, double from,
                                double to) const;
    void addWhole(std::size_t column, std::size_t row);
    Loop borderOf(std::size_t column, std::size_t row) const;
    std::uint32_t vertex(const SbVec2d& at);
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::size_t cell);

    struct Hash {
        std::size_t operator()(const SbVec2d& p) const;
    };

    std::vector<double> m_lines[2];
    bool m_keepsOutside = false; ///< the outermost outline is a hole
    std::vector<char> m_whole;   ///< by cell
    std::vector<CutCell> m_cut;
    /// By axis, line and cell along it: corners on the edge of the grid.
    std::unordered_map<std::uint64_t, std::vector<double>> m_edgePoints;
    std::unordered_map<SbVec2d, std::uint32_t, Hash> m_numbers;
    std::vector<SbVec2d> m_vertices;
    std::vector<std::uint32_t> m_triangles, m_cells;
};

} // namespace kalmyr::detail
