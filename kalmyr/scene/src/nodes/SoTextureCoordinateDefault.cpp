#include <kalmyr/nodes/SoTextureCoordinateDefault.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinateDefault)

SoTextureCoordinateDefault::SoTextureCoordinateDefault()
{
    SO_NODE_CONSTRUCTOR(SoTextureCoordinateFunction);
}

SoTextureCoordinateDefault::~SoTextureCoordinateDefault() = default;

void SoTextureCoordinateDefault::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinateDefault, SoTextureCoordinateFunction,
                       "TextureCoordinateDefault");
}

void SoTextureCoordinateDefault::doAction(SoAction* action)
{
    SoState* state = action->getState();
    SoLookExtrasElement::setCoordinates(state, this, SoTextureStage::GIVEN);
    if (SoTextureUnitElement::get(state) == 0)
        state->write<SoTextureCoordinateElement>().set(this, {});
}
