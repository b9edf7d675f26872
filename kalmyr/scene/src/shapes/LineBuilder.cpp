#include <kalmyr/shapes/FaceBuilder.h>

#include "AttributeLookup.h"
#include "GeometryOutput.h"
#include "PrimitiveRuns.h"
#include "VertexTable.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <numeric>

namespace kalmyr {

namespace {

using detail::AttributeLookup;
using detail::forRuns;
using detail::Place;
using detail::VertexTable;

/// Looks attributes up and collects vertices, for lines and points alike.
class VertexCollector {
public:
    VertexCollector(const VertexInput& input, const detail::Counts& counts, std::size_t expected)
        : m_input(input),
          m_normals(input.normals, input.coordIndex),
          m_colors(input.colors, input.coordIndex),
          m_texCoords(input.texCoords, input.coordIndex),
          m_table(input.positions.size(), expected)
    {
        if (!m_normals.hasEnough(counts))
            m_normals.drop();
        if (!m_texCoords.hasEnough(counts))
            m_texCoords.drop();
    }

    /// False for a corner with an index that is out of range.
    bool add(const Place& place, std::int32_t index, std::uint32_t& vertex)
    {
        if (static_cast<std::size_t>(static_cast<std::uint32_t>(index))
            >= m_input.positions.size()) {
            m_fault.record(m_input.coordField, index, m_input.positions.size(), place.slot);
            return false;
        }
        VertexTable::Key key{static_cast<std::uint32_t>(index), 0, 0, 0};
        if (!look(m_normals, place, key.normal) || !look(m_colors, place, key.color)
            || !look(m_texCoords, place, key.texCoord)) {
            return false;
        }
        vertex = m_table.add(key);
        return true;
    }

    void finish(SoGeometry& geometry) const
    {
        detail::warnOf(m_fault, m_input.node);
        detail::VertexSources sources;
        sources.positions = m_input.positions;
        if (m_normals.isGiven())
            sources.normals = m_input.normals.values;
        if (m_colors.isGiven())
            sources.colors = m_input.colors.values;
        if (m_texCoords.isGiven())
            sources.texCoords = m_input.texCoords.values;
        sources.more = &m_input.more;
        detail::writeVertices(m_table, sources, geometry);
        geometry.solid = false;
        geometry.twoSided = true;
    }

private:
    bool look(const AttributeLookup& attribute, const Place& place, std::int32_t& number)
    {
        if (attribute.isConstant())
            return true;
        number = static_cast<std::int32_t>(attribute.at(place, m_fault));
        return number >= 0;
    }

    const VertexInput& m_input;
    AttributeLookup m_normals, m_colors, m_texCoords;
    VertexTable m_table;
    detail::Fault m_fault;
};

/// Numbers of segments or points, listed from the first gap on.
struct Numbers {
    std::vector<std::int32_t>& list;
    bool hasGap = false;

    void add(std::uint32_t first, std::uint32_t count, bool usable)
    {
        if (!usable && !hasGap && count > 0) {
            hasGap = true;
            list.resize(first);
            std::iota(list.begin(), list.end(), 0);
        }
        for (std::uint32_t i = first; usable && hasGap && i < first + count; ++i)
            list.push_back(static_cast<std::int32_t>(i));
    }
};

detail::Counts countLines(const VertexInput& input)
{
    detail::Counts counts;
    forRuns(input.coordIndex, [&](std::uint32_t begin, std::uint32_t end) {
        ++counts.faces;
        counts.corners += end - begin;
        if (end - begin > 1)
            counts.parts += end - begin - 1;
    });
    for (const std::int32_t i : input.coordIndex) {
        if (i >= 0 && static_cast<std::size_t>(i) < input.positions.size())
            counts.positions = std::max(counts.positions, static_cast<std::uint32_t>(i) + 1);
    }
    return counts;
}

} // namespace

void LineBuilder::build(SoGeometry& geometry) const
{
    VertexCollector vertices(m_input, countLines(m_input), m_input.coordIndex.size());
    std::uint32_t line = 0, firstSegment = 0;
    Numbers numbers{geometry.lineNumbers};
    forRuns(m_input.coordIndex, [&](std::uint32_t begin, std::uint32_t end) {
        const std::size_t before = geometry.lines.size();
        bool usable = true;
        for (std::uint32_t s = begin; s + 1 < end && usable; ++s) {
            const auto segment = firstSegment + (s - begin);
            for (std::uint32_t corner = s; corner <= s + 1 && usable; ++corner) {
                std::uint32_t vertex = 0;
                const Place place{corner, line, line, segment};
                usable = vertices.add(place, m_input.coordIndex[corner], vertex);
                geometry.lines.push_back(vertex);
            }
        }
        if (!usable)
            geometry.lines.resize(before);
        numbers.add(firstSegment, end - begin > 1 ? end - begin - 1 : 0, usable);
        if (end - begin > 1)
            firstSegment += end - begin - 1;
        ++line;
    });
    vertices.finish(geometry);
}

void PointBuilder::build(SoGeometry& geometry) const
{
    const bool all = m_input.coordIndex.empty();
    const std::size_t count = all ? m_input.positions.size() : m_input.coordIndex.size();
    detail::Counts counts;
    counts.positions = counts.corners = counts.faces = counts.parts =
        static_cast<std::uint32_t>(count);
    VertexCollector vertices(m_input, counts, count);
    std::uint32_t number = 0;
    Numbers numbers{geometry.pointNumbers};
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t index = all ? static_cast<std::int32_t>(i) : m_input.coordIndex[i];
        if (index == -1)
            continue;
        // Points count by themselves: ends of runs take no number.
        const Place place{static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i) - number,
                          number, number};
        std::uint32_t vertex = 0;
        const bool usable = vertices.add(place, index, vertex);
        if (usable)
            geometry.points.push_back(vertex);
        numbers.add(number, 1, usable);
        ++number;
    }
    vertices.finish(geometry);
}

} // namespace kalmyr
