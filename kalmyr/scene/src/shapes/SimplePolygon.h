#pragma once

#include <kalmyr/base/SbVec.h>

#include <cstdint>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace kalmyr::detail {

/// Cuts simple polygons into triangles, in n log n steps whatever their form.
///
/// A line sweeps over the corners and cuts the polygon into pieces that are monotone along its way,
/// which are cut one by one; see de Berg, van Kreveld, Overmars, Schwarzkopf, "Computational
/// Geometry", chapter 3. The same sweep finds edges that touch or cross (Shamos and Hoey,
/// "Geometric intersection problems"). Which side of a line a corner lies on is decided exactly.
class SimplePolygon {
public:
    /// Triangles as indices of corners, counter-clockwise, two fewer than corners. False, and no
    /// triangle, when edges touch or cross, corners coincide, or a number is not finite.
    bool tessellate(std::span<const SbVec2f> polygon);
    const std::vector<std::uint32_t>& getTriangles() const { return m_triangles; }

private:
    using Index = std::uint32_t;
    /// An edge that the line meets. Its successor along the boundary takes its place.
    struct Met {
        mutable Index edge;
    };
    struct Below {
        SimplePolygon* owner;
        bool operator()(const Met& a, const Met& b) const { return owner->isBelow(a.edge, b.edge); }
    };
    using Status = std::set<Met, Below>;
    using Place = Status::iterator;
    struct Neighbour {
        Index corner;
        Index diagonal; ///< twice its number, plus one at its second end
    };

    bool prepare(std::span<const SbVec2f> polygon);
    bool sweep();
    bool begin(Index corner);
    bool end(Index corner);
    bool pass(Index corner, Index done, Index next);
    void replaceHelper(Index edge, Index corner, bool always);
    bool cutPieces();
    void sortNeighbours();
    bool cutMonotone(const std::vector<Index>& loop);
    bool hasWholeArea() const;

    Index before(Index i) const { return i == 0 ? m_count - 1 : i - 1; }
    Index after(Index i) const { return i + 1 == m_count ? 0 : i + 1; }
    Index leftOf(Index edge) const { return isFloor(edge) ? edge : after(edge); }
    Index rightOf(Index edge) const { return isFloor(edge) ? after(edge) : edge; }
    /// Whether the inside is above the edge.
    bool isFloor(Index edge) const { return m_rank[edge] < m_rank[after(edge)]; }
    int side(Index a, Index b, Index c) const;
    bool isBelow(Index a, Index b);
    bool meet(Index a, Index b) const;
    bool meetsNeighbours(Place place) const;

    Index m_count = 0;
    bool m_reversed = false;
    bool m_touches = false;
    std::vector<SbVec2f> m_corners; ///< counter-clockwise
    std::vector<Index> m_order;     ///< corners as the line meets them
    std::vector<Index> m_rank;
    Status m_status{Below{this}};
    std::vector<Place> m_places;  ///< of edges
    std::vector<Index> m_helpers; ///< of floors: the corner met last between them and what is above
    std::vector<bool> m_merges;   ///< corners where two parts of the inside come together
    std::vector<std::pair<Index, Index>> m_diagonals;
    std::vector<Neighbour> m_neighbours; ///< of all corners, one after another
    std::vector<Index> m_firstNeighbour;
    std::vector<Index> m_diagonalPlaces;
    std::vector<std::uint32_t> m_triangles;
};

} // namespace kalmyr::detail
