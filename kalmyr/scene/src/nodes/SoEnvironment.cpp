#include <kalmyr/nodes/SoEnvironment.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLightElement.h>

namespace {

constexpr SoEnumEntry kFogTypes[] = {
    {"NONE", SoEnvironment::NONE},
    {"HAZE", SoEnvironment::HAZE},
    {"FOG", SoEnvironment::FOG},
    {"SMOKE", SoEnvironment::SMOKE},
};

} // namespace

SO_NODE_SOURCE(SoEnvironment)

SoEnvironment::SoEnvironment()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(ambientIntensity, (0.2f));
    SO_ADD_FIELD(ambientColor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(attenuation, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(fogType, (NONE));
    fogType.setEnums(kFogTypes);
    SO_ADD_FIELD(fogColor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(fogVisibility, (0.0f));
}

SoEnvironment::~SoEnvironment() = default;

void SoEnvironment::initClass()
{
    SO_NODE_INIT_CLASS(SoEnvironment, SoNode, "Environment");
}

void SoEnvironment::doAction(SoAction* action)
{
    auto& element = action->getState()->write<SoEnvironmentElement>();
    auto& v = element.value();
    if (!ambientIntensity.isIgnored())
        v.ambientIntensity = ambientIntensity.getValue();
    if (!ambientColor.isIgnored())
        v.ambientColor = ambientColor.getValue();
    if (!attenuation.isIgnored())
        v.attenuation = attenuation.getValue();
    if (!fogType.isIgnored())
        v.fogType = static_cast<SoEnvironmentValues::Fog>(fogType.getValue());
    if (!fogColor.isIgnored())
        v.fogColor = fogColor.getValue();
    if (!fogVisibility.isIgnored())
        v.fogVisibility = fogVisibility.getValue();
    element.accumulatedBy(this);
}
