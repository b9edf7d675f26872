#include <kalmyr/lights/SoLight.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

SO_NODE_SOURCE(SoLight)

SoLight::SoLight()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(on, (true));
    SO_ADD_FIELD(intensity, (1.0f));
    SO_ADD_FIELD(color, (1.0f, 1.0f, 1.0f));
}

SoLight::~SoLight() = default;

void SoLight::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoLight, SoNode, "Light");
}

void SoLight::doAction(SoAction* action)
{
    if (!on.isIgnored() && !on.getValue())
        return;
    SoState* state = action->getState();
    SoLightRecord record;
    record.toWorld = SoModelMatrixElement::get(state);
    if (!color.isIgnored())
        record.color = color.getValue();
    if (!intensity.isIgnored())
        record.intensity = intensity.getValue();
    // The environment counts from the quadratic factor down, the record from the constant one up.
    const SbVec3f& weakening = state->get<SoEnvironmentElement>().value().attenuation;
    record.attenuation = SbVec3f(weakening[2], weakening[1], weakening[0]);
    describe(record);
    SoLightElement::add(state, this, record);
}
