#include <kalmyr/shapes/SoAsciiText.h>

#include "TextLayout.h"

#include <kalmyr/elements/SoFontElement.h>

namespace {

constexpr SoEnumEntry kJustifications[] = {
    {"LEFT", SoAsciiText::LEFT}, {"RIGHT", SoAsciiText::RIGHT}, {"CENTER", SoAsciiText::CENTER}};

} // namespace

SO_NODE_SOURCE(SoAsciiText)

SoAsciiText::SoAsciiText()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(string, (""));
    SO_ADD_FIELD(spacing, (1.0f));
    SO_ADD_FIELD(justification, (LEFT));
    SO_ADD_FIELD(width, (0.0f));
    justification.setEnums(kJustifications);
}

SoAsciiText::~SoAsciiText() = default;

void SoAsciiText::initClass()
{
    SO_NODE_INIT_CLASS(SoAsciiText, SoShape, "AsciiText");
}

std::uint64_t SoAsciiText::stateKey(SoState* state) const
{
    return state->get<SoFontElement>().getValueId();
}

void SoAsciiText::buildGeometry(SoState* state, SoGeometry& geometry)
{
    using kalmyr::detail::TextLayout;
    TextLayout text;
    text.font = SoFontElement::get(state);
    text.lines = string.values();
    text.lengths = width.values();
    text.spacing = spacing.getValue();
    text.major = justification.getValue() == RIGHT    ? TextLayout::END
                 : justification.getValue() == CENTER ? TextLayout::MIDDLE
                                                      : TextLayout::BEGIN;
    text.build(geometry);
}
