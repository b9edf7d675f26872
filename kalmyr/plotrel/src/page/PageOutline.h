#pragma once

#include "PageContent.h"

#include <kalmyr/base/Export.h>

#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// The outline of polygons that are painted as one, in steps of a micrometre. Sides that two
/// neighbours share are left out: the shape is the same, and smaller to write. Polygons may
/// overlap; the outline is to be filled by the rule of non-zero winding.
class PLOTREL_API PageOutline {
public:
    using Place = PagePlace;

    /// Nothing without an area is added.
    void addPolygon(const VectorVertex* corners, std::size_t count);
    /// Closed paths, each a list of places; the outline is empty afterwards. Linear time.
    std::vector<std::vector<Place>> take();

private:
    struct Side {
        Place from;
        Place to;
    };
    std::vector<Side> m_sides;
    int m_polygons = 0;
};

} // namespace kalmyr::detail
