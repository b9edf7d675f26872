#include <kalmyr/engines/SoEnginesInit.h>

#include <kalmyr/engines/SoBoolOperation.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoCompose.h>
#include <kalmyr/engines/SoConcatenate.h>
#include <kalmyr/engines/SoCounter.h>
#include <kalmyr/engines/SoDecompose.h>
#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/engines/SoGate.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/engines/SoInterpolate.h>
#include <kalmyr/engines/SoOneShot.h>
#include <kalmyr/engines/SoOnOff.h>
#include <kalmyr/engines/SoSelectOne.h>
#include <kalmyr/engines/SoTimeCounter.h>
#include <kalmyr/engines/SoTriggerAny.h>

namespace {

template <class... Classes>
void initClasses()
{
    (Classes::initClass(), ...);
}

} // namespace

void kalmyr::initEngines()
{
    initClasses<SoGlobalField, SoTypedEngine, SoInterpolate>();
    kalmyr::detail::initRealTime();
    initClasses<SoElapsedTime, SoTimeCounter, SoOneShot, SoCounter, SoOnOff, SoTriggerAny>();
    initClasses<SoBoolOperation, SoGate, SoSelectOne, SoConcatenate, SoCalculator>();
    initClasses<SoComposeVec2f, SoComposeVec3f, SoComposeVec4f, SoComposeRotation,
                SoComposeRotationFromTo, SoComposeMatrix>();
    initClasses<SoDecomposeVec2f, SoDecomposeVec3f, SoDecomposeVec4f, SoDecomposeRotation,
                SoDecomposeMatrix>();
    initClasses<SoInterpolateFloat, SoInterpolateVec2f, SoInterpolateVec3f, SoInterpolateVec4f,
                SoInterpolateColor, SoInterpolateRotation>();
}
