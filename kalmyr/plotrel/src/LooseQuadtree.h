#pragma once

#include "ConvexPolygons.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Finds boxes that overlap a box. Each stands in the one cell that has its middle and is just not
/// smaller than it; a cell's boxes reach at most half its side beyond it.
class LooseQuadtree {
public:
    explicit LooseQuadtree(const PageBox& area)
        : m_x(area.minX),
          m_y(area.minY),
          m_side(std::max({area.maxX - area.minX, area.maxY - area.minY, 1e-3f}))
    {
        m_cells.emplace_back();
    }

    void insert(std::uint32_t id, const PageBox& box)
    {
        const float size = std::max(box.maxX - box.minX, box.maxY - box.minY);
        const float middleX = (box.minX + box.maxX) / 2;
        const float middleY = (box.minY + box.maxY) / 2;
        std::uint32_t cell = 0;
        Square square{m_x, m_y, m_side};
        const bool isWithin =
            middleX >= m_x && middleX <= m_x + m_side && middleY >= m_y && middleY <= m_y + m_side;
        for (int depth = 0; isWithin && depth < kMaxDepth && square.side / 2 >= size; ++depth) {
            const int quarter = (middleX >= square.x + square.side / 2 ? 1 : 0)
                                + (middleY >= square.y + square.side / 2 ? 2 : 0);
            square = square.quarter(quarter);
            std::uint32_t child = m_cells[cell].children[static_cast<std::size_t>(quarter)];
            if (child == 0) {
                child = static_cast<std::uint32_t>(m_cells.size());
                m_cells[cell].children[static_cast<std::size_t>(quarter)] = child;
                m_cells.emplace_back();
            }
            cell = child;
        }
        m_cells[cell].items.push_back({box, id});
    }

    /// Appends the ids in no particular order.
    void find(const PageBox& box, std::vector<std::uint32_t>& ids) const
    {
        findIn(0, {m_x, m_y, m_side}, box, ids);
    }

private:
    static constexpr int kMaxDepth = 16;

    struct Item {
        PageBox box;
        std::uint32_t id;
    };
    struct Cell {
        std::array<std::uint32_t, 4> children{}; ///< 0: none
        std::vector<Item> items;
    };
    struct Square {
        float x, y, side;
        Square quarter(int i) const
        {
            const float half = side / 2;
            return {x + (i & 1 ? half : 0), y + (i & 2 ? half : 0), half};
        }
    };

    void findIn(std::uint32_t index, const Square& square, const PageBox& box,
                std::vector<std::uint32_t>& ids) const
    {
        const Cell& cell = m_cells[index];
        for (const Item& item : cell.items)
            if (item.box.overlaps(box))
                ids.push_back(item.id);
        for (int i = 0; i < 4; ++i) {
            const std::uint32_t child = cell.children[static_cast<std::size_t>(i)];
            const Square part = square.quarter(i);
            const float reach = part.side * 0.501f;
            if (child != 0
                && box.overlaps({part.x - reach, part.y - reach, part.x + part.side + reach,
                                 part.y + part.side + reach}))
                findIn(child, part, box, ids);
        }
    }

    float m_x, m_y, m_side;
    std::vector<Cell> m_cells;
};

} // namespace kalmyr::detail
