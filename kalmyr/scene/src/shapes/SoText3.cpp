#include <kalmyr/shapes/SoText3.h>

#include "Primitives.h"
#include "TextExtruder.h"

#include <kalmyr/elements/SoMaterialElement.h>

#include <cmath>

namespace {

constexpr SoEnumEntry kParts[] = {{"FRONT", SoText3::FRONT},
                                  {"SIDES", SoText3::SIDES},
                                  {"BACK", SoText3::BACK},
                                  {"ALL", SoText3::ALL}};

/// The profile in force; points that are not finite are left out.
std::vector<SbVec2f> profileOf(float depth, std::span<const SbVec2f> given)
{
    std::vector<SbVec2f> profile;
    for (const SbVec2f& p : given) {
        if (std::isfinite(p[0]) && std::isfinite(p[1]))
            profile.push_back(p);
    }
    if (profile.size() > 1)
        return profile;
    profile = {{0, 0}};
    if (depth > 0 && std::isfinite(depth))
        profile.emplace_back(depth, 0.0f);
    return profile;
}

} // namespace

SO_NODE_SOURCE(SoText3)

SoText3::SoText3()
{
    SO_NODE_CONSTRUCTOR(SoTextShape);
    SO_ADD_FIELD(width, (0.0f));
    SO_ADD_FIELD(parts, (ALL));
    parts.setEnums(kParts);
    SO_ADD_FIELD(depth, (1.0f));
    SO_ADD_EMPTY_FIELD(profile);
}

SoText3::~SoText3() = default;

void SoText3::initClass()
{
    SO_NODE_INIT_CLASS(SoText3, SoTextShape, "Text3");
}

std::uint64_t SoText3::stateKey(SoState* state) const
{
    return SoElement::mix(SoTextShape::stateKey(state) + 1,
                          kalmyr::detail::primitiveStateKey(state, 0, true));
}

void SoText3::fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const
{
    SoTextShape::fillLayout(state, text);
    text.lengths = width.values();
}

void SoText3::buildGeometry(SoState* state, SoGeometry& geometry)
{
    using kalmyr::detail::TextExtruder;
    kalmyr::detail::TextLayout text;
    fillLayout(state, text);
    TextExtruder extruder;
    extruder.node = this;
    extruder.profile = profileOf(depth.getValue(), profile.values());
    const int mask = parts.getValue();
    extruder.shown = {(mask & FRONT) != 0, (mask & SIDES) != 0, (mask & BACK) != 0};
    extruder.hasColors = kalmyr::detail::hasPartColors(state);
    const SoMaterialValues& material = SoMaterialElement::get(state);
    for (int part = 0; part < TextExtruder::NUM_PARTS; ++part) {
        extruder.colors[static_cast<std::size_t>(part)] =
            material.getDiffuse(part).getPackedValue(material.getTransparency(part));
    }
    extruder.build(text, geometry);
}
