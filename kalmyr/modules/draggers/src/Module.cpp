#include <kalmyr/draggers/SoClipPlaneDragger.h>
#include <kalmyr/draggers/SoDirectionalLightDragger.h>
#include <kalmyr/draggers/SoDragger.h>
#include <kalmyr/draggers/SoDragHandle.h>
#include <kalmyr/draggers/SoMotionDragger.h>
#include <kalmyr/draggers/SoPlacedDragger.h>
#include <kalmyr/draggers/SoPointLightDragger.h>
#include <kalmyr/draggers/SoRotateAxisDragger.h>
#include <kalmyr/draggers/SoRotateCylindricalDragger.h>
#include <kalmyr/draggers/SoRotateDiscDragger.h>
#include <kalmyr/draggers/SoRotateSphericalDragger.h>
#include <kalmyr/draggers/SoScale1Dragger.h>
#include <kalmyr/draggers/SoScale2Dragger.h>
#include <kalmyr/draggers/SoScale3Dragger.h>
#include <kalmyr/draggers/SoScaleDragger.h>
#include <kalmyr/draggers/SoScaleUniformDragger.h>
#include <kalmyr/draggers/SoSpotLightDragger.h>
#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/draggers/SoTranslate1Dragger.h>
#include <kalmyr/draggers/SoTranslate2Dragger.h>
#include <kalmyr/draggers/SoTranslate3Dragger.h>
#include <kalmyr/draggers/SoTranslateDragger.h>

#include <iterator>

// The functions that the module tool looks up in the library of an optional module.

namespace {

/// Ancestors first.
constexpr struct {
    void (*init)();
    SoType (*type)();
} kClasses[] = {
    {SoDragHandle::initClass, SoDragHandle::getClassTypeId},
    {SoDragger::initClass, SoDragger::getClassTypeId},
    {SoMotionDragger::initClass, SoMotionDragger::getClassTypeId},
    {SoPlacedDragger::initClass, SoPlacedDragger::getClassTypeId},
    {SoTranslateDragger::initClass, SoTranslateDragger::getClassTypeId},
    {SoRotateAxisDragger::initClass, SoRotateAxisDragger::getClassTypeId},
    {SoScaleDragger::initClass, SoScaleDragger::getClassTypeId},
    {SoTranslate1Dragger::initClass, SoTranslate1Dragger::getClassTypeId},
    {SoTranslate2Dragger::initClass, SoTranslate2Dragger::getClassTypeId},
    {SoTranslate3Dragger::initClass, SoTranslate3Dragger::getClassTypeId},
    {SoRotateCylindricalDragger::initClass, SoRotateCylindricalDragger::getClassTypeId},
    {SoRotateDiscDragger::initClass, SoRotateDiscDragger::getClassTypeId},
    {SoRotateSphericalDragger::initClass, SoRotateSphericalDragger::getClassTypeId},
    {SoScale1Dragger::initClass, SoScale1Dragger::getClassTypeId},
    {SoScale2Dragger::initClass, SoScale2Dragger::getClassTypeId},
    {SoScale3Dragger::initClass, SoScale3Dragger::getClassTypeId},
    {SoScaleUniformDragger::initClass, SoScaleUniformDragger::getClassTypeId},
    {SoTransformDragger::initClass, SoTransformDragger::getClassTypeId},
    {SoDirectionalLightDragger::initClass, SoDirectionalLightDragger::getClassTypeId},
    {SoPointLightDragger::initClass, SoPointLightDragger::getClassTypeId},
    {SoSpotLightDragger::initClass, SoSpotLightDragger::getClassTypeId},
    {SoClipPlaneDragger::initClass, SoClipPlaneDragger::getClassTypeId},
};

} // namespace

extern "C" KALMYR_VISIBLE void kalmyrInitModule()
{
    for (const auto& one : kClasses)
        one.init();
}

extern "C" KALMYR_VISIBLE void kalmyrFinishModule()
{
    for (auto one = std::rbegin(kClasses); one != std::rend(kClasses); ++one)
        SoType::removeType(one->type());
}
