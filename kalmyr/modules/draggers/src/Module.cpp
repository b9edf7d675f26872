#include <kalmyr/draggers/SoRotateSphericalDragger.h>
#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/draggers/SoTranslate2Dragger.h>

// What the module tool looks for in the library of an optional module.

extern "C" KALMYR_VISIBLE void kalmyrInitModule()
{
    SoDragger::initClass();
    SoTranslate2Dragger::initClass();
    SoRotateSphericalDragger::initClass();
    SoTransformDragger::initClass();
}

extern "C" KALMYR_VISIBLE void kalmyrFinishModule()
{
    SoType::removeType(SoTransformDragger::getClassTypeId());
    SoType::removeType(SoRotateSphericalDragger::getClassTypeId());
    SoType::removeType(SoTranslate2Dragger::getClassTypeId());
    SoType::removeType(SoDragger::getClassTypeId());
}
