#include <kalmyr/lights/SoLightsInit.h>

#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/lights/SoSpotLight.h>

void kalmyr::initLights()
{
    SoLight::initClass();
    SoDirectionalLight::initClass();
    SoPointLight::initClass();
    SoSpotLight::initClass();
}
