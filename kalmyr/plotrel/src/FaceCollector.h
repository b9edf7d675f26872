#pragma once

#include "FacetContext.h"

#include <array>

namespace kalmyr::detail {

/// Turns the triangles of an item into facets: culls, cuts, and divides where colours bend.
class FaceCollector {
public:
    explicit FaceCollector(FacetContext& context) : m_context(context) {}

    void collect();

private:
    void addTriangle(const std::array<FacetVertex, 3>& corners);
    void divide(const LitCorner& a, const LitCorner& b, const LitCorner& c, int depth);
    bool divideAtHeart(const LitCorner& a, const LitCorner& b, const LitCorner& c, int depth);
    void addFacet(const LitCorner& a, const LitCorner& b, const LitCorner& c);
    LitCorner middle(const LitCorner& a, const LitCorner& b) const;
    bool hasSpot(const LitCorner& a, const LitCorner& b) const;
    bool isBent(const LitCorner& a, const LitCorner& b, const LitCorner& between) const;

    FacetContext& m_context;
    bool m_isEven = false; ///< one colour and one normal in the present triangle
};

} // namespace kalmyr::detail
