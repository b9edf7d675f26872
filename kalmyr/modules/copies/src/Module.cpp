#include <kalmyr/copies/SoArray.h>
#include <kalmyr/copies/SoCopyDetail.h>
#include <kalmyr/copies/SoMultipleCopy.h>

// The functions that the module tool looks up in the library of an optional module.

extern "C" KALMYR_VISIBLE void kalmyrInitModule()
{
    SoCopyDetail::initClass();
    SoCopies::initClass();
    SoMultipleCopy::initClass();
    SoArray::initClass();
}

extern "C" KALMYR_VISIBLE void kalmyrFinishModule()
{
    SoType::removeType(SoArray::getClassTypeId());
    SoType::removeType(SoMultipleCopy::getClassTypeId());
    SoType::removeType(SoCopies::getClassTypeId());
    SoType::removeType(SoCopyDetail::getClassTypeId());
}
