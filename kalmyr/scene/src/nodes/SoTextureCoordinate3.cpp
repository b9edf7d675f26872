#include <kalmyr/nodes/SoTextureCoordinate3.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinate3)

SoTextureCoordinate3::SoTextureCoordinate3()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoTextureCoordinate3::~SoTextureCoordinate3() = default;

void SoTextureCoordinate3::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinate3, SoNode, "TextureCoordinate3");
}

void SoTextureCoordinate3::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (point.isIgnored())
        return;
    SoLookExtrasElement::setCoordinates(state, this, SoTextureStage::GIVEN);
    SoTextureCoordinateSetsElement::add(state, this,
                                        {SoTextureUnitElement::get(state), {}, point.values()});
}
