#include "GeometryOutput.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <array>

namespace kalmyr::detail {

void writeVertices(const VertexTable& table, const VertexSources& sources, SoGeometry& geometry)
{
    const std::size_t count = table.size();
    const std::size_t numGiven = sources.positions.size();
    geometry.positions.resize(count);
    if (!sources.normals.empty())
        geometry.normals.resize(count);
    if (!sources.colors.empty())
        geometry.colors.resize(count);
    if (!sources.texCoords.empty())
        geometry.texCoords.resize(count);
    for (std::size_t v = 0; v < count; ++v) {
        const VertexTable::Key& key = table[v];
        geometry.positions[v] = key.position < numGiven
                                    ? sources.positions[key.position]
                                    : sources.morePositions[key.position - numGiven];
        if (!sources.normals.empty()) {
            const SbVec3f& n = sources.normals[static_cast<std::size_t>(key.normal)];
            geometry.normals[v] = sources.unitNormals ? n : n.normalized();
        }
        if (!sources.colors.empty())
            geometry.colors[v] = sources.colors[static_cast<std::size_t>(key.color)];
        if (!sources.texCoords.empty())
            geometry.texCoords[v] = sources.texCoords[static_cast<std::size_t>(key.texCoord)];
    }
    if (!sources.more || sources.more->empty())
        return;
    const auto placesOf = [&](std::size_t v) {
        const VertexTable::Key& key = table[v];
        const std::size_t position =
            key.position < numGiven ? key.position : sources.likePositions[key.position - numGiven];
        return VertexPlaces{static_cast<std::size_t>(key.texCoord), position};
    };
    writeMore(*sources.more, count, placesOf, geometry);
}

MoreWriter::MoreWriter(const MoreValues& values, std::size_t count, SoGeometry& geometry)
    : m_values(values), m_size(values.values.size() / static_cast<std::size_t>(values.components))
{
    if (m_size == 0)
        return;
    if (!geometry.extras)
        geometry.extras = std::make_unique<SoGeometry::Extras>();
    if (values.unit >= 0) {
        m_set = &geometry.extras->texCoordSets.emplace_back().values;
        geometry.extras->texCoordSets.back().unit = values.unit;
        m_set->assign(count, SbVec4f(0, 0, 0, 1));
    } else {
        auto& attribute = geometry.extras->attributes.emplace_back();
        attribute.name = values.name;
        attribute.components = values.components;
        m_attribute = &attribute.values;
        m_attribute->resize(count * static_cast<std::size_t>(values.components));
    }
}

void MoreWriter::write(std::size_t vertex, const VertexPlaces& places)
{
    if (m_size == 0)
        return;
    const auto n = static_cast<std::size_t>(m_values.components);
    const float* from = m_values.values.data()
                        + n * std::min(m_set ? places.texCoord : places.position, m_size - 1);
    if (m_set)
        std::copy_n(from, n, (*m_set)[vertex].getValue());
    else
        std::copy_n(from, n, m_attribute->data() + n * vertex);
}

void makeTexCoords(SoGeometry& geometry)
{
    const SbBox3f& box = geometry.getBox();
    const SbVec3f size = box.getSize();
    std::array<int, 3> axes{0, 1, 2};
    // Equal sides keep the order x, y, z.
    std::stable_sort(axes.begin(), axes.end(), [&size](int a, int b) { return size[a] > size[b]; });
    const float longest = size[axes[0]];
    const float scale = longest > 0 ? 1 / longest : 0;
    geometry.texCoords.reserve(geometry.positions.size());
    for (const SbVec3f& p : geometry.positions) {
        const SbVec3f from = (p - box.getMin()) * scale;
        geometry.texCoords.emplace_back(from[axes[0]], from[axes[1]]);
    }
}

} // namespace kalmyr::detail
