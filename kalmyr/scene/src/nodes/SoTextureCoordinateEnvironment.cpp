#include <kalmyr/nodes/SoTextureCoordinateEnvironment.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinateEnvironment)

SoTextureCoordinateEnvironment::SoTextureCoordinateEnvironment()
{
    SO_NODE_CONSTRUCTOR(SoTextureCoordinateFunction);
}

SoTextureCoordinateEnvironment::~SoTextureCoordinateEnvironment() = default;

void SoTextureCoordinateEnvironment::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinateEnvironment, SoTextureCoordinateFunction,
                       "TextureCoordinateEnvironment");
}

void SoTextureCoordinateEnvironment::doAction(SoAction* action)
{
    SoLookExtrasElement::setCoordinates(action->getState(), this, SoTextureStage::SPHERE);
}
