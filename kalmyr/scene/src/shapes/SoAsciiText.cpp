#include <kalmyr/shapes/SoAsciiText.h>

#include "TextLayout.h"

SO_NODE_SOURCE(SoAsciiText)

SoAsciiText::SoAsciiText()
{
    SO_NODE_CONSTRUCTOR(SoTextShape);
    SO_ADD_FIELD(width, (0.0f));
}

SoAsciiText::~SoAsciiText() = default;

void SoAsciiText::initClass()
{
    SO_NODE_INIT_CLASS(SoAsciiText, SoTextShape, "AsciiText");
}

void SoAsciiText::fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const
{
    SoTextShape::fillLayout(state, text);
    text.lengths = width.values();
}

void SoAsciiText::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::TextLayout text;
    fillLayout(state, text);
    text.build(geometry);
}
