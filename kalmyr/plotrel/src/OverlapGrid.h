#pragma once

#include "Facets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Finds rectangles that overlap others. Rectangles lie in cells of about their own size, in a
/// pyramid of grids whose cells double from level to level, so that large and small ones do not
/// hinder each other.
class OverlapGrid {
public:
    explicit OverlapGrid(const std::vector<Bounds>& bounds);

    /// Calls `found(i, j)` once for every two rectangles that touch. Cost: linear in their number
    /// and that of the results for rectangles that overlap few others of their size.
    template <class Found>
    void forEachPair(Found found) const
    {
        for (std::uint32_t i = 0; i < m_bounds.size(); ++i)
            for (std::size_t level = m_levelOf[i]; level < m_levels.size(); ++level)
                visit(m_levels[level], m_bounds[i], [&](std::uint32_t j) {
                    if (level > m_levelOf[i] || j > i)
                        found(i, j);
                });
    }

    /// Calls `found(i)` for every rectangle that touches the given one.
    template <class Found>
    void forEach(const Bounds& bounds, Found found) const
    {
        for (const Level& level : m_levels)
            visit(level, bounds, found);
    }

private:
    struct Member {
        Bounds bounds;
        std::uint32_t index;
    };
    struct Level {
        double size = 1; ///< of a cell
        int columns = 1;
        int rows = 1;
        std::vector<std::uint32_t> begin; ///< of each cell's part of `members`
        std::vector<Member> members;
    };

    int cell(double distance, double size, int count) const
    {
        return static_cast<int>(std::clamp(std::floor(distance / size), 0.0, count - 1.0));
    }
    std::size_t cellOf(const Level& level, const Bounds& b) const;

    /// Members lie in the cell of their lower left corner and reach into the next one at most.
    template <class Found>
    void visit(const Level& level, const Bounds& b, Found found) const
    {
        if (level.members.empty())
            return;
        const int left = cell(b.minX - m_minX - level.size, level.size, level.columns);
        const int right = cell(b.maxX - m_minX, level.size, level.columns);
        const int top = cell(b.maxY - m_minY, level.size, level.rows);
        for (int y = cell(b.minY - m_minY - level.size, level.size, level.rows); y <= top; ++y) {
            const std::size_t row = static_cast<std::size_t>(y) * level.columns;
            const std::uint32_t end = level.begin[row + right + 1];
            for (std::uint32_t at = level.begin[row + left]; at < end; ++at)
                if (level.members[at].bounds.touches(b))
                    found(level.members[at].index);
        }
    }

    const std::vector<Bounds>& m_bounds; // Not owned; outlives the grid.
    std::vector<std::uint8_t> m_levelOf;
    std::vector<Level> m_levels;
    double m_minX = 0;
    double m_minY = 0;
};

} // namespace kalmyr::detail
