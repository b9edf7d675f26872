#include <kalmyr/manips/SoDirectionalLightManip.h>
#include <kalmyr/manips/SoPointLightManip.h>
#include <kalmyr/manips/SoSpotLightManip.h>
#include <kalmyr/manips/SoTransformManip.h>

// What the module tool looks for in the library of an optional module.

extern "C" KALMYR_VISIBLE void kalmyrInitModule()
{
    SoTransformManip::initClass();
    SoPointLightManip::initClass();
    SoDirectionalLightManip::initClass();
    SoSpotLightManip::initClass();
}

extern "C" KALMYR_VISIBLE void kalmyrFinishModule()
{
    SoType::removeType(SoSpotLightManip::getClassTypeId());
    SoType::removeType(SoDirectionalLightManip::getClassTypeId());
    SoType::removeType(SoPointLightManip::getClassTypeId());
    SoType::removeType(SoTransformManip::getClassTypeId());
}
