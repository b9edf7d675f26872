#pragma once

#include "../VectorDrawing.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// Convex polygons that do not overlap each other.
class PolygonSet {
public:
    explicit PolygonSet(const VectorDrawing& drawing);

    /// Takes the polygon unless it overlaps one that is there; ones that share a side or a corner
    /// only do not overlap. Refuses as well where too many are near to look at all of them: the
    /// time for each is bounded.
    bool add(std::uint32_t primitive);

private:
    struct Box {
        float left, right, low, high;
        float extent() const { return std::max(right - left, high - low); }
        bool touches(const Box& o) const
        {
            return left <= o.right && o.left <= right && low <= o.high && o.low <= high;
        }
    };
    struct Entry {
        Box box;
        std::uint32_t primitive;
    };
    /// Of grids whose cells are halved from one to the next: each polygon is in the finest one
    /// whose cells are larger than itself, in four cells at most.
    struct Grid {
        float cell = 0; ///< its side, millimetres
        std::unordered_map<std::uint64_t, std::vector<Entry>> cells;
    };
    Box boxOf(std::uint32_t primitive) const;
    bool isFree(const Entry& entry) const;
    bool overlaps(std::uint32_t a, std::uint32_t b) const;

    static constexpr int kGrids = 14;
    const VectorDrawing& m_drawing;
    std::array<Grid, kGrids> m_grids;
};

} // namespace kalmyr::detail
