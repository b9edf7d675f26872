#include "PolygonSet.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Cells and neighbours that are looked at for one polygon.
constexpr std::size_t kMostCells = 1024;
constexpr std::size_t kMostNeighbours = 512;
/// Polygons that reach less far than this into each other abut; millimetres.
constexpr float kTouch = 0.004f;

struct Corners {
    const VectorVertex* at;
    std::uint32_t count;
};

/// Whether a side of `a` has all of `b` beyond it.
bool separates(const Corners& a, const Corners& b)
{
    for (std::uint32_t i = 0; i < a.count; ++i) {
        const VectorVertex &from = a.at[i], &to = a.at[(i + 1) % a.count];
        float x = to.y - from.y, y = from.x - to.x;
        const float length = std::hypot(x, y);
        if (length == 0)
            continue;
        x /= length;
        y /= length;
        const auto place = [&](const VectorVertex& v) {
            return (v.x - from.x) * x + (v.y - from.y) * y;
        };
        float least = 0, most = 0, nearest = place(b.at[0]), farthest = nearest;
        for (std::uint32_t k = 0; k < a.count; ++k) {
            least = std::min(least, place(a.at[k]));
            most = std::max(most, place(a.at[k]));
        }
        for (std::uint32_t k = 1; k < b.count; ++k) {
            nearest = std::min(nearest, place(b.at[k]));
            farthest = std::max(farthest, place(b.at[k]));
        }
        if (farthest <= least + kTouch || nearest >= most - kTouch)
            return true;
    }
    return false;
}

/// Calls for the keys of the cells that touch a box until one answers false.
template <class F>
bool forCells(float left, float right, float low, float high, float side, F&& call)
{
    const auto cell = [side](float place) {
        return static_cast<std::int64_t>(std::floor(place / side)) + (std::int64_t(1) << 24);
    };
    const std::int64_t lastX = cell(right), lastY = cell(high);
    for (std::int64_t y = cell(low); y <= lastY; ++y)
        for (std::int64_t x = cell(left); x <= lastX; ++x)
            if (!call(static_cast<std::uint64_t>(y << 32 | x)))
                return false;
    return true;
}

} // namespace

PolygonSet::PolygonSet(const VectorDrawing& drawing) : m_drawing(drawing)
{
    float cell = std::max({drawing.width, drawing.height, 1e-2f});
    for (Grid& grid : m_grids) {
        grid.cell = cell;
        cell /= 2;
    }
}

PolygonSet::Box PolygonSet::boxOf(std::uint32_t primitive) const
{
    const VectorPrimitive& one = m_drawing.primitives[primitive];
    const VectorVertex* v = &m_drawing.vertices[one.first];
    Box box{v->x, v->x, v->y, v->y};
    for (std::uint32_t i = 1; i < one.count; ++i) {
        box.left = std::min(box.left, v[i].x);
        box.right = std::max(box.right, v[i].x);
        box.low = std::min(box.low, v[i].y);
        box.high = std::max(box.high, v[i].y);
    }
    return box;
}

bool PolygonSet::overlaps(std::uint32_t a, std::uint32_t b) const
{
    const auto corners = [this](std::uint32_t primitive) {
        const VectorPrimitive& one = m_drawing.primitives[primitive];
        return Corners{&m_drawing.vertices[one.first], one.count};
    };
    const Corners first = corners(a), second = corners(b);
    return !separates(first, second) && !separates(second, first);
}

bool PolygonSet::isFree(const Entry& entry) const
{
    const Box& box = entry.box;
    std::size_t cells = 0, neighbours = 0;
    const auto isCellFree = [&](const std::vector<Entry>& others) {
        neighbours += others.size();
        return neighbours <= kMostNeighbours
               && std::none_of(others.begin(), others.end(), [&](const Entry& other) {
                      return box.touches(other.box) && overlaps(entry.primitive, other.primitive);
                  });
    };
    return std::all_of(m_grids.begin(), m_grids.end(), [&](const Grid& grid) {
        return grid.cells.empty()
               || forCells(box.left, box.right, box.low, box.high, grid.cell,
                           [&](std::uint64_t cell) {
                               const auto known = grid.cells.find(cell);
                               return ++cells <= kMostCells
                                      && (known == grid.cells.end() || isCellFree(known->second));
                           });
    });
}

bool PolygonSet::add(std::uint32_t primitive)
{
    const Entry entry{boxOf(primitive), primitive};
    if (!isFree(entry))
        return false;
    const float extent = entry.box.extent();
    std::size_t level = 0;
    while (level + 1 < m_grids.size() && m_grids[level + 1].cell >= extent)
        ++level;
    Grid& grid = m_grids[level];
    forCells(entry.box.left, entry.box.right, entry.box.low, entry.box.high, grid.cell,
             [&](std::uint64_t cell) {
                 grid.cells[cell].push_back(entry);
                 return true;
             });
    return true;
}

} // namespace kalmyr::detail
