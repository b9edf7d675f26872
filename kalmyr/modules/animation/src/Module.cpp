#include <kalmyr/animation/SoBlinker.h>
#include <kalmyr/animation/SoPendulum.h>
#include <kalmyr/animation/SoRotor.h>
#include <kalmyr/animation/SoShuttle.h>

// The functions that the module tool looks up in the library of an optional module.

extern "C" KALMYR_VISIBLE void kalmyrInitModule()
{
    SoRotor::initClass();
    SoPendulum::initClass();
    SoShuttle::initClass();
    SoBlinker::initClass();
}

extern "C" KALMYR_VISIBLE void kalmyrFinishModule()
{
    SoType::removeType(SoBlinker::getClassTypeId());
    SoType::removeType(SoShuttle::getClassTypeId());
    SoType::removeType(SoPendulum::getClassTypeId());
    SoType::removeType(SoRotor::getClassTypeId());
}
