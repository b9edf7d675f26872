#include <kalmyr/manips/SoClipPlaneManip.h>
#include <kalmyr/manips/SoDirectionalLightManip.h>
#include <kalmyr/manips/SoPointLightManip.h>
#include <kalmyr/manips/SoRotateManip.h>
#include <kalmyr/manips/SoScaleManip.h>
#include <kalmyr/manips/SoSpotLightManip.h>
#include <kalmyr/manips/SoTransformManip.h>
#include <kalmyr/manips/SoTranslateManip.h>

#include <iterator>

// The functions that the module tool looks up in the library of an optional module.

namespace {

/// Ancestors first.
constexpr struct {
    void (*init)();
    SoType (*type)();
} kClasses[] = {
    {SoTransformManip::initClass, SoTransformManip::getClassTypeId},
    {SoTranslateManip::initClass, SoTranslateManip::getClassTypeId},
    {SoRotateManip::initClass, SoRotateManip::getClassTypeId},
    {SoScaleManip::initClass, SoScaleManip::getClassTypeId},
    {SoDirectionalLightManip::initClass, SoDirectionalLightManip::getClassTypeId},
    {SoPointLightManip::initClass, SoPointLightManip::getClassTypeId},
    {SoSpotLightManip::initClass, SoSpotLightManip::getClassTypeId},
    {SoClipPlaneManip::initClass, SoClipPlaneManip::getClassTypeId},
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
