#include <kalmyr/vrml/SoVRMLText.h>

#include "shapes/TextLayout.h"

#include <kalmyr/details/SoDetail.h>
#include <kalmyr/vrml/SoVRMLFontStyle.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLProto.h>

namespace {

using kalmyr::detail::TextLayout;

TextLayout::Justify justifyOf(const SoMFString& justify, int index, TextLayout::Justify otherwise)
{
    const std::string_view word = index < justify.getNum() ? justify[index].view() : "";
    return word == "FIRST"    ? TextLayout::FIRST
           : word == "BEGIN"  ? TextLayout::BEGIN
           : word == "MIDDLE" ? TextLayout::MIDDLE
           : word == "END"    ? TextLayout::END
                              : otherwise;
}

/// The first name that says what kind of font is meant; others name fonts.
void setFamily(const SoMFString& family, SoFontValues& font)
{
    for (const SbString& name : family.values()) {
        if (name == "SANS" || name == "TYPEWRITER")
            font.family = name == "SANS" ? SoFontValues::SANS : SoFontValues::TYPEWRITER;
        else if (name != "SERIF" && font.name.isEmpty()) {
            font.name = SbName(name.view());
            continue;
        }
        return;
    }
}

void setStyle(const SoVRMLFontStyle& style, TextLayout& text)
{
    setFamily(style.family, text.font);
    const std::string_view look = style.style.getValue().view();
    if (look.find("BOLD") != std::string_view::npos)
        text.font.style |= SoFontValues::BOLD;
    if (look.find("ITALIC") != std::string_view::npos)
        text.font.style |= SoFontValues::ITALIC;
    text.font.language = SbName(style.language.getValue().view());
    text.font.size = style.size.getValue();
    text.spacing = style.spacing.getValue();
    text.major = justifyOf(style.justify, 0, TextLayout::BEGIN);
    if (text.major == TextLayout::FIRST)
        text.major = TextLayout::BEGIN;
    text.minor = justifyOf(style.justify, 1, TextLayout::FIRST);
    text.horizontal = style.horizontal.getValue();
    text.leftToRight = style.leftToRight.getValue();
    text.topToBottom = style.topToBottom.getValue();
}

} // namespace

SO_NODE_SOURCE(SoVRMLText)

SoVRMLText::SoVRMLText()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(fontStyle);
    SO_VRML_EXPOSED_EMPTY(length);
    SO_VRML_EXPOSED(maxExtent, (0.0f));
    SO_VRML_EXPOSED_EMPTY(string);
}

SoVRMLText::~SoVRMLText() = default;

void SoVRMLText::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLText, SoVRMLGeometry, "VRMLText");
}

void SoVRMLText::fillLayout(TextLayout& text) const
{
    text.font.size = 1;
    const SoNode* style = SoVRMLProtoInstance::resolve(fontStyle.getValue());
    if (style && style->isOfType(SoVRMLFontStyle::getClassTypeId()))
        setStyle(*static_cast<const SoVRMLFontStyle*>(style), text);
    text.lines = string.values();
    text.lengths = length.values();
    text.maxExtent = maxExtent.getValue();
}

void SoVRMLText::buildGeometry(SoState*, SoGeometry& geometry)
{
    TextLayout text;
    fillLayout(text);
    text.build(geometry);
}

std::unique_ptr<SoDetail> SoVRMLText::createDetail(SoState*, const SoGeometry& geometry, Primitive,
                                                   std::size_t index, const SbVec3f& point)
{
    TextLayout text;
    fillLayout(text);
    return text.createDetail(geometry, index, SbVec2f(point[0], point[1]));
}
