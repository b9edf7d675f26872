#include <kalmyr/vrml/SoVRMLLight.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLLight)

SoVRMLLight::SoVRMLLight()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(ambientIntensity, (0.0f));
    SO_VRML_EXPOSED(color, (1.0f, 1.0f, 1.0f));
    SO_VRML_EXPOSED(intensity, (1.0f));
    SO_VRML_EXPOSED(on, (true));
}

SoVRMLLight::~SoVRMLLight() = default;

void SoVRMLLight::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLLight, SoNode, "VRMLLight");
}

void SoVRMLLight::doAction(SoAction* action)
{
    SoLightRecord record;
    if (getRecord(action->getState(), record))
        SoLightElement::add(action->getState(), this, record);
}

bool SoVRMLLight::getRecord(SoState* state, SoLightRecord& record) const
{
    if (!on.isIgnored() && !on.getValue())
        return false;
    record.toWorld = SoModelMatrixElement::get(state);
    if (!color.isIgnored())
        record.color = color.getValue();
    if (!intensity.isIgnored())
        record.intensity = intensity.getValue();
    if (!ambientIntensity.isIgnored())
        record.ambientIntensity = ambientIntensity.getValue();
    describe(record);
    return true;
}
