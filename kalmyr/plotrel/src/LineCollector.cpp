#include "LineCollector.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr int kPatternPixels = 16;

} // namespace

void LineCollector::collectOutline()
{
    const SceneOutline outline = getOutline(m_context.geometry);
    m_context.fixedColor = m_context.run.options.ink;
    collectSegments(outline.sharp);
    for (std::size_t i = 0; i + 3 < outline.smooth.size(); i += 4) {
        const std::uint32_t* at = &outline.smooth[i];
        const FacetVertex a = m_context.vertex(at[1]), b = m_context.vertex(at[2]);
        const bool one = orientation(a.clip, b.clip, m_context.vertex(at[0]).clip) > 0;
        const bool other = orientation(b.clip, a.clip, m_context.vertex(at[3]).clip) > 0;
        if (one != other)
            addSegment(a, b);
    }
    m_context.fixedColor.reset();
}

void LineCollector::collectSegments(const std::vector<std::uint32_t>& indices)
{
    m_context.facet.width =
        std::max(m_context.facet.width, static_cast<float>(m_context.run.options.minLineWidth));
    const bool dashed = isDashed();
    const std::vector<SbVec3f>& positions = m_context.geometry.positions;
    double at = 0;
    for (std::size_t i = 0; i + 1 < indices.size(); i += 2) {
        const FacetVertex a = m_context.vertex(indices[i]), b = m_context.vertex(indices[i + 1]);
        if (dashed) {
            const bool goesOn = i > 0 && positions[indices[i]] == positions[indices[i - 1]];
            m_dashStart = goesOn ? at : 0;
            at = std::fmod(m_dashStart + pixelsAlong(a, b, b), kPatternPixels);
        }
        addSegment(a, b);
    }
}

bool LineCollector::isDashed() const
{
    return (m_context.look.drawStyle.linePattern & 0xffffu) != 0xffff && !m_context.fixedColor;
}

/// How many pixels of the segment from a to b, cut at the near plane, lie before a point of it.
double LineCollector::pixelsAlong(const FacetVertex& a, const FacetVertex& b,
                                  const FacetVertex& point) const
{
    FacetVertex from = a, to = b, before = a, at = point;
    if (!m_context.cutNear(from, to))
        return 0;
    m_context.cutNear(before, at);
    const Corner begin = m_context.projection.toPage(from.clip);
    const Corner end = m_context.projection.toPage(at.clip);
    return std::hypot(end.x - begin.x, end.y - begin.y) / m_context.run.options.pixelSize;
}

void LineCollector::collectPoints()
{
    const SoGeometry& geometry = m_context.geometry;
    const SoDrawStyleValues& style = m_context.look.drawStyle;
    m_context.facet.width = static_cast<float>(
        std::max(std::max(1.0f, style.pointSize) * m_context.run.options.pixelSize,
                 m_context.run.options.minLineWidth));
    if (style.style == SoDrawStyleValues::POINTS) {
        for (std::uint32_t i = 0; i < geometry.positions.size(); ++i)
            addPoint(m_context.vertex(i));
    } else {
        for (const std::uint32_t i : geometry.points)
            addPoint(m_context.vertex(i));
    }
}

void LineCollector::addSegment(FacetVertex a, FacetVertex b)
{
    const FacetVertex whole[] = {a, b};
    if (!m_context.isSound(whole) || !m_context.cut(a, b))
        return;
    m_context.front = true;
    const LitCorner from = m_context.lit(a.surface), to = m_context.lit(b.surface);
    if (!isDashed())
        return addDash(from, to);
    const double hidden = pixelsAlong(whole[0], whole[1], a);
    addDashes(from, to, std::fmod(m_dashStart + hidden, kPatternPixels));
}

/// Bits of the pattern are pixels along the line, as the renderer counts them: `start` lie before
/// the segment.
void LineCollector::addDashes(const LitCorner& from, const LitCorner& to, double start)
{
    const unsigned pattern = m_context.look.drawStyle.linePattern & 0xffffu;
    const double pixels = std::hypot(to.page.x - from.page.x, to.page.y - from.page.y)
                          / m_context.run.options.pixelSize;
    const auto at = [&](double share) {
        // The share is one of the page; its place in space depends on the distances.
        const double wa = from.clip.w, wb = to.clip.w;
        const double t = share * wa / (share * wa + (1 - share) * wb);
        return m_context.lit(
            SurfacePoint::between(from.surface, to.surface, static_cast<float>(t)));
    };
    constexpr double kMaxDashes = 20'000;
    if (pixels / kPatternPixels > kMaxDashes)
        return addDash(from, to);
    for (double begin = -start; begin < pixels; begin += kPatternPixels) {
        for (int bit = 0; bit < kPatternPixels;) {
            if (!(pattern >> bit & 1)) {
                ++bit;
                continue;
            }
            const int length = std::countr_one(pattern >> bit);
            const double end = std::min(pixels, begin + bit + length);
            const double first = std::max(0.0, begin + bit);
            if (first < end)
                addDash(at(first / pixels), at(end / pixels));
            bit += length;
        }
    }
}

void LineCollector::addDash(const LitCorner& a, const LitCorner& b)
{
    const bool isSeenThrough = m_context.translucent && !m_context.fixedColor;
    m_context.add(m_context.layer.above,
                  isSeenThrough ? (a.surface.color[3] + b.surface.color[3]) / 2 : 1,
                  std::array{a.page, b.page});
}

void LineCollector::addPoint(const FacetVertex& vertex)
{
    if (!m_context.isSound({&vertex, 1}) || !m_context.isWithin(vertex))
        return;
    m_context.front = true;
    m_context.add(m_context.layer.above, m_context.translucent ? vertex.surface.color[3] : 1,
                  std::array{m_context.lit(vertex.surface).page});
}

} // namespace kalmyr::detail
