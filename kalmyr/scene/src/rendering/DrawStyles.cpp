#include "rendering/DrawStyles.h"

#include <algorithm>

namespace kalmyr::detail {

namespace {

using Style = SoGLRenderAction::DrawStyle;

constexpr float kLeastPointSize = 3; // pixels: a single one is hard to see

void addExtras(const SoGeometry::Extras& from, std::uint32_t index, SoGeometry& to)
{
    if (!to.extras) {
        to.extras = std::make_unique<SoGeometry::Extras>(from);
        for (auto& set : to.extras->texCoordSets)
            set.values.clear();
        for (auto& input : to.extras->attributes)
            input.values.clear();
    }
    for (std::size_t i = 0; i < from.texCoordSets.size(); ++i)
        to.extras->texCoordSets[i].values.push_back(from.texCoordSets[i].values[index]);
    for (std::size_t i = 0; i < from.attributes.size(); ++i) {
        const auto& input = from.attributes[i];
        const auto n = static_cast<std::size_t>(input.components);
        const float* first = input.values.data() + index * n;
        auto& values = to.extras->attributes[i].values;
        values.insert(values.end(), first, first + n);
    }
}

/// Appends a vertex of `from` with all that it has, under a normal of its own.
std::uint32_t addVertex(const SoGeometry& from, std::uint32_t index, const SbVec3f* normal,
                        SoGeometry& to)
{
    const std::size_t count = from.positions.size();
    to.positions.push_back(from.positions[index]);
    if (from.normals.size() >= count)
        to.normals.push_back(normal ? *normal : from.normals[index]);
    if (from.texCoords.size() >= count)
        to.texCoords.push_back(from.texCoords[index]);
    if (from.colors.size() >= count)
        to.colors.push_back(from.colors[index]);
    if (from.extras)
        addExtras(*from.extras, index, to);
    return static_cast<std::uint32_t>(to.positions.size() - 1);
}

SoRef<SoGeometry> makeFlat(const SoGeometry& from)
{
    SoRef<SoGeometry> flat(new SoGeometry);
    flat->triangleFaces = from.triangleFaces;
    flat->solid = from.solid;
    flat->twoSided = from.twoSided;
    for (std::size_t t = 0; t < from.triangles.size(); t += 3) {
        const std::uint32_t* corners = &from.triangles[t];
        const SbVec3f& a = from.positions[corners[0]];
        SbVec3f normal = (from.positions[corners[1]] - a).cross(from.positions[corners[2]] - a);
        const bool hasArea = normal.normalize() > 0;
        for (int i = 0; i < 3; ++i)
            flat->triangles.push_back(
                addVertex(from, corners[i], hasArea ? &normal : nullptr, *flat));
    }
    for (const std::uint32_t index : from.lines)
        flat->lines.push_back(addVertex(from, index, nullptr, *flat));
    for (const std::uint32_t index : from.points)
        flat->points.push_back(addVertex(from, index, nullptr, *flat));
    return flat;
}

SoRef<SoGeometry> makeBox(const SoGeometry& from)
{
    SoRef<SoGeometry> frame(new SoGeometry);
    const SbBox3f& box = from.getBox();
    const SbVec3f corner[2] = {box.getMin(), box.getMax()};
    for (unsigned i = 0; i < 8; ++i)
        frame->positions.emplace_back(corner[i & 1][0], corner[i >> 1 & 1][1], corner[i >> 2][2]);
    for (std::uint32_t i = 0; i < 8; ++i)
        for (const std::uint32_t bit : {1u, 2u, 4u})
            if (!(i & bit))
                frame->lines.insert(frame->lines.end(), {i, i | bit});
    if (!from.colors.empty())
        frame->colors.assign(frame->positions.size(), from.colors.front());
    return frame;
}

} // namespace

void restyle(SoRenderAppearance& look, SoGLRenderAction::DrawStyle style)
{
    if (style == Style::AS_IS || style == Style::FLAT)
        return;
    look.texture = SoTextureValues();
    look.translucentTexture = false;
    if (style == Style::NO_TEXTURE)
        return;
    // Lines and points in their plain colours: light on them would only make them hard to see.
    look.lit = false;
    look.transparency = 0;
    SoDrawStyleValues& draw = look.drawStyle;
    if (style == Style::POINTS) {
        draw.style = SoDrawStyleValues::POINTS;
        draw.pointSize = std::max(draw.pointSize, kLeastPointSize);
    } else if (style == Style::BOUNDING_BOX) {
        draw.style = SoDrawStyleValues::LINES;
    } else if (draw.style == SoDrawStyleValues::FILLED) {
        draw.style = SoDrawStyleValues::LINES;
    }
}

SoRef<const SoRenderAppearance> hidingAppearance()
{
    static const SoRef<const SoRenderAppearance> s_look = [] {
        SoRef<SoRenderAppearance> look(new SoRenderAppearance);
        look->lit = false;
        look->hiding = true;
        return SoRef<const SoRenderAppearance>(look);
    }();
    return s_look;
}

SoRef<SoGeometry> StyledGeometries::find(const SoRef<SoGeometry>& geometry, Style style)
{
    const bool isFlat =
        style == Style::FLAT && !geometry->triangles.empty() && !geometry->normals.empty();
    if (!isFlat && style != Style::BOUNDING_BOX)
        return geometry;
    SoRef<SoGeometry>& made = m_made[{geometry->getId(), style}];
    if (!made)
        made = isFlat ? makeFlat(*geometry) : makeBox(*geometry);
    return made;
}

void StyledGeometries::sweep()
{
    std::erase_if(m_made, [](const auto& entry) { return entry.second->getRefCount() <= 1; });
}

} // namespace kalmyr::detail
