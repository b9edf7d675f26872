#include <kalmyr/shapes/SoTextShape.h>

#include "TextLayout.h"

#include <kalmyr/details/SoTextDetail.h>
#include <kalmyr/elements/SoFontElement.h>

namespace {

constexpr SoEnumEntry kJustifications[] = {
    {"LEFT", SoTextShape::LEFT}, {"RIGHT", SoTextShape::RIGHT}, {"CENTER", SoTextShape::CENTER}};

} // namespace

SO_NODE_SOURCE(SoTextShape)

SoTextShape::SoTextShape()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(string, (""));
    SO_ADD_FIELD(spacing, (1.0f));
    SO_ADD_FIELD(justification, (LEFT));
    justification.setEnums(kJustifications);
}

SoTextShape::~SoTextShape() = default;

void SoTextShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoTextShape, SoShape, "TextShape");
}

std::uint64_t SoTextShape::stateKey(SoState* state) const
{
    return state->get<SoFontElement>().getValueId();
}

void SoTextShape::fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const
{
    using kalmyr::detail::TextLayout;
    text.font = SoFontElement::get(state);
    text.lines = string.values();
    text.spacing = spacing.getValue();
    text.major = justification.getValue() == RIGHT    ? TextLayout::END
                 : justification.getValue() == CENTER ? TextLayout::MIDDLE
                                                      : TextLayout::BEGIN;
}

std::unique_ptr<SoDetail> SoTextShape::createDetail(SoState* state, const SoGeometry& geometry,
                                                    Primitive, std::size_t index,
                                                    const SbVec3f& point)
{
    kalmyr::detail::TextLayout text;
    fillLayout(state, text);
    return text.createDetail(geometry, index, SbVec2f(point[0], point[1]));
}
