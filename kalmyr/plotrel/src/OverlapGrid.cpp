#include "OverlapGrid.h"

namespace kalmyr::detail {

namespace {

constexpr int kMaxCells = 4096; ///< along one side of the finest level
constexpr double kLeastExtent = 1e-9;

} // namespace

std::size_t OverlapGrid::cellOf(const Level& level, const Bounds& b) const
{
    return static_cast<std::size_t>(cell(b.minY - m_minY, level.size, level.rows)) * level.columns
           + cell(b.minX - m_minX, level.size, level.columns);
}

OverlapGrid::OverlapGrid(const std::vector<Bounds>& bounds) : m_bounds(bounds)
{
    if (bounds.empty())
        return;
    Bounds all = bounds.front();
    for (const Bounds& b : bounds) {
        all = {std::min(all.minX, b.minX), std::min(all.minY, b.minY), std::max(all.maxX, b.maxX),
               std::max(all.maxY, b.maxY)};
    }
    m_minX = all.minX;
    m_minY = all.minY;
    const double extent = std::max({all.maxX - all.minX, all.maxY - all.minY, kLeastExtent});
    const double cells =
        std::clamp(std::sqrt(static_cast<double>(bounds.size())), 1.0, double(kMaxCells));
    for (double size = extent / cells;; size *= 2) {
        Level& level = m_levels.emplace_back();
        level.size = size;
        level.columns = static_cast<int>((all.maxX - all.minX) / size) + 1;
        level.rows = static_cast<int>((all.maxY - all.minY) / size) + 1;
        level.begin.assign(static_cast<std::size_t>(level.columns) * level.rows + 1, 0);
        if (size >= extent)
            break;
    }
    m_levelOf.resize(bounds.size());
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        const Bounds& b = bounds[i];
        const double size = std::max(b.maxX - b.minX, b.maxY - b.minY);
        std::size_t level = 0;
        while (level + 1 < m_levels.size() && m_levels[level].size < size)
            ++level;
        m_levelOf[i] = static_cast<std::uint8_t>(level);
        ++m_levels[level].begin[cellOf(m_levels[level], b) + 1];
    }
    for (Level& level : m_levels) {
        for (std::size_t c = 1; c < level.begin.size(); ++c)
            level.begin[c] += level.begin[c - 1];
        level.members.resize(level.begin.back());
    }
    std::vector<std::vector<std::uint32_t>> next;
    for (const Level& level : m_levels)
        next.push_back(level.begin);
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        Level& level = m_levels[m_levelOf[i]];
        level.members[next[m_levelOf[i]][cellOf(level, bounds[i])]++] = {
            bounds[i], static_cast<std::uint32_t>(i)};
    }
}

} // namespace kalmyr::detail
