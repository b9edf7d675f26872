#include <kalmyr/nodes/SoTextureCoordinateCube.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinateCube)

SoTextureCoordinateCube::SoTextureCoordinateCube()
{
    SO_NODE_CONSTRUCTOR(SoTextureCoordinateFunction);
}

SoTextureCoordinateCube::~SoTextureCoordinateCube() = default;

void SoTextureCoordinateCube::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinateCube, SoTextureCoordinateFunction,
                       "TextureCoordinateCube");
}

void SoTextureCoordinateCube::doAction(SoAction* action)
{
    SoLookExtrasElement::setCoordinates(action->getState(), this, SoTextureStage::REFLECTION);
}
