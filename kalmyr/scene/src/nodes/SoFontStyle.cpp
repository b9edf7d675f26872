#include <kalmyr/nodes/SoFontStyle.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoFontElement.h>

namespace {

constexpr SoEnumEntry kFamilies[] = {{"SERIF", SoFontStyle::SERIF},
                                     {"SANS", SoFontStyle::SANS},
                                     {"TYPEWRITER", SoFontStyle::TYPEWRITER}};
constexpr SoEnumEntry kStyles[] = {
    {"NONE", SoFontStyle::NONE}, {"BOLD", SoFontStyle::BOLD}, {"ITALIC", SoFontStyle::ITALIC}};

} // namespace

SO_NODE_SOURCE(SoFontStyle)

SoFontStyle::SoFontStyle()
{
    SO_NODE_CONSTRUCTOR(SoFont);
    SO_ADD_FIELD(family, (SERIF));
    SO_ADD_FIELD(style, (NONE));
    family.setEnums(kFamilies);
    style.setEnums(kStyles);
}

SoFontStyle::~SoFontStyle() = default;

void SoFontStyle::initClass()
{
    SO_NODE_INIT_CLASS(SoFontStyle, SoFont, "FontStyle");
}

void SoFontStyle::doAction(SoAction* action)
{
    SoFont::doAction(action);
    SoFontValues font = SoFontElement::get(action->getState());
    if (!family.isIgnored())
        font.family = static_cast<SoFontValues::Family>(family.getValue());
    if (!style.isIgnored())
        font.style = style.getValue();
    action->getState()->write<SoFontElement>().set(this, font);
}
