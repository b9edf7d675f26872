#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>

#include <cstdint>

class SoDelayQueueSensor;
class SoTimerQueueSensor;

/// The process-wide sensor queues. A binding (Qt) or the host processes them; one that wants to
/// know when there is something to do sets the changed callback.
class KALMYR_API SoSensorManager {
public:
    /// Called when a sensor was queued or a queue's next time changed. May be called inside a
    /// notification walk: only arm a timer there.
    static void setChangedCallback(void (*function)(void* data), void* data);

    static bool isDelaySensorPending();
    static bool isIdleSensorPending();
    /// True with the time of the next timer when one is scheduled.
    static bool isTimerSensorPending(SbTime& next);

    /// Runs the delay queue by priority; sensors scheduled meanwhile with the same or a lower
    /// priority run in the same pass at most once each. `idle` also runs the idle sensors.
    static void processDelayQueue(bool idle);
    /// Runs every timer whose time has come.
    static void processTimerQueue();
    /// Runs the priority 0 sensors collected by a walk. Called by the notification.
    static void processImmediateQueue();
    /// Number of the cascade: of all that sensors of priority 0 do inside one call, one after
    /// another.
    static std::uint64_t getCascade();

    static void init();

private:
    friend class SoDelayQueueSensor;
    friend class SoTimerQueueSensor;
    static void runImmediate(SoDelayQueueSensor* sensor);
    static void forgetRunning(const SoDelayQueueSensor* sensor);
    static void insert(SoDelayQueueSensor* sensor);
    static void remove(SoDelayQueueSensor* sensor);
    static void insert(SoTimerQueueSensor* sensor);
    static void remove(SoTimerQueueSensor* sensor);
};
