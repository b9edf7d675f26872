#include "PageOutline.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace kalmyr::detail {

namespace {

using Place = PageOutline::Place;

std::uint64_t keyOf(const Place& place)
{
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(place.x)) << 32
           | static_cast<std::uint32_t>(place.y);
}

std::uint64_t mix(std::uint64_t value)
{
    value ^= value >> 33;
    value *= 0xff51afd7ed558ccd;
    return value ^ value >> 33;
}

struct SideHash {
    std::size_t operator()(const std::pair<std::uint64_t, std::uint64_t>& side) const
    {
        return mix(side.first + mix(side.second));
    }
};

struct PlaceHash {
    std::size_t operator()(std::uint64_t key) const { return mix(key); }
};

/// Whether the path runs straight on at `b`.
bool isStraight(const Place& a, const Place& b, const Place& c)
{
    const std::int64_t ux = b.x - a.x, uy = b.y - a.y, vx = c.x - b.x, vy = c.y - b.y;
    return ux * vy == uy * vx && ux * vx + uy * vy > 0;
}

} // namespace

void PageOutline::addPolygon(const VectorVertex* corners, std::size_t count)
{
    const auto place = [corners](std::size_t i) {
        return Place{static_cast<std::int32_t>(std::lround(corners[i].x * 1000)),
                     static_cast<std::int32_t>(std::lround(corners[i].y * 1000))};
    };
    std::int64_t area = 0;
    const Place first = place(0);
    for (std::size_t i = 2; i < count; ++i) {
        const Place b = place(i - 1), c = place(i);
        area += std::int64_t(b.x - first.x) * (c.y - first.y)
                - std::int64_t(c.x - first.x) * (b.y - first.y);
    }
    if (area == 0)
        return;
    ++m_polygons;
    // All turn the same way: what overlaps does not become a hole.
    for (std::size_t i = 0; i < count; ++i) {
        const Place from = place(i), to = place((i + 1) % count);
        if (from == to)
            continue;
        m_sides.push_back(area > 0 ? Side{from, to} : Side{to, from});
    }
}

std::vector<std::vector<Place>> PageOutline::take()
{
    if (std::exchange(m_polygons, 0) == 1) {
        std::vector<Place> path;
        for (const Side& side : m_sides)
            path.push_back(side.from);
        if (path.size() > 1 && m_sides[0].to != path[1])
            std::reverse(path.begin(), path.end());
        m_sides.clear();
        return {path};
    }
    // A side and its reverse cancel each other, as often as both are there.
    std::unordered_map<std::pair<std::uint64_t, std::uint64_t>, int, SideHash> counts;
    counts.reserve(m_sides.size());
    for (const Side& side : m_sides)
        ++counts[{keyOf(side.from), keyOf(side.to)}];
    std::vector<Side> rest;
    // Of each place the sides that leave it, as lists; every place is left as often as reached.
    constexpr std::uint32_t kNone = ~0U;
    std::unordered_map<std::uint64_t, std::uint32_t, PlaceHash> leaving;
    std::vector<std::uint32_t> next;
    for (const Side& side : m_sides) {
        const auto reverse = counts.find({keyOf(side.to), keyOf(side.from)});
        if (reverse != counts.end() && reverse->second > 0) {
            --reverse->second;
            continue;
        }
        std::uint32_t& head = leaving.try_emplace(keyOf(side.from), kNone).first->second;
        next.push_back(head);
        head = static_cast<std::uint32_t>(rest.size());
        rest.push_back(side);
    }
    m_sides.clear();

    std::vector<std::vector<Place>> paths;
    for (const Side& begin : rest) {
        const std::uint64_t start = keyOf(begin.from);
        std::uint32_t& head = leaving.find(start)->second;
        while (head != kNone) {
            std::vector<Place> path;
            std::uint64_t at = start;
            do {
                std::uint32_t& first = at == start ? head : leaving.find(at)->second;
                const Side& side = rest[first];
                first = next[first];
                if (path.size() > 1 && isStraight(path[path.size() - 2], path.back(), side.from))
                    path.pop_back();
                path.push_back(side.from);
                at = keyOf(side.to);
            } while (at != start);
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

} // namespace kalmyr::detail
