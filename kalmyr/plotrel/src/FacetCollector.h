#pragma once

#include "FacetRelation.h"
#include "Facets.h"
#include "Lighting.h"
#include "Projection.h"
#include "TextureBaker.h"
#include "VectorDrawing.h"

#include <kalmyr/rendering/SoSceneView.h>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
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

/// Turns what a camera sees into facets on the page: transforms, lights, culls, cuts to the view
/// and to the clipping planes, divides where colours bend, and projects. Nodes are looked at in the
/// constructor only.
class FacetCollector {
public:
    FacetCollector(const SoSceneView& view, const CollectOptions& options);

    /// Called with a share from 0 to 1; false ends the collecting.
    bool collect(const std::function<bool(float)>& progress);

    std::vector<FacetLayer>& getLayers() { return m_layers; }
    std::vector<VectorImage>& getImages() { return m_images; }
    /// The lines of text that are in view.
    std::vector<VectorText>& getTexts() { return m_texts; }
    const DepthTolerance& getTolerance() const { return m_depthTolerance; }
    /// Faces, lines and points that were left out for coordinates that are not finite.
    std::size_t getNumBroken() const { return m_numBroken; }

private:
    struct Vertex {
        SurfacePoint surface;
        ClipPoint clip;
    };
    struct LitCorner {
        SurfacePoint surface;
        ClipPoint clip;
        Corner page;
        SbColor color;
    };
    struct Context; ///< of one item
    void collectItem(const SoSceneView::Item& item);
    void collectFaces(Context& context);
    void collectTriangles(Context& context);
    void collectTexts(const Context& context);
    void collectOutline(Context& context);
    void collectSegments(Context& context, const std::vector<std::uint32_t>& indices);
    void collectPoints(Context& context);
    static Vertex cross(const Context& context, const Vertex& a, const Vertex& b, double distanceA,
                        double distanceB);
    template <class Distance>
    static void cutPolygon(const Context& context, std::vector<Vertex>& polygon, Distance distance);
    template <class Distance>
    static bool cutSegment(const Context& context, Vertex& a, Vertex& b, Distance distance);
    void addTriangle(Context& context, const std::array<Vertex, 3>& corners);
    void addSegment(Context& context, Vertex a, Vertex b);
    static bool isDashed(const Context& context);
    double pixelsAlong(const Context& context, const Vertex& a, const Vertex& b,
                       const Vertex& point) const;
    void addDashes(Context& context, const LitCorner& from, const LitCorner& to, double start);
    void addDash(Context& context, const LitCorner& a, const LitCorner& b);
    void addPoint(Context& context, const Vertex& vertex);
    void divide(Context& context, const LitCorner& a, const LitCorner& b, const LitCorner& c,
                int depth);
    void addFacet(Context& context, const LitCorner& a, const LitCorner& b, const LitCorner& c);
    LitCorner lit(const Context& context, const SurfacePoint& surface) const;
    LitCorner middle(const Context& context, const LitCorner& a, const LitCorner& b) const;
    bool hasSpot(const Context& context, const LitCorner& a, const LitCorner& b) const;
    bool isBent(const LitCorner& a, const LitCorner& b, const LitCorner& between) const;
    FacetLayer& layer(int index);
    void scaleNearness();

    const SoSceneView& m_view;
    CollectOptions m_options;
    std::vector<FacetLayer> m_layers;
    std::vector<VectorImage> m_images;
    std::unordered_map<const SoSceneView::Item*, std::vector<std::string>> m_strings; ///< of texts
    /// By the pixels, which the items hold.
    std::unordered_map<const unsigned char*, std::unique_ptr<TextureLevels>> m_textures;
    std::vector<VectorText> m_texts;
    DepthTolerance m_depthTolerance;
    std::size_t m_numBroken = 0;
    std::uint32_t m_order = 0;
    bool m_isParallel = false;
};

} // namespace kalmyr::detail
