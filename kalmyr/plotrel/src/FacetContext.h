#pragma once

#include "Facets.h"
#include "Lighting.h"
#include "Projection.h"
#include "TextureBaker.h"

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kalmyr::detail {

/// How the scene is to be drawn.
struct CollectOptions {
    DrawingArea area;
    double pixelSize = 0.2;       ///< millimetres for one pixel of a line's width
    double minLineWidth = 0.1;    ///< millimetres
    float tolerance = 4.0f / 255; ///< of colours within a triangle
    double resolution = 6;        ///< of textures, pixels a millimetre
    bool isLineDrawing = false;
    SbColor ink; ///< of the edges in a line drawing
};

/// The facets of one layer: hidden surfaces are removed within it, the next one covers it.
struct FacetLayer {
    FacetList opaque; ///< polygons that hide what is behind them
    FacetList above;  ///< transparent polygons, segments and points
};

struct FacetVertex {
    SurfacePoint surface;
    ClipPoint clip;
};

/// A vertex as it is lit, on the page.
struct LitCorner {
    SurfacePoint surface;
    ClipPoint clip;
    Corner page;
    SbColor color;
};

/// The values that all items of a drawing share while they are collected.
struct CollectRun {
    const CollectOptions& options;
    std::uint32_t order = 0;   ///< of the next facet
    std::size_t numBroken = 0; ///< faces, lines and points with coordinates that are not finite
};

/// The values that all primitives of one item share.
struct FacetContext {
    FacetContext(const SoSceneView& view, const SoSceneView::Item& item, FacetLayer& layer,
                 CollectRun& run);
    FacetContext(const FacetContext&) = delete;
    FacetContext& operator=(const FacetContext&) = delete;

    /// The vertex of the geometry, moved by its offset in pixels.
    FacetVertex vertex(std::uint32_t index) const;
    FacetVertex vertex(const SurfacePoint& surface) const;
    LitCorner lit(const SurfacePoint& surface) const;
    /// The part of a polygon within the view and the clipping planes.
    void cut(std::vector<FacetVertex>& polygon) const;
    /// The part of a segment there; false when nothing is left.
    bool cut(FacetVertex& a, FacetVertex& b) const;
    /// The part of a segment in front of the near plane; false when nothing is left.
    bool cutNear(FacetVertex& a, FacetVertex& b) const;
    bool isWithin(const FacetVertex& vertex) const;
    /// Whether the coordinates are finite; those that are not are counted.
    bool isSound(std::span<const FacetVertex> vertices);
    TextureBaker::BakeLight bakeLight(const LitCorner& corner) const;
    /// Adds a facet with the common look.
    void add(FacetList& list, float opacity, std::span<const Corner> corners);

    const SoSceneView::Item& item;
    const SoGeometry& geometry;
    const SoRenderAppearance& look;
    Lighting lighting;
    Projection projection;
    const std::vector<SbVec4f>& planes;
    FacetLayer& layer;
    CollectRun& run;
    SbMatrix normals;
    TextureBaker* baker = nullptr; ///< null while no texture is painted
    Facet facet;                   ///< the common look
    bool front = true;             ///< the side of the present triangle that is seen
    std::optional<SbColor> fixedColor;
    bool translucent = false; ///< goes above what is opaque

private:
    bool paintsSurface() const;
    SbVec2f mirrored(const SurfacePoint& surface) const;
    FacetVertex cross(const FacetVertex& a, const FacetVertex& b, double distanceA,
                      double distanceB) const;
    template <class Distance>
    void cutPolygon(std::vector<FacetVertex>& polygon, Distance distance) const;
    template <class Distance>
    bool cutSegment(FacetVertex& a, FacetVertex& b, Distance distance) const;
};

/// Positive when the corners run counter-clockwise on the page, wherever they lie.
double orientation(const ClipPoint& a, const ClipPoint& b, const ClipPoint& c);
/// Which of the six planes of the view a point is beyond, as bits.
unsigned outsideOf(const ClipPoint& p);
/// Whether a look shows a sphere map.
bool mirrors(const SoRenderAppearance& look);

} // namespace kalmyr::detail
