#pragma once

#include "FacetCollector.h"
#include "VectorDrawing.h"

#include <functional>

namespace kalmyr::detail {

struct BuildOptions {
    float tolerance = 4.0f / 255; ///< corners that differ by less than half of it have one colour
    bool isLineDrawing = false;   ///< opaque polygons only hide
    bool isCutting = false;       ///< write only what is seen of opaque polygons
};

/// Puts the facets of a scene onto the page: removes what is hidden and orders what is seen.
class DrawingBuilder {
public:
    DrawingBuilder(VectorDrawing& drawing, const DepthTolerance& tolerance,
                   const BuildOptions& options)
        : m_drawing(drawing), m_tolerance(tolerance), m_options(options)
    {
    }

    /// Called with a share from 0 to 1; false ends the work.
    void setProgress(std::function<bool(float)> progress) { m_progress = std::move(progress); }
    /// Appends a layer; its facets are used up. False when the work was ended.
    bool add(FacetLayer& layer);

private:
    bool addPainted(FacetLayer& layer);
    bool addCut(const FacetLayer& layer);
    bool addSorted(FacetList& list);
    bool addClear(FacetList& list, const FacetList& surfaces);
    bool hide(const FacetList& facets, const FacetList& occluders, FacetList& seen,
              FacetList* hidden);
    void emitAll(const FacetList& list);
    bool sort(FacetList& list, bool isRemovingHidden, std::vector<std::uint32_t>& sorted);
    std::vector<std::uint32_t> groupsOf(const FacetList& list,
                                        const std::vector<std::uint32_t>& sorted,
                                        const FacetList& surfaces);
    void emit(const Facet& facet, std::span<const Corner> corners);
    void emitPolygon(const Facet& facet, std::span<const Corner> corners);
    void emitSegment(const Facet& facet, const Corner& a, const Corner& b);

    VectorDrawing& m_drawing;
    DepthTolerance m_tolerance;
    BuildOptions m_options;
    std::function<bool(float)> m_progress;
    std::uint32_t m_group = 0; ///< of what is emitted
    std::uint32_t m_numGroups = 0;
    std::vector<bool> m_mixedGroups; ///< whether their polygons differ in colour
};

} // namespace kalmyr::detail
