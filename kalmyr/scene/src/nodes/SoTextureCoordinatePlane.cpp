#include <kalmyr/nodes/SoTextureCoordinatePlane.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

SO_NODE_SOURCE(SoTextureCoordinatePlane)

SoTextureCoordinatePlane::SoTextureCoordinatePlane()
{
    SO_NODE_CONSTRUCTOR(SoTextureCoordinateFunction);
    SO_ADD_FIELD(directionS, (1.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(directionT, (0.0f, 1.0f, 0.0f));
    SO_ADD_FIELD(directionR, (0.0f, 0.0f, 1.0f));
}

SoTextureCoordinatePlane::~SoTextureCoordinatePlane() = default;

void SoTextureCoordinatePlane::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinatePlane, SoTextureCoordinateFunction,
                       "TextureCoordinatePlane");
}

void SoTextureCoordinatePlane::doAction(SoAction* action)
{
    SoState* state = action->getState();
    SoLookExtrasElement::setCoordinates(state, this, SoTextureStage::GIVEN);
    SoTextureCoordinateSet set;
    set.unit = SoTextureUnitElement::get(state);
    set.isPlane = true;
    set.planes[0] = directionS.getValue();
    set.planes[1] = directionT.getValue();
    set.planes[2] = directionR.getValue();
    SoTextureCoordinateSetsElement::add(state, this, set);
}
