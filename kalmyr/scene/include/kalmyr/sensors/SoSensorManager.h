#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>

#include <cstdint>

class SoDelayQueueSensor;
class SoTimerQueueSensor;

/// The queues of the sensors that wait. Every thread has queues of its own; a binding (Qt) or the
/// host processes those of the application, and one that wants to know when there is something to
/// do sets the changed callback. All functions are about the calling thread's queues.
///
/// The application's thread is the one that set the changed callback; while none has, the first
/// that processes queues, and before that the one that called SoDB::init().
///
/// Whose queue a sensor waits in:
/// - A sensor of a thread that processes its queues waits there, whoever schedules it. It is the
///   sensor of the thread that made it or, for data sensors, attached it.
/// - Every other one waits in the queues of the thread that schedules it; in the application's if
///   that thread holds the database's write lock. So do sensors that are parts of nodes.
/// - What waits for a thread that never processed its queues passes to the application when the
///   thread gives up the write lock. What waits for any thread does so when it ends or calls
///   handOver().
class KALMYR_API SoSensorManager {
public:
    /// Called when the application's queues changed, in any thread, perhaps inside a notification
    /// walk and under locks: only wake the application's thread up there. Makes the calling thread
    /// the application's. Null: none; when that returns, no call is under way in another thread.
    static void setChangedCallback(void (*function)(void* data), void* data);

    static bool isDelaySensorPending();
    static bool isIdleSensorPending();
    /// True with the time of the next timer when one is scheduled.
    static bool isTimerSensorPending(SbTime& next);

    /// Runs the delay queue by priority; sensors that are scheduled meanwhile wait for the next
    /// call. `idle` also runs the idle sensors.
    static void processDelayQueue(bool idle);
    /// Runs every timer whose time has come; those that are scheduled meanwhile wait for the next
    /// call.
    static void processTimerQueue();
    /// Runs the priority 0 sensors collected by a walk. Called by the notification.
    static void processImmediateQueue();

    /// Gives to the application what this thread keeps for its private graphs: waiting sensors, the
    /// stacks of bound nodes, and fields that follow `realTime`. For a thread that passes its
    /// graphs on without taking the write lock; call it first, and leave the graphs alone
    /// afterwards. Does nothing in the application's thread.
    static void handOver();
    /// Whether the calling thread is the application's.
    static bool isApplicationThread();

    /// Number of the cascade: of all that sensors of priority 0 do inside one call, one after
    /// another. No other thread has the same.
    static std::uint64_t getCascade();

    static void init();

private:
    friend class SoDelayQueueSensor;
    friend class SoTimerQueueSensor;
    static void runImmediate(SoDelayQueueSensor* sensor);
    static void forgetRunning(const SoDelayQueueSensor* sensor);
    static void insertImmediate(SoDelayQueueSensor* sensor);
    static void insert(SoDelayQueueSensor* sensor);
    static void remove(SoDelayQueueSensor* sensor);
    static void insert(SoTimerQueueSensor* sensor, const SbTime& when);
    static void remove(SoTimerQueueSensor* sensor);
};
