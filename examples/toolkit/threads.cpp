// Reads files in a thread of its own and hands them over to the thread that serves the sensors.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <cstdio>
#include <string_view>
#include <thread>

namespace {

constexpr std::string_view kText =
    "#VRML V2.0 utf8\n"
    "DEF T TimeSensor { loop TRUE }\n"
    "DEF P PositionInterpolator { key [0 1] keyValue [0 0 0 1 0 0] }\n"
    "DEF X Transform { children Shape { geometry Box { } } }\n"
    "ROUTE T.fraction_changed TO P.set_fraction\n"
    "ROUTE P.value_changed TO X.set_translation\n";

/// The graph is this thread's alone, and needs no lock, until the lock is given up.
void load(SoSeparator* root)
{
    SoInput in;
    in.setBuffer(kText.data(), kText.size());
    SoRef<SoSeparator> part(SoDB::readAll(&in));
    const SoWriteLock lock;
    if (part && lock)
        root->addChild(part.get());
    part.reset(); // under the lock: it may have been the last reference
}

} // namespace

int main()
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    int changes = 0;
    SoNodeSensor sensor([](void* count, SoSensor*) { ++*static_cast<int*>(count); }, &changes);
    sensor.attach(root.get());

    std::thread loader(load, root.get());
    while (changes < 3) { // the arrival, and two ticks of the clock that came with it
        const SoReadLock lock;
        SoSensorManager::processTimerQueue();
        SoSensorManager::processDelayQueue(true);
    }
    loader.join();
    std::printf("%d part, %s\n", root->getNumChildren(), changes >= 3 ? "moving" : "still");
    return 0;
}
