#include <kalmyr/nodes/SoTextureCoordinate2.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinate2)

SoTextureCoordinate2::SoTextureCoordinate2()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoTextureCoordinate2::~SoTextureCoordinate2() = default;

void SoTextureCoordinate2::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinate2, SoNode, "TextureCoordinate2");
}

void SoTextureCoordinate2::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (point.isIgnored())
        return;
    const int unit = SoTextureUnitElement::get(state);
    SoLookExtrasElement::setCoordinates(state, this, SoTextureStage::GIVEN);
    if (unit == 0)
        state->write<SoTextureCoordinateElement>().set(this, point.values());
    else
        SoTextureCoordinateSetsElement::add(state, this, {unit, point.values(), {}});
}
