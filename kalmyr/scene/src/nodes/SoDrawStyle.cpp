#include <kalmyr/nodes/SoDrawStyle.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

constexpr SoEnumEntry kStyles[] = {
    {"FILLED", SoDrawStyle::FILLED},
    {"LINES", SoDrawStyle::LINES},
    {"POINTS", SoDrawStyle::POINTS},
    {"INVISIBLE", SoDrawStyle::INVISIBLE},
};

} // namespace

SO_NODE_SOURCE(SoDrawStyle)

SoDrawStyle::SoDrawStyle()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(style, (FILLED));
    style.setEnums(kStyles);
    SO_ADD_FIELD(pointSize, (0.0f));
    SO_ADD_FIELD(lineWidth, (0.0f));
    SO_ADD_FIELD(linePattern, (static_cast<unsigned short>(0xffff)));
}

SoDrawStyle::~SoDrawStyle() = default;

void SoDrawStyle::initClass()
{
    SO_NODE_INIT_CLASS(SoDrawStyle, SoNode, "DrawStyle");
}

void SoDrawStyle::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::DRAW_STYLE))
        return;
    auto& element = state->write<SoDrawStyleElement>();
    auto& v = element.value();
    if (!style.isIgnored())
        v.style = static_cast<SoDrawStyleValues::Style>(style.getValue());
    if (!pointSize.isIgnored())
        v.pointSize = pointSize.getValue();
    if (!lineWidth.isIgnored())
        v.lineWidth = lineWidth.getValue();
    if (!linePattern.isIgnored())
        v.linePattern = linePattern.getValue();
    element.accumulatedBy(this);
}
