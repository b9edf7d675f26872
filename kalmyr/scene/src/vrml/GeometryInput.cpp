#include "GeometryInput.h"

#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/vrml/SoVRMLColor.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLExtraNodes.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLNormal.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>

namespace kalmyr::detail {

namespace {

template <class T>
const T* nodeOf(const SoSFNode& field)
{
    SoNode* node = field.isIgnored() ? nullptr : SoVRMLProtoInstance::resolve(field.getValue());
    return node && node->isOfType(T::getClassTypeId()) ? static_cast<T*>(node) : nullptr;
}

} // namespace

std::span<const SbVec3f> pointsOf(const SoSFNode& field)
{
    if (const auto* places = nodeOf<SoVRMLGeoCoordinate>(field))
        return places->getPoints();
    const auto* node = nodeOf<SoVRMLCoordinate>(field);
    return node ? node->point.values() : std::span<const SbVec3f>();
}

std::span<const SbVec3f> normalsOf(const SoSFNode& field)
{
    const auto* node = nodeOf<SoVRMLNormal>(field);
    return node ? node->vector.values() : std::span<const SbVec3f>();
}

std::span<const SbVec2f> texCoordsOf(const SoSFNode& field)
{
    if (const auto* several = nodeOf<SoVRMLMultiTextureCoordinate>(field))
        return several->getPoints(0);
    const auto* node = nodeOf<SoVRMLTextureCoordinate>(field);
    return node ? node->point.values() : std::span<const SbVec2f>();
}

void addTexCoordSets(const SoSFNode& field, VertexInput& input)
{
    const auto* several = nodeOf<SoVRMLMultiTextureCoordinate>(field);
    for (int unit = 1; several && unit < several->texCoord.getNum(); ++unit) {
        const std::span<const SbVec2f> points = several->getPoints(unit);
        if (!points.empty())
            input.more.push_back({unit, {}, 2, {points[0].getValue(), points.size() * 2}});
    }
}

Attribute<std::uint32_t> colorsOf(SoState* state, const SoSFNode& field, const SoMFInt32& index,
                                  bool perVertex, ShapeSource& source)
{
    const auto* node = nodeOf<SoVRMLColor>(field);
    auto result = attribute<std::uint32_t>({}, index, perVertex, "colorIndex");
    if (const auto* translucent = nodeOf<SoVRMLColorRGBA>(field)) {
        result.count = static_cast<std::size_t>(translucent->color.getNum());
        if (!source.wantsValues())
            return result;
        for (const SbColorRGBA& c : translucent->color.values())
            source.colors.push_back(SbColor(c[0], c[1], c[2]).getPackedValue(1 - c[3]));
        result.values = source.colors;
        return result;
    }
    if (!node)
        return result;
    result.count = static_cast<std::size_t>(node->color.getNum());
    if (!source.wantsValues())
        return result;
    const float transparency = SoMaterialElement::get(state).getTransparency();
    source.colors.reserve(result.count);
    for (const SbColor& color : node->color.values())
        source.colors.push_back(color.getPackedValue(transparency));
    result.values = source.colors;
    return result;
}

bool hasTexture(SoState* state)
{
    return SoLookExtrasElement::isTextured(state);
}

std::uint64_t lookKey(SoState* state, const SoSFNode& color)
{
    constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15ull;
    const std::uint64_t texture = hasTexture(state) ? 2 : 1;
    if (!color.getValue())
        return texture;
    return (state->get<SoMaterialElement>().getValueId() + 1) * kMix + texture;
}

} // namespace kalmyr::detail
