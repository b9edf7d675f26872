#include "rendering/DrawStyles.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <vector>

namespace kalmyr::detail {

namespace {

using Style = SoGLRenderAction::DrawStyle;

constexpr float kLeastPointSize = 3; // pixels: a single one is hard to see

/// Values of the vertices in the order of `sources`, of each `size` elements; none where not every
/// vertex has them.
template <class T>
std::vector<T> pick(const SoGeometry& geometry, const std::vector<T>& from,
                    const std::vector<std::uint32_t>& sources, std::size_t size = 1)
{
    std::vector<T> values;
    if (from.size() < geometry.positions.size() * size)
        return values;
    values.reserve(sources.size() * size);
    for (const std::uint32_t source : sources) {
        const auto first = from.begin() + static_cast<std::ptrdiff_t>(source * size);
        values.insert(values.end(), first, first + static_cast<std::ptrdiff_t>(size));
    }
    return values;
}

std::unique_ptr<SoGeometry::Extras> pickExtras(const SoGeometry& from,
                                               const std::vector<std::uint32_t>& sources)
{
    auto extras = std::make_unique<SoGeometry::Extras>();
    for (const SoGeometry::Extras::TexCoordSet& set : from.extras->texCoordSets)
        extras->texCoordSets.push_back({set.unit, pick(from, set.values, sources)});
    for (const SoGeometry::Extras::Attribute& attribute : from.extras->attributes)
        extras->attributes.push_back({attribute.name, attribute.components,
                                      pick(from, attribute.values, sources,
                                           static_cast<std::size_t>(attribute.components))});
    return extras;
}

/// No two primitives share a vertex.
SoRef<SoGeometry> makeFlat(const SoGeometry& from)
{
    SoRef<SoGeometry> flat(new SoGeometry);
    std::vector<std::uint32_t> sources;
    const auto unshare = [&sources](const std::vector<std::uint32_t>& indices) {
        const auto first = static_cast<std::uint32_t>(sources.size());
        sources.insert(sources.end(), indices.begin(), indices.end());
        std::vector<std::uint32_t> own(indices.size());
        std::iota(own.begin(), own.end(), first);
        return own;
    };
    flat->triangles = unshare(from.triangles);
    flat->lines = unshare(from.lines);
    flat->points = unshare(from.points);
    flat->triangleFaces = from.triangleFaces;
    flat->lineNumbers = from.lineNumbers;
    flat->pointNumbers = from.pointNumbers;
    flat->solid = from.solid;
    flat->twoSided = from.twoSided;
    flat->positions = pick(from, from.positions, sources);
    flat->normals = pick(from, from.normals, sources);
    flat->texCoords = pick(from, from.texCoords, sources);
    flat->colors = pick(from, from.colors, sources);
    if (from.extras)
        flat->extras = pickExtras(from, sources);
    for (std::size_t t = 0; t < flat->triangles.size(); t += 3) {
        const SbVec3f* corners = &flat->positions[t];
        SbVec3f normal = (corners[1] - corners[0]).cross(corners[2] - corners[0]);
        if (normal.normalize() > 0)
            std::fill_n(&flat->normals[t], 3, normal);
    }
    return flat;
}

/// The same without textures, and without programs where `keepsProgram` is off; null when nothing
/// is left.
std::shared_ptr<const SoLookExtras> withoutTextures(const SoLookExtras& from, bool keepsProgram)
{
    auto extras = std::make_shared<SoLookExtras>(from);
    extras->stages.clear();
    if (!keepsProgram)
        extras->program = nullptr;
    return *extras == SoLookExtras() ? nullptr : extras;
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
    if (look.extras)
        look.extras = withoutTextures(*look.extras, style == Style::NO_TEXTURE);
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
    // What has a size in pixels has no box.
    const bool isBox = style == Style::BOUNDING_BOX && geometry->pixelOffsets.empty();
    if (!isFlat && !isBox)
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
