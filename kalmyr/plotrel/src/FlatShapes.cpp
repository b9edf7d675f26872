#include "FlatShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr float kBandDifference = 4.0f / 255; // Between neighbouring bands of the background.
constexpr float kMaxUnits = 1e9f;

std::int64_t sideOf(const GridPoint& a, const GridPoint& b, const GridPoint& c)
{
    return (std::int64_t(b.x) - a.x) * (std::int64_t(c.y) - a.y)
           - (std::int64_t(b.y) - a.y) * (std::int64_t(c.x) - a.x);
}

std::int64_t doubleArea(std::span<const GridPoint> corners)
{
    std::int64_t area = 0;
    for (std::size_t i = 2; i < corners.size(); ++i)
        area += sideOf(corners[0], corners[i - 1], corners[i]);
    return area;
}

/// Whether some edge of `a` has all of `b` on its other side.
bool parts(std::span<const GridPoint> a, std::span<const GridPoint> b)
{
    for (std::size_t i = 0; i < a.size(); ++i) {
        const GridPoint& from = a[i];
        const GridPoint& to = a[(i + 1) % a.size()];
        if (std::all_of(b.begin(), b.end(),
                        [&](const GridPoint& place) { return sideOf(from, to, place) <= 0; }))
            return true;
    }
    return false;
}

/// Joins consecutive polygons of one colour into one outline where they share an edge, so that no
/// seam shows between them and shared corners are written once. A polygon that may overlap one of
/// those that are joined already begins a new outline.
class OutlineJoiner {
public:
    explicit OutlineJoiner(FlatPainter& painter) : m_painter(painter) {}
    ~OutlineJoiner() { flush(); }
    OutlineJoiner(const OutlineJoiner&) = delete;
    OutlineJoiner& operator=(const OutlineJoiner&) = delete;

    /// Counter-clockwise.
    void add(std::span<const GridPoint> polygon, PackedColor color)
    {
        if (color != m_color || !join(polygon)) {
            flush();
            m_color = color;
            m_outline.assign(polygon.begin(), polygon.end());
        }
        m_joined.insert(m_joined.end(), polygon.begin(), polygon.end());
        m_ends.push_back(m_joined.size());
    }

    void flush()
    {
        if (!m_outline.empty())
            m_painter.fill(m_outline, m_color);
        m_outline.clear();
        m_joined.clear();
        m_ends.clear();
    }

private:
    static constexpr std::size_t kMaxJoined = 24;
    static constexpr std::size_t kMaxCorners = 100;

    bool join(std::span<const GridPoint> polygon)
    {
        const std::size_t size = polygon.size();
        if (m_ends.empty() || m_ends.size() >= kMaxJoined || m_outline.size() + size > kMaxCorners)
            return false;
        for (std::size_t i = m_outline.size(); i-- > 0;) {
            const GridPoint& from = m_outline[i];
            const GridPoint& to = m_outline[(i + 1) % m_outline.size()];
            for (std::size_t k = 0; k < size; ++k)
                if (polygon[k] == to && polygon[(k + 1) % size] == from)
                    return isApart(polygon) && splice(polygon, i, k);
        }
        return false;
    }

    bool isApart(std::span<const GridPoint> polygon) const
    {
        std::size_t begin = 0;
        for (const std::size_t end : m_ends) {
            const auto other = std::span(m_joined).subspan(begin, end - begin);
            if (!parts(other, polygon) && !parts(polygon, other))
                return false;
            begin = end;
        }
        return true;
    }

    /// Goes round the polygon between corners `at` and `at` + 1 of the outline, which are corners
    /// `edge` + 1 and `edge` of the polygon.
    bool splice(std::span<const GridPoint> polygon, std::size_t at, std::size_t edge)
    {
        m_detour.clear();
        for (std::size_t i = 2; i < polygon.size(); ++i)
            m_detour.push_back(polygon[(edge + i) % polygon.size()]);
        m_outline.insert(m_outline.begin() + static_cast<std::ptrdiff_t>(at) + 1, m_detour.begin(),
                         m_detour.end());
        removeSpikes();
        return true;
    }

    /// Ways out and back along one edge, which appear where a polygon shares two edges in a row.
    void removeSpikes()
    {
        for (std::size_t i = 0; i < m_outline.size() && m_outline.size() > 3;) {
            const std::size_t size = m_outline.size();
            if (m_outline[(i + size - 1) % size] != m_outline[(i + 1) % size]) {
                ++i;
                continue;
            }
            const std::size_t next = (i + 1) % size;
            m_outline.erase(m_outline.begin() + static_cast<std::ptrdiff_t>(std::max(i, next)));
            m_outline.erase(m_outline.begin() + static_cast<std::ptrdiff_t>(std::min(i, next)));
            i = i > 2 ? i - 2 : 0;
        }
    }

    FlatPainter& m_painter;
    PackedColor m_color = 0;
    std::vector<GridPoint> m_outline;
    std::vector<GridPoint> m_joined; // Corners of the polygons in the outline,
    std::vector<std::size_t> m_ends; // and where each ends.
    std::vector<GridPoint> m_detour;
};

class DrawingPainter {
public:
    DrawingPainter(const VectorDrawing& drawing, double unitsPerMillimetre, FlatPainter& painter)
        : m_drawing(drawing), m_units(unitsPerMillimetre), m_painter(painter), m_joiner(painter)
    {
    }

    /// Each band reaches down to the lower edge: the next one covers it, and no seam shows.
    void paintBackground()
    {
        const auto& stops = m_drawing.background;
        if (stops.empty())
            return;
        paintBand(0, stops[0].color);
        for (std::size_t i = 1; i < stops.size(); ++i) {
            const VectorBackgroundStop& from = stops[i - 1];
            const VectorBackgroundStop& to = stops[i];
            const SbVec3f way = to.color - from.color;
            const float most = std::max({std::abs(way[0]), std::abs(way[1]), std::abs(way[2])});
            const int count = std::max(1, static_cast<int>(std::ceil(most / kBandDifference)));
            for (int band = 0; band < count && to.share > from.share; ++band) {
                const float begin = static_cast<float>(band) / static_cast<float>(count);
                const float middle = begin + 0.5f / static_cast<float>(count);
                paintBand(from.share + (to.share - from.share) * begin,
                          SbColor(from.color + way * middle));
            }
            paintBand(to.share, to.color);
        }
        m_joiner.flush();
    }

    void paint(const VectorPrimitive& one)
    {
        if (one.opacity <= 0)
            return;
        const std::span<const VectorVertex> places(m_drawing.vertices.data() + one.first,
                                                   one.kind == VectorPrimitive::TEXT ? 0
                                                                                     : one.count);
        if (places.empty())
            return;
        switch (one.kind) {
        case VectorPrimitive::POLYGON:
            paintPolygon(places, one.shaded);
            break;
        case VectorPrimitive::LINE:
            paintLine(places, one.width);
            break;
        case VectorPrimitive::POINT:
            paintPoint(places[0], one.width);
            break;
        case VectorPrimitive::TEXT:
            break;
        }
    }

private:
    void addGridPoint(double x, double y)
    {
        const GridPoint place{toUnits(x, m_units), toUnits(y, m_units)};
        if (m_places.empty() || m_places.back() != place)
            m_places.push_back(place);
    }

    void fillPlaces(PackedColor color)
    {
        while (m_places.size() > 1 && m_places.front() == m_places.back())
            m_places.pop_back();
        if (m_places.size() < 3)
            return;
        const std::int64_t area = doubleArea(m_places);
        if (area < 0)
            std::reverse(m_places.begin(), m_places.end());
        if (area != 0)
            m_joiner.add(m_places, color);
    }

    void paintBand(float share, const SbColor& color)
    {
        const double top = m_drawing.y + m_drawing.height * (1.0 - std::clamp(share, 0.0f, 1.0f));
        const double right = double(m_drawing.x) + m_drawing.width;
        m_places.clear();
        addGridPoint(m_drawing.x, m_drawing.y);
        addGridPoint(right, m_drawing.y);
        addGridPoint(right, top);
        addGridPoint(m_drawing.x, top);
        fillPlaces(packColor(color[0], color[1], color[2]));
    }

    void paintPolygon(std::span<const VectorVertex> corners, bool shaded)
    {
        VectorVertex color = corners[0];
        m_places.clear();
        for (const VectorVertex& corner : corners)
            addGridPoint(corner.x, corner.y);
        for (std::size_t i = 1; shaded && i < corners.size(); ++i) {
            const float share = 1 / static_cast<float>(i + 1);
            color.red += (corners[i].red - color.red) * share;
            color.green += (corners[i].green - color.green) * share;
            color.blue += (corners[i].blue - color.blue) * share;
        }
        fillPlaces(packColor(color.red, color.green, color.blue));
    }

    void paintLine(std::span<const VectorVertex> places, float width)
    {
        m_joiner.flush();
        m_places.clear();
        for (const VectorVertex& place : places)
            addGridPoint(place.x, place.y);
        if (m_places.size() > 1)
            m_painter.stroke(m_places, width,
                             packColor(places[0].red, places[0].green, places[0].blue));
    }

    /// A polygon that leaves a circle by a hundredth of a millimetre at most.
    void paintPoint(const VectorVertex& middle, float diameter)
    {
        const double radius = diameter / 2;
        const double bend = std::acos(std::max(0.0, 1 - 0.01 / std::max(radius, 0.01)));
        const int corners = std::clamp(static_cast<int>(std::ceil(std::numbers::pi / bend)), 4, 48);
        m_places.clear();
        for (int i = 0; i < corners; ++i) {
            const double angle = 2 * std::numbers::pi * (i + 0.5) / corners;
            addGridPoint(middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle));
        }
        fillPlaces(packColor(middle.red, middle.green, middle.blue));
    }

    const VectorDrawing& m_drawing;
    double m_units;
    FlatPainter& m_painter;
    OutlineJoiner m_joiner;
    std::vector<GridPoint> m_places;
};

} // namespace

PackedColor packColor(float red, float green, float blue)
{
    const auto packed = [](float value) {
        return static_cast<PackedColor>(std::clamp(value, 0.0f, 1.0f) * 255 + 0.5f);
    };
    return packed(red) << 16 | packed(green) << 8 | packed(blue);
}

std::int32_t toUnits(double millimetres, double unitsPerMillimetre)
{
    const double units = std::round(millimetres * unitsPerMillimetre);
    return static_cast<std::int32_t>(std::clamp<double>(units, -kMaxUnits, kMaxUnits));
}

std::string plainTitle(const VectorDrawing& drawing, std::size_t limit)
{
    std::string title;
    for (const char c : drawing.title) {
        const auto byte = static_cast<unsigned char>(c);
        if (title.size() < limit && (byte & 0xc0) != 0x80) // Not inside of a character.
            title += byte >= 0x20 && byte < 0x7f ? c : '?';
    }
    return title;
}

void paintFlat(const VectorDrawing& drawing, double unitsPerMillimetre, bool withBackground,
               FlatPainter& painter)
{
    DrawingPainter drawer(drawing, unitsPerMillimetre, painter);
    if (withBackground)
        drawer.paintBackground();
    for (const VectorPrimitive& one : drawing.primitives)
        drawer.paint(one);
}

} // namespace kalmyr::detail
