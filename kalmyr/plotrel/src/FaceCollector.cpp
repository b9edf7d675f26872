#include "FaceCollector.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Edges shorter than this, in millimetres, are not divided, however much the light changes.
constexpr double kMinEdge = 0.4;
constexpr int kMaxDivisions = 9;
/// Triangles of less than this, in square millimetres, are not seen.
constexpr double kMinDoubleArea = 1e-9;

float difference(const SbColor& a, const SbColor& b)
{
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

} // namespace

void FaceCollector::collect()
{
    const auto& indices = m_context.geometry.triangles;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        addTriangle({m_context.vertex(indices[i]), m_context.vertex(indices[i + 1]),
                     m_context.vertex(indices[i + 2])});
}

void FaceCollector::addTriangle(const std::array<FacetVertex, 3>& corners)
{
    if (!m_context.isSound(corners))
        return;
    const unsigned out[] = {outsideOf(corners[0].clip), outsideOf(corners[1].clip),
                            outsideOf(corners[2].clip)};
    if (out[0] & out[1] & out[2])
        return;
    const double turn = orientation(corners[0].clip, corners[1].clip, corners[2].clip);
    m_context.front = (turn > 0) != m_context.item.mirrored;
    if (turn == 0 || (m_context.geometry.solid && !m_context.front))
        return;
    const SurfacePoint& first = corners[0].surface;
    m_isEven = m_context.lighting.isEven()
               && std::all_of(corners.begin() + 1, corners.end(), [&first](const FacetVertex& v) {
                      return v.surface.color == first.color && v.surface.normal == first.normal;
                  });
    std::vector<FacetVertex> polygon(corners.begin(), corners.end());
    if ((out[0] | out[1] | out[2]) != 0 || !m_context.planes.empty())
        m_context.cut(polygon);
    if (polygon.size() < 3)
        return;
    const LitCorner hub = m_context.lit(polygon[0].surface);
    LitCorner before = m_context.lit(polygon[1].surface);
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        const LitCorner corner = m_context.lit(polygon[i].surface);
        divide(hub, before, corner, 0);
        before = corner;
    }
}

LitCorner FaceCollector::middle(const LitCorner& a, const LitCorner& b) const
{
    return m_context.lit(SurfacePoint::between(a.surface, b.surface, 0.5f));
}

/// Whether the colour between two corners is not what lies between their colours on the page. Goes
/// by the edge alone, so that both triangles beside it are divided alike.
bool FaceCollector::isBent(const LitCorner& a, const LitCorner& b, const LitCorner& between) const
{
    const auto t =
        static_cast<float>(b.clip.w == a.clip.w ? 0.5 : b.clip.w / (a.clip.w + b.clip.w));
    SbColor even;
    for (int c = 0; c < 3; ++c)
        even[c] = b.color[c] + (a.color[c] - b.color[c]) * (1 - t);
    return difference(even, between.color) > m_context.run.options.tolerance;
}

/// Whether the edge of a spot light, or the end of a light's reach, crosses between two corners.
bool FaceCollector::hasSpot(const LitCorner& a, const LitCorner& b) const
{
    return m_context.lighting.hasSpots() && isBent(a, b, middle(a, b));
}

void FaceCollector::divide(const LitCorner& a, const LitCorner& b, const LitCorner& c, int depth)
{
    if (m_isEven || m_context.run.options.isLineDrawing || depth >= kMaxDivisions)
        return addFacet(a, b, c);
    const LitCorner* corner[] = {&a, &b, &c};
    LitCorner between[3];
    bool isDivided[3] = {};
    int divisions = 0;
    double longest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const LitCorner& p = *corner[i];
        const LitCorner& q = *corner[(i + 1) % 3];
        const double length = std::hypot(p.page.x - q.page.x, p.page.y - q.page.y);
        longest = std::max(longest, length);
        if (length < kMinEdge)
            continue;
        between[i] = middle(p, q);
        isDivided[i] = isBent(p, q, between[i]) || hasSpot(p, between[i]) || hasSpot(between[i], q);
        divisions += isDivided[i] ? 1 : 0;
    }
    if (divisions == 3) {
        divide(a, between[0], between[2], depth + 1);
        divide(between[0], b, between[1], depth + 1);
        divide(between[2], between[1], c, depth + 1);
        return divide(between[0], between[1], between[2], depth + 1);
    }
    // Turned so that the first edge is divided, and the third one is not.
    const std::size_t first = isDivided[0] && !isDivided[2]   ? 0
                              : isDivided[1] && !isDivided[0] ? 1
                                                              : 2;
    const LitCorner& p = *corner[first];
    const LitCorner& q = *corner[(first + 1) % 3];
    const LitCorner& r = *corner[(first + 2) % 3];
    if (divisions == 2) {
        const LitCorner& pq = between[first];
        const LitCorner& qr = between[(first + 1) % 3];
        divide(pq, q, qr, depth + 1);
        divide(p, pq, qr, depth + 1);
        return divide(p, qr, r, depth + 1);
    }
    if (divisions == 1) {
        divide(p, between[first], r, depth + 1);
        return divide(between[first], q, r, depth + 1);
    }
    if (longest > 4 * kMinEdge && divideAtHeart(a, b, c, depth))
        return;
    addFacet(a, b, c);
}

/// Divides about the middle where a spot of light is there that no edge sees.
bool FaceCollector::divideAtHeart(const LitCorner& a, const LitCorner& b, const LitCorner& c,
                                  int depth)
{
    const LitCorner heart = m_context.lit(SurfacePoint::between(
        SurfacePoint::between(a.surface, b.surface, 0.5f), c.surface, 1.0f / 3));
    SbColor even;
    for (int k = 0; k < 3; ++k)
        even[k] = (a.color[k] + b.color[k] + c.color[k]) / 3;
    if (difference(even, heart.color) <= 2 * m_context.run.options.tolerance)
        return false;
    divide(a, b, heart, depth + 1);
    divide(b, c, heart, depth + 1);
    divide(c, a, heart, depth + 1);
    return true;
}

void FaceCollector::addFacet(const LitCorner& a, const LitCorner& b, const LitCorner& c)
{
    std::array<Corner, 3> corners{a.page, b.page, c.page};
    const double area = doubleArea(corners);
    if (!(std::abs(area) > kMinDoubleArea))
        return;
    if (area < 0)
        std::swap(corners[1], corners[2]);
    if (planeOf(corners).isSteep)
        return;
    TextureBaker* baker = m_context.baker;
    if (baker) {
        TextureBaker::Triangle triangle;
        std::size_t i = 0;
        for (const LitCorner* from : {&a, &b, &c})
            triangle[i++] = {from->page.x,     from->page.y,           from->page.z,
                             1 / from->clip.w, from->surface.texCoord, m_context.bakeLight(*from)};
        baker->add(triangle);
    }
    const bool translucent = m_context.translucent;
    if (m_context.run.options.isLineDrawing && translucent)
        return;
    const float opacity = translucent && !baker
                              ? (a.surface.color[3] + b.surface.color[3] + c.surface.color[3]) / 3
                              : 1;
    m_context.add(translucent ? m_context.layer.above : m_context.layer.opaque, opacity, corners);
}

} // namespace kalmyr::detail
