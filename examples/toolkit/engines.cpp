// Lets a cube's width follow a stopwatch through a calculator, and watches it change.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCube.h>

#include <cstdio>

int main()
{
    SoDB::init();
    const SoRef<SoCube> cube(new SoCube);
    auto* watch = new SoElapsedTime; // kept alive by what follows it
    auto* wave = new SoCalculator;
    wave->expression.setValue(SbString("oa = 2 + sin(a * M_PI)"));
    wave->a.connectFrom(&watch->timeOut); // a time becomes a number
    cube->width.connectFrom(&wave->oa);   // the first of many values
    if (!wave->b.connectFrom(&wave->oa))  // posts what would go round
        std::puts("an engine cannot feed itself");

    int changes = 0;
    SoFieldSensor sensor([](void* count, SoSensor*) { ++*static_cast<int*>(count); }, &changes);
    sensor.attach(&cube->width);
    while (changes < 3) {
        SoSensorManager::processTimerQueue(); // a binding does this in its event loop
        SoSensorManager::processDelayQueue(true);
    }
    std::printf("the cube is %s wide\n", cube->width.getValue() >= 2 ? "at least 2" : "less");
    return 0;
}
