#include <kalmyr/nodes/SoBaseColor.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

SO_NODE_SOURCE(SoBaseColor)

SoBaseColor::SoBaseColor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(rgb, (0.8f, 0.8f, 0.8f));
}

SoBaseColor::~SoBaseColor() = default;

void SoBaseColor::initClass()
{
    SO_NODE_INIT_CLASS(SoBaseColor, SoNode, "BaseColor");
}

void SoBaseColor::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (rgb.isIgnored() || rgb.getNum() == 0)
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL))
        return;
    auto& element = state->write<SoMaterialElement>();
    element.value().diffuse = rgb.getValues();
    element.value().numDiffuse = rgb.getNum();
    element.accumulatedBy(this);
}
