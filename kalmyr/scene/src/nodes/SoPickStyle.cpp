#include <kalmyr/nodes/SoPickStyle.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

constexpr SoEnumEntry kStyles[] = {
    {"SHAPE", SoPickStyle::SHAPE},
    {"BOUNDING_BOX", SoPickStyle::BOUNDING_BOX},
    {"UNPICKABLE", SoPickStyle::UNPICKABLE},
};

} // namespace

SO_NODE_SOURCE(SoPickStyle)

SoPickStyle::SoPickStyle()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(style, (SHAPE));
    style.setEnums(kStyles);
}

SoPickStyle::~SoPickStyle() = default;

void SoPickStyle::initClass()
{
    SO_NODE_INIT_CLASS(SoPickStyle, SoNode, "PickStyle");
}

void SoPickStyle::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (style.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::PICK_STYLE))
        return;
    const auto v = static_cast<SoPickStyleValue::Style>(style.getValue());
    state->write<SoPickStyleElement>().set(this, {v});
}
