#pragma once

#include "PageContent.h"

#include <kalmyr/base/Export.h>

#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Primitives that are painted by one object: a path, a mesh, or a picture seen through windows.
struct PageRun {
    enum Kind : std::uint8_t { FLAT, SHADED, LINES, POINTS, WINDOWS };
    Kind kind = FLAT;
    std::uint8_t opacity = 255;
    PageColor color; ///< of FLAT, LINES and POINTS
    float width = 0; ///< of LINES and POINTS
    std::int32_t image = -1;
    std::uint32_t first = 0; ///< in VectorDrawing::primitives; the others follow by PageRuns::next
    std::uint32_t last = 0;
    std::uint32_t count = 0;
    float extent = 0; ///< sum of the sizes of FLAT polygons

    /// Whether one object can paint both.
    bool isLike(const PageRun& o) const;
};

/// The primitives of a drawing, gathered into runs in the order of painting. Texts and what is
/// wholly transparent are left out.
///
/// A primitive joins a run that is painted earlier than the latest one only where nothing between
/// covers it, judged by the cells of a grid of 64 by 64 over the drawing: what overlaps keeps its
/// order. Polygons of a run that lets light through do not overlap each other, for one object
/// paints every place once; there the small flat ones are SHADED at once. Many small flat polygons
/// of changing colours become a mesh, which has no seams and is quicker to show than their
/// outlines. Linear time: a bounded number of runs is looked at for each primitive.
struct PLOTREL_API PageRuns {
    std::vector<PageRun> runs;
    std::vector<std::uint32_t> next; ///< of each primitive, the next one of its run

    /// Without `meshes` only what is shaded is SHADED.
    explicit PageRuns(const VectorDrawing& drawing, bool meshes = true);

    template <class F>
    void forEach(const PageRun& run, F&& call) const
    {
        std::uint32_t at = run.first;
        for (std::uint32_t i = 0; i < run.count; ++i, at = next[at])
            call(at);
    }
    std::vector<std::uint32_t> listOf(const PageRun& run) const
    {
        std::vector<std::uint32_t> list;
        list.reserve(run.count);
        forEach(run, [&list](std::uint32_t at) { list.push_back(at); });
        return list;
    }
};

} // namespace kalmyr::detail
