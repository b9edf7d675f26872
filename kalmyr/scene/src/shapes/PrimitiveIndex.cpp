#include "PrimitiveIndex.h"

#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/details/SoLineDetail.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// Numbers the corners of a shape.
class Corners {
public:
    Corners(const VertexInput& input, std::span<const std::int32_t> coordIndex,
            const Counts& counts)
        : m_coordIndex(coordIndex),
          m_normals(input.normals, coordIndex),
          m_colors(input.colors, coordIndex),
          m_texCoords(input.texCoords, coordIndex)
    {
        // As the builders do: with too few values they make others.
        if (!m_normals.hasEnough(counts))
            m_normals.drop();
        if (!m_texCoords.hasEnough(counts))
            m_texCoords.drop();
    }

    SoPointDetail at(const Place& place) const
    {
        SoPointDetail detail;
        detail.setCoordinateIndex(m_coordIndex.empty() ? static_cast<int>(place.slot)
                                                       : m_coordIndex[place.slot]);
        detail.setMaterialIndex(numberOf(m_colors, place));
        detail.setNormalIndex(numberOf(m_normals, place));
        detail.setTextureCoordIndex(numberOf(m_texCoords, place));
        return detail;
    }

private:
    static int numberOf(const AttributeLookup& attribute, const Place& place)
    {
        Fault ignored;
        return attribute.isGiven() ? static_cast<int>(attribute.at(place, ignored)) : -1;
    }

    std::span<const std::int32_t> m_coordIndex;
    AttributeLookup m_normals, m_colors, m_texCoords;
};

} // namespace

PrimitiveIndex::PrimitiveIndex(ShapeSource& source) : m_runs(PrimitiveRuns::of(source))
{
    std::uint32_t run = 0, number = 0;
    forRuns(source.input.coordIndex, [&](std::uint32_t begin, std::uint32_t end) {
        if (run++ % kRunsPerEntry == 0)
            m_entries.push_back({begin, number});
        number += m_runs.count(end - begin);
        m_counts.corners += end - begin;
    });
    m_entries.shrink_to_fit();
    const std::size_t numPositions = source.input.positions.size();
    for (const std::int32_t i : source.input.coordIndex) {
        if (i >= 0 && static_cast<std::size_t>(i) < numPositions)
            m_counts.positions = std::max(m_counts.positions, static_cast<std::uint32_t>(i) + 1);
    }
    m_counts.faces = m_runs.rule == PrimitiveRuns::SEGMENTS ? run : number;
    m_counts.parts = m_runs.countsParts() ? number : run;
    if (source.input.coordIndex.empty()) // points of all positions
        m_counts = {
            static_cast<std::uint32_t>(numPositions), static_cast<std::uint32_t>(numPositions),
            static_cast<std::uint32_t>(numPositions), static_cast<std::uint32_t>(numPositions)};
    m_made = std::move(source.coordIndex);
    if (!m_made.empty())
        source.input.coordIndex = m_made;
}

std::size_t PrimitiveIndex::getSize() const
{
    return m_entries.capacity() * sizeof(Entry) + m_made.capacity() * sizeof(std::int32_t);
}

std::unique_ptr<SoDetail> PrimitiveIndex::createDetail(const ShapeSource& source,
                                                       std::uint32_t number) const
{
    const std::span<const std::int32_t> indices = indicesOf(source);
    const Corners corners(source.input, indices, m_counts);
    if (m_entries.empty()) { // points of all positions
        if (number >= m_counts.positions)
            return nullptr;
        return std::make_unique<SoPointDetail>(corners.at({number, 0, number, number}));
    }
    auto entry = std::upper_bound(m_entries.begin(), m_entries.end(), number,
                                  [](std::uint32_t n, const Entry& e) { return n < e.number; });
    --entry;
    auto run = static_cast<std::uint32_t>(entry - m_entries.begin()) * kRunsPerEntry;
    std::uint32_t begin = entry->slot, end = begin, first = entry->number;
    for (;; ++run, begin = end + 1) {
        if (begin >= indices.size())
            return nullptr;
        const auto stop = std::find(indices.begin() + begin, indices.end(), -1);
        end = static_cast<std::uint32_t>(stop - indices.begin());
        const std::uint32_t count = m_runs.count(end - begin);
        if (number < first + count)
            break;
        first += count;
    }
    std::vector<std::uint32_t> slots;
    m_runs.addCorners(begin, end, number - first, slots);
    const bool isLine = m_runs.rule == PrimitiveRuns::SEGMENTS;
    const std::uint32_t part = m_runs.countsParts() ? number : run;
    const auto corner = [&](std::uint32_t slot) {
        // Points count by themselves: ends of runs take no number.
        const std::uint32_t before = m_runs.rule == PrimitiveRuns::POINTS ? slot - number : run;
        return corners.at({slot, before, isLine ? run : number, part});
    };
    if (isLine) {
        auto detail = std::make_unique<SoLineDetail>();
        detail->setLineIndex(static_cast<int>(run));
        detail->setPartIndex(static_cast<int>(number - first));
        detail->setPoint0(corner(slots[0]));
        detail->setPoint1(corner(slots[1]));
        return detail;
    }
    if (m_runs.rule == PrimitiveRuns::POINTS)
        return std::make_unique<SoPointDetail>(corner(slots[0]));
    auto detail = std::make_unique<SoFaceDetail>();
    detail->setFaceIndex(static_cast<int>(number));
    detail->setPartIndex(static_cast<int>(part));
    std::vector<SoPointDetail> points;
    points.reserve(slots.size());
    for (const std::uint32_t slot : slots)
        points.push_back(corner(slot));
    detail->setPoints(std::move(points));
    return detail;
}

} // namespace kalmyr::detail
