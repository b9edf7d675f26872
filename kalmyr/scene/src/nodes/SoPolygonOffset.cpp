#include <kalmyr/nodes/SoPolygonOffset.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

namespace {

constexpr SoEnumEntry kStyles[] = {
    {"FILLED", SoPolygonOffset::FILLED},
    {"LINES", SoPolygonOffset::LINES},
    {"POINTS", SoPolygonOffset::POINTS},
};

} // namespace

SO_NODE_SOURCE(SoPolygonOffset)

SoPolygonOffset::SoPolygonOffset()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(factor, (1.0f));
    SO_ADD_FIELD(units, (1.0f));
    SO_ADD_FIELD(styles, (FILLED));
    styles.setEnums(kStyles);
    SO_ADD_FIELD(on, (true));
}

SoPolygonOffset::~SoPolygonOffset() = default;

void SoPolygonOffset::initClass()
{
    SO_NODE_INIT_CLASS(SoPolygonOffset, SoNode, "PolygonOffset");
}

void SoPolygonOffset::doAction(SoAction* action)
{
    SoLookExtras& extras = SoLookExtrasElement::edit(action->getState(), this);
    extras.offsetFactor = factor.getValue();
    extras.offsetUnits = units.getValue();
    extras.offsetStyles = on.getValue() ? static_cast<unsigned>(styles.getValue()) : 0u;
}
