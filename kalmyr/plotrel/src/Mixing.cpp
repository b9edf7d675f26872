#include "Flattening.h"

#include "ConvexPolygons.h"
#include "LooseQuadtree.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr float kOpaque = 1 - 0.5f / 255;
constexpr float kInvisible = 0.5f / 255;
constexpr float kJoinedWidth = 0.3f;       // Millimetres; joints of finer lines do not show.
constexpr std::size_t kFewCandidates = 12; // Not worth a division of the place.
constexpr std::size_t kMaxRest = 64;       // Pieces that a place may be cut into.
constexpr float kLeastPlace = 0.1f;        // Millimetres; smaller ones are not divided.

/// A polygon, opaque, that can be seen through what comes later: its corners, counter-clockwise,
/// each with its colour. A segment of a line is its rectangle.
struct Item {
    std::uint32_t first = 0; ///< in Mixer::m_places
    std::uint32_t count = 0;
    bool shaded = false;
    bool seen = false; ///< Found to be visible through the polygon at work.
};

bool isTransparent(const VectorDrawing& drawing, const VectorPrimitive& one)
{
    return one.opacity < kOpaque
           || (one.image >= 0
               && drawing.images[static_cast<std::size_t>(one.image)].pixels.hasTransparency());
}

/// Builds the drawing anew, from back to front; what was built so far is found by place.
///
/// A transparent polygon shows an earlier item when not all of their common area is covered by
/// items in between. Only then their intersection is written, whole, and from back to front, so
/// that several layers of glass do not write once more what the last of them had covered.
class Mixer {
public:
    Mixer(VectorDrawing& drawing, const SbColor& paper)
        : m_drawing(drawing), m_index(areaOf(drawing))
    {
        for (const VectorPrimitive& one : drawing.primitives)
            if (isTransparent(drawing, one))
                for (const VectorVertex& place : verticesOf(one))
                    m_transparentArea.extend(place.x, place.y);
        addBackground(paper);
    }

    void run(std::size_t lastTransparent)
    {
        for (std::size_t i = 0; i < m_drawing.primitives.size(); ++i) {
            const VectorPrimitive& one = m_drawing.primitives[i];
            m_indexing = i < lastTransparent;
            if (i > lastTransparent || one.kind == VectorPrimitive::TEXT)
                copy(one);
            else if (one.kind == VectorPrimitive::POLYGON)
                addPolygonOf(one);
            else
                addLine(one);
        }
        m_drawing.vertices.swap(m_target.vertices);
        m_drawing.primitives.swap(m_target.primitives);
    }

private:
    static PageBox areaOf(const VectorDrawing& drawing)
    {
        PageBox area;
        area.extend(drawing.x, drawing.y);
        area.extend(drawing.x + drawing.width, drawing.y + drawing.height);
        return area;
    }

    std::span<const VectorVertex> placesOf(const Item& item) const
    {
        return {m_places.data() + item.first, item.count};
    }

    std::span<const VectorVertex> verticesOf(const VectorPrimitive& one) const
    {
        return {m_drawing.vertices.data() + one.first, one.count};
    }

    void copy(const VectorPrimitive& one)
    {
        VectorPrimitive& copied = m_target.primitives.emplace_back(one);
        if (one.kind == VectorPrimitive::TEXT)
            return;
        copied.opacity = 1;
        copied.first = static_cast<std::uint32_t>(m_target.vertices.size());
        const auto vertices = verticesOf(one);
        m_target.vertices.insert(m_target.vertices.end(), vertices.begin(), vertices.end());
    }

    // --- What lies below ---

    void addItem(std::span<const VectorVertex> places)
    {
        const PageBox box = boxOf(places);
        if (!m_indexing || !box.overlaps(m_transparentArea) || isSliver(places))
            return;
        Item item;
        item.first = static_cast<std::uint32_t>(m_places.size());
        item.count = static_cast<std::uint32_t>(places.size());
        m_places.insert(m_places.end(), places.begin(), places.end());
        if (signedArea(places) < 0)
            std::reverse(m_places.end() - item.count, m_places.end());
        for (const VectorVertex& place : places)
            item.shaded |= colorDifference(place, places[0]) > 0;
        m_index.insert(static_cast<std::uint32_t>(m_items.size()), box);
        m_items.push_back(item);
    }

    void addRectangle(float bottom, float top, const SbColor& bottomColor, const SbColor& topColor)
    {
        const float left = m_drawing.x - 1;
        const float right = m_drawing.x + m_drawing.width + 1;
        const auto corner = [](float x, float y, const SbColor& color) {
            return VectorVertex{x, y, color[0], color[1], color[2]};
        };
        addItem(Corners{corner(left, bottom, bottomColor), corner(right, bottom, bottomColor),
                        corner(right, top, topColor), corner(left, top, topColor)});
    }

    void addBackground(const SbColor& paper)
    {
        const float top = m_drawing.y + m_drawing.height;
        addRectangle(m_drawing.y - 1, top + 1, paper, paper);
        const auto& stops = m_drawing.background;
        if (stops.empty())
            return;
        const auto heightAt = [&](const VectorBackgroundStop& stop) {
            return top - stop.share * m_drawing.height;
        };
        addRectangle(heightAt(stops.front()), top + 1, stops.front().color, stops.front().color);
        for (std::size_t i = 1; i < stops.size(); ++i)
            addRectangle(heightAt(stops[i]), heightAt(stops[i - 1]), stops[i].color,
                         stops[i - 1].color);
        addRectangle(m_drawing.y - 1, heightAt(stops.back()), stops.back().color,
                     stops.back().color);
    }

    /// Colour of a convex polygon at a place in it; rounding leads to none that no corner has.
    static VectorVertex colorAt(std::span<const VectorVertex> corners, const VectorVertex& place)
    {
        const VectorVertex& a = corners[0];
        const VectorVertex& b = corners[corners.size() / 3];
        const VectorVertex& c = corners[corners.size() * 2 / 3];
        const double area = sideOf(a, b, c);
        if (area == 0)
            return a;
        const double shareB = sideOf(a, place, c) / area;
        const double shareC = sideOf(a, b, place) / area;
        const auto mixed = [&](float VectorVertex::*value) {
            float least = a.*value;
            float most = least;
            for (const VectorVertex& corner : corners) {
                least = std::min(least, corner.*value);
                most = std::max(most, corner.*value);
            }
            const double plane = a.*value + (double(b.*value) - a.*value) * shareB
                                 + (double(c.*value) - a.*value) * shareC;
            return std::clamp(static_cast<float>(plane), least, most);
        };
        return {place.x, place.y, mixed(&VectorVertex::red), mixed(&VectorVertex::green),
                mixed(&VectorVertex::blue)};
    }

    VectorVertex colorOf(const Item& item, const VectorVertex& place) const
    {
        const auto places = placesOf(item);
        return item.shaded ? colorAt(places, place) : places[0];
    }

    static VectorVertex mix(const VectorVertex& above, const VectorVertex& below, float opacity)
    {
        const auto mixed = [opacity](float a, float b) { return b + (a - b) * opacity; };
        return {above.x, above.y, mixed(above.red, below.red), mixed(above.green, below.green),
                mixed(above.blue, below.blue)};
    }

    void findBelow(const PageBox& box)
    {
        m_found.clear();
        m_index.find(box, m_found);
        std::sort(m_found.begin(), m_found.end(), std::greater<>());
    }

    // --- Polygons ---

    void addPolygonOf(const VectorPrimitive& one)
    {
        const auto vertices = verticesOf(one);
        m_polygon.assign(vertices.begin(), vertices.end());
        float opacity = one.opacity;
        if (one.image >= 0)
            opacity *= fitImage(m_drawing.images[static_cast<std::size_t>(one.image)], m_polygon);
        else if (!one.shaded)
            for (VectorVertex& corner : m_polygon)
                setColor(corner, vertices[0]);
        if (opacity >= kOpaque) {
            addItem(m_polygon);
            copy(one);
            return;
        }
        if (opacity <= kInvisible || isSliver(m_polygon))
            return;
        if (signedArea(m_polygon) < 0)
            std::reverse(m_polygon.begin(), m_polygon.end());
        addMixed(opacity);
    }

    void addMixed(float opacity)
    {
        findBelow(boxOf(m_polygon));
        markSeen(m_polygon, m_found);
        std::swap(m_found, m_shown);
        for (auto id = m_shown.rbegin(); id != m_shown.rend(); ++id) {
            if (!m_items[*id].seen)
                continue;
            m_items[*id].seen = false;
            addIntersection(Item(m_items[*id]), opacity);
        }
    }

    void addIntersection(const Item& item, float opacity)
    {
        intersect(m_polygon, placesOf(item), m_result, m_scratch);
        if (m_result.empty())
            return;
        for (VectorVertex& corner : m_result)
            corner = mix(corner, colorOf(item, corner), opacity);
        const std::size_t first = m_target.primitives.size();
        kalmyr::detail::addPolygon(m_target, m_result, 1);
        for (std::size_t i = first; i < m_target.primitives.size(); ++i) {
            const VectorPrimitive& part = m_target.primitives[i];
            addItem({m_target.vertices.data() + part.first, part.count});
        }
    }

    // --- What is visible through a polygon ---

    /// Marks of the candidates, the last drawn one first, those that can be seen in `region`.
    void markSeen(const Corners& region, const std::vector<std::uint32_t>& candidates)
    {
        const PageBox box = boxOf(region);
        const float side = std::max(box.maxX - box.minX, box.maxY - box.minY);
        if (candidates.size() <= kFewCandidates || side < kLeastPlace) {
            markSeenOneByOne(region, candidates);
            return;
        }
        VectorVertex from;
        VectorVertex to;
        if (side == box.maxX - box.minX) {
            from.x = to.x = (box.minX + box.maxX) / 2;
            to.y = 1;
        } else {
            from.y = to.y = (box.minY + box.maxY) / 2;
            to.x = 1;
        }
        std::vector<Corners> parts(2);
        clipToLeft(region, from, to, parts[0]);
        clipToLeft(region, to, from, parts[1]);
        std::vector<std::vector<std::uint32_t>> lists(2);
        for (std::size_t i = 0; i < 2; ++i) {
            const PageBox half = boxOf(parts[i]);
            for (const std::uint32_t id : candidates)
                if (parts[i].size() >= 3 && boxOf(placesOf(m_items[id])).overlaps(half))
                    lists[i].push_back(id);
        }
        if (std::min(lists[0].size(), lists[1].size()) * 10 > candidates.size() * 9) {
            markSeenOneByOne(region,
                             candidates); // They overlap each other: no division parts them.
            return;
        }
        for (std::size_t i = 0; i < 2; ++i)
            markSeen(parts[i], lists[i]);
    }

    void markSeenOneByOne(const Corners& region, const std::vector<std::uint32_t>& candidates)
    {
        std::vector<Corners> rest;
        if (!isSliver(region))
            rest.push_back(region);
        for (const std::uint32_t id : candidates) {
            if (rest.empty())
                return;
            Item& item = m_items[id];
            item.seen |= cover(rest, placesOf(item));
        }
    }

    /// Takes a window out of the rest. Whether there was something to take.
    bool cover(std::vector<Corners>& rest, std::span<const VectorVertex> window)
    {
        const PageBox box = boxOf(window);
        const bool full =
            rest.size() > kMaxRest; // differences that more pieces would show count as seen
        bool any = false;
        std::vector<Corners> left;
        for (Corners& piece : rest) {
            m_result.clear();
            if (boxOf(piece).overlaps(box))
                intersect(piece, window, m_result, m_scratch);
            if (m_result.empty()) {
                if (!full)
                    left.push_back(std::move(piece));
                continue;
            }
            any = true;
            if (full)
                return true;
            m_result = piece;
            for (std::size_t i = 0; i < window.size(); ++i) {
                const VectorVertex& next = window[(i + 1) % window.size()];
                clipToLeft(m_result, next, window[i], m_scratch);
                if (!isSliver(m_scratch))
                    left.push_back(m_scratch);
                clipToLeft(m_result, window[i], next, m_scratch);
                m_result.swap(m_scratch);
            }
        }
        if (!full)
            rest = std::move(left);
        return any;
    }

    // --- Lines and points ---

    VectorVertex colorBelow(const VectorVertex& place)
    {
        findBelow(boxOf({&place, 1}));
        for (const std::uint32_t id : m_found)
            if (contains(placesOf(m_items[id]), place))
                return colorOf(m_items[id], place);
        return m_places[0];
    }

    void addLine(const VectorPrimitive& one)
    {
        const auto vertices = verticesOf(one);
        if (vertices.empty() || one.opacity <= kInvisible)
            return;
        if (one.kind == VectorPrimitive::POINT) {
            VectorVertex place = vertices[0];
            if (one.opacity < kOpaque)
                place = mix(place, colorBelow(place), one.opacity);
            m_target.add(one.kind).width = one.width;
            m_target.addVertex(place);
            addDisc(place, one.width);
            return;
        }
        // Runs of segments in one colour.
        Corners run{vertices[0]};
        for (std::size_t i = 1; i < vertices.size(); ++i) {
            VectorVertex color = vertices[0];
            if (one.opacity < kOpaque)
                color =
                    mix(color, colorBelow(between(vertices[i - 1], vertices[i], 0.5)), one.opacity);
            if (run.size() > 1 && colorDifference(run[0], color) > kInvisible)
                endRun(run, one.width);
            setColor(run[0], color);
            run.push_back(vertices[i]);
            setColor(run.back(), color);
        }
        endRun(run, one.width);
    }

    /// Writes a run as one line. The next one begins where it ended.
    void endRun(Corners& run, float width)
    {
        if (run.size() > 1) {
            m_target.add(VectorPrimitive::LINE).width = width;
            for (const VectorVertex& place : run)
                m_target.addVertex(place);
        }
        for (std::size_t i = 1; i < run.size(); ++i) {
            addSegment(run[i - 1], run[i], width);
            if (i > 1 && width >= kJoinedWidth)
                addDisc(run[i - 1], width);
        }
        run.erase(run.begin(), run.end() - 1);
    }

    void addSegment(const VectorVertex& from, const VectorVertex& to, float width)
    {
        const float length = std::hypot(to.x - from.x, to.y - from.y);
        if (!m_indexing || length <= 0)
            return;
        const float x = (to.y - from.y) / length * width / 2;
        const float y = (from.x - to.x) / length * width / 2;
        Corners corners{from, to, to, from};
        for (std::size_t i = 0; i < corners.size(); ++i) {
            corners[i].x += i < 2 ? x : -x;
            corners[i].y += i < 2 ? y : -y;
        }
        addItem(corners);
    }

    void addDisc(const VectorVertex& middle, float diameter)
    {
        constexpr int kSides = 12;
        Corners corners(kSides, middle);
        for (std::size_t i = 0; m_indexing && i < corners.size(); ++i) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(i) / kSides;
            corners[i].x += diameter / 2 * static_cast<float>(std::cos(angle));
            corners[i].y += diameter / 2 * static_cast<float>(std::sin(angle));
        }
        addItem(corners);
    }

    VectorDrawing& m_drawing;
    VectorDrawing m_target;
    std::vector<VectorVertex> m_places; // Of the items.
    std::vector<Item> m_items;          // From back to front, the paper first.
    LooseQuadtree m_index;
    PageBox m_transparentArea; // Nothing else can be seen through something.
    bool m_indexing = true;
    Corners m_polygon; // At work, counter-clockwise.
    Corners m_result;
    Corners m_scratch;
    std::vector<std::uint32_t> m_found;
    std::vector<std::uint32_t> m_shown;
};

} // namespace

void mixTransparency(VectorDrawing& drawing, const SbColor& paper)
{
    std::size_t last = drawing.primitives.size();
    while (last > 0 && !isTransparent(drawing, drawing.primitives[last - 1]))
        --last;
    if (last > 0)
        Mixer(drawing, paper).run(last - 1);
}

} // namespace kalmyr::detail
