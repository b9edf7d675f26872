#pragma once

#include "FacetRelation.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace kalmyr::detail {

class VisibleParts;

/// Puts facets into an order in which what is nearer comes later wherever they overlap on the page,
/// so that painting them one after another shows what is seen.
///
/// Facets that overlap are compared, and the order is a topological one of the graph that follows.
/// Where the graph has rings (facets that intersect, or overlap each other in a circle), a facet of
/// the ring is chosen, the others are split by its plane, and the two sides are sorted by
/// themselves: the step of a binary space partition (H. Fuchs, Z. Kedem, B. Naylor, "On visible
/// surface generation by a priori tree structures", 1980), taken only where it is needed. Rings are
/// found by the algorithm of R. Tarjan ("Depth-first search and linear graph algorithms", 1972).
///
/// Cost: n log n plus the number of overlaps.
class FacetSorter {
public:
    /// `facets` gets the pieces of split facets in addition.
    FacetSorter(FacetList& facets, const DepthTolerance& tolerance)
        : m_list(facets), m_tolerance(tolerance)
    {
    }

    /// Leaves out polygons that opaque ones hide wholly. Off at first.
    void setRemovingHidden(bool on) { m_removingHidden = on; }
    /// Called with a share from 0 to 1; false ends the sorting, whose result is then of no use.
    void setProgress(std::function<bool(float)> progress) { m_progress = std::move(progress); }

    /// Appends the indices of the facets, or of their pieces, to `sorted`.
    void sort(const std::vector<std::uint32_t>& facets, std::vector<std::uint32_t>& sorted);

    bool wasStopped() const { return m_stopped; }

private:
    struct Graph;
    bool compareAll(const std::vector<FacetShape>& shapes, Graph& graph, bool isTop);
    std::vector<bool> findHidden(const std::vector<std::uint32_t>& facets,
                                 const std::vector<FacetShape>& shapes, Graph& graph);
    void sortLevel(const std::vector<std::uint32_t>& facets, std::vector<std::uint32_t>& sorted,
                   int depth);
    void sortRing(const std::vector<std::uint32_t>& ring, std::vector<std::uint32_t>& sorted,
                  int depth);
    std::vector<std::uint32_t> rootsOf(const std::vector<std::uint32_t>& facets,
                                       const Graph& graph) const;
    void sortByMean(std::vector<std::uint32_t> facets, std::vector<std::uint32_t>& sorted) const;
    std::size_t chooseSplitter(const std::vector<std::uint32_t>& ring,
                               const std::vector<FacetShape>& shapes) const;
    bool isHidden(const FacetShape& shape, std::span<const std::uint32_t> fronts,
                  const std::vector<FacetShape>& shapes, VisibleParts& parts) const;
    bool isStopped(float share);

    FacetList& m_list;
    DepthTolerance m_tolerance;
    std::function<bool(float)> m_progress;
    std::size_t m_maxPieces = 0;
    bool m_removingHidden = false;
    bool m_stopped = false;
};

} // namespace kalmyr::detail
