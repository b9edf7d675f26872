#include "ConvertedText.h"

#include <kalmyr/elements/SoFontElement.h>
#include <kalmyr/nodes/SoFontStyle.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/shapes/SoAsciiText.h>
#include <kalmyr/vrml/SoVRMLFontStyle.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLText.h>

#include <vector>

namespace kalmyr::detail {

namespace {

template <class Values>
void fill(SoMFString& field, const Values& values)
{
    field.setValues(0, {values.data(), values.size()});
}

const char* familyOf(const SoFontValues& font)
{
    return font.family == SoFontValues::SANS         ? "SANS"
           : font.family == SoFontValues::TYPEWRITER ? "TYPEWRITER"
                                                     : "SERIF";
}

SoNode* fontStyle(const SoFontValues& font, const SoAsciiText& text)
{
    auto* made = new SoVRMLFontStyle;
    std::vector<SbString> families;
    if (!font.name.isEmpty())
        families.emplace_back(font.name.getString());
    families.emplace_back(familyOf(font));
    fill(made->family, families);
    const bool bold = font.style & SoFontValues::BOLD, italic = font.style & SoFontValues::ITALIC;
    if (bold || italic)
        made->style = SbString(bold && italic ? "BOLDITALIC" : bold ? "BOLD" : "ITALIC");
    made->size = font.size;
    made->spacing = text.spacing.getValue();
    const int justification = text.justification.getValue();
    if (justification != SoAsciiText::LEFT)
        made->justify = SbString(justification == SoAsciiText::RIGHT ? "END" : "MIDDLE");
    return made;
}

/// What VRML 1.0 has words for.
bool isPlain(const SoVRMLFontStyle& style)
{
    const bool rows =
        style.horizontal.getValue() && style.leftToRight.getValue() && style.topToBottom.getValue();
    return rows && (style.justify.getNum() < 2 || style.justify[1] == "FIRST");
}

int justificationOf(const SoMFString& justify)
{
    if (justify.getNum() == 0)
        return SoAsciiText::LEFT;
    return justify[0] == "END"      ? SoAsciiText::RIGHT
           : justify[0] == "MIDDLE" ? SoAsciiText::CENTER
                                    : SoAsciiText::LEFT;
}

int styleOf(const SbString& style)
{
    const std::string_view word = style.view();
    return (word.find("BOLD") != word.npos ? SoFontStyle::BOLD : 0)
           | (word.find("ITALIC") != word.npos ? SoFontStyle::ITALIC : 0);
}

} // namespace

SoNode* vrml97Text(const SoShape* shape, SoState* state)
{
    if (!shape->isOfType(SoAsciiText::getClassTypeId()))
        return nullptr;
    const auto* from = static_cast<const SoAsciiText*>(shape);
    auto* made = new SoVRMLText;
    fill(made->string, from->string.values());
    const auto lengths = from->width.values();
    if (!from->width.isDefault())
        made->length.setValues(0, {lengths.data(), lengths.size()});
    made->fontStyle = fontStyle(SoFontElement::get(state), *from);
    return made;
}

bool addVrml1Text(SoGroup& group, const SoShape* shape, SoState* state)
{
    if (shape->isOfType(SoAsciiText::getClassTypeId())) {
        const SoFontValues& font = SoFontElement::get(state);
        auto* style = new SoFontStyle;
        style->family = font.family;
        style->style = font.style;
        style->size = font.size;
        group.addChild(style);
        group.addChild(const_cast<SoShape*>(shape));
        return true;
    }
    if (!shape->isOfType(SoVRMLText::getClassTypeId()))
        return false;
    const auto* from = static_cast<const SoVRMLText*>(shape);
    const SoNode* node = SoVRMLProtoInstance::resolve(from->fontStyle.getValue());
    const bool known = node && node->isOfType(SoVRMLFontStyle::getClassTypeId());
    const auto* look = known ? static_cast<const SoVRMLFontStyle*>(node) : nullptr;
    if (from->maxExtent.getValue() > 0 || (look && !isPlain(*look)))
        return false;
    auto* style = new SoFontStyle;
    auto* text = new SoAsciiText;
    group.addChild(style);
    group.addChild(text);
    style->size = look ? look->size.getValue() : 1.0f;
    fill(text->string, from->string.values());
    const auto lengths = from->length.values();
    if (!lengths.empty())
        text->width.setValues(0, {lengths.data(), lengths.size()});
    if (!look)
        return true;
    const SbString family = look->family.getNum() > 0 ? look->family[0] : SbString();
    style->family = family == "SANS"         ? SoFontStyle::SANS
                    : family == "TYPEWRITER" ? SoFontStyle::TYPEWRITER
                                             : SoFontStyle::SERIF;
    style->style = styleOf(look->style.getValue());
    text->spacing = look->spacing.getValue();
    text->justification = justificationOf(look->justify);
    return true;
}

} // namespace kalmyr::detail
