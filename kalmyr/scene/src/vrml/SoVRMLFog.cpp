#include <kalmyr/vrml/SoVRMLFog.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLFog)

SoVRMLFog::SoVRMLFog()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED(color, (1.0f, 1.0f, 1.0f));
    SO_VRML_EXPOSED(fogType, ("LINEAR"));
    SO_VRML_EXPOSED(visibilityRange, (0.0f));
}

SoVRMLFog::~SoVRMLFog() = default;

void SoVRMLFog::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLFog, SoVRMLBindable, "VRMLFog");
}

SoFogValues SoVRMLFog::getValues() const
{
    if (!(visibilityRange.getValue() > 0))
        return {};
    const bool even = fogType.getValue() != "EXPONENTIAL";
    return {even ? SoEnvironmentValues::HAZE : SoEnvironmentValues::EXPONENTIAL, color.getValue(),
            visibilityRange.getValue()};
}

void SoVRMLFog::doAction(SoAction* action)
{
    if (!isInForce())
        return;
    const SoFogValues fog = getValues();
    auto& element = action->getState()->write<SoEnvironmentElement>();
    SoEnvironmentValues values = element.value();
    values.fogType = fog.type;
    values.fogColor = fog.color;
    values.fogVisibility = fog.visibility;
    element.set(this, values);
}
