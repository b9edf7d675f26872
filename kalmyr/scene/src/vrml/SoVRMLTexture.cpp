#include <kalmyr/vrml/SoVRMLTexture.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLTexture)

SoVRMLTexture::SoVRMLTexture()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_FIELD(repeatS, (true));
    SO_VRML_FIELD(repeatT, (true));
}

SoVRMLTexture::~SoVRMLTexture() = default;

void SoVRMLTexture::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLTexture, SoNode, "VRMLTexture");
}

void SoVRMLTexture::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::TEXTURE))
        return;
    SoTextureValues values;
    values.image = getPicture();
    values.model = SoTextureValues::SURFACE;
    values.wrapS = repeatS.getValue() ? SoTextureValues::REPEAT : SoTextureValues::CLAMP;
    values.wrapT = repeatT.getValue() ? SoTextureValues::REPEAT : SoTextureValues::CLAMP;
    SoLookExtrasElement::setTexture(state, this, values);
}
