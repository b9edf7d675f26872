#include <kalmyr/nodes/SoFont.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoFontElement.h>

SO_NODE_SOURCE(SoFont)

SoFont::SoFont()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, ("defaultFont"));
    SO_ADD_FIELD(size, (10.0f));
}

SoFont::~SoFont() = default;

void SoFont::initClass()
{
    SO_NODE_INIT_CLASS(SoFont, SoNode, "Font");
}

void SoFont::doAction(SoAction* action)
{
    SoFontValues font = SoFontElement::get(action->getState());
    if (!name.isIgnored())
        font.name = name.isDefault() ? SbName() : name.getValue();
    if (!size.isIgnored())
        font.size = size.getValue();
    action->getState()->write<SoFontElement>().set(this, font);
}
