#pragma once

#include <kalmyr/base/SbTime.h>
#include <kalmyr/sensors/SoSensor.h>

#include <atomic>
#include <cstdint>

struct SoSensorQueues;

/// A sensor triggered at a time: the timer queue's common part.
class KALMYR_API SoTimerQueueSensor : public SoSensor {
public:
    explicit SoTimerQueueSensor(SoSensorCB* function = nullptr, void* data = nullptr);
    ~SoTimerQueueSensor() override;

    const SbTime& getTriggerTime() const { return m_time; }
    void unschedule() override;
    bool isScheduled() const override { return m_scheduled.load(std::memory_order_relaxed); }

    /// For a sensor that is part of a node: it belongs to whoever owns the graph, not to the thread
    /// that made it.
    void setPartOfGraph() { m_owner = 0; }

protected:
    friend class SoSensorManager;
    /// Broken contract, with the sensor left unscheduled: a time that is no number.
    void enqueue(const SbTime& when);
    SbTime m_time;

private:
    friend struct SoSensorQueues;
    std::uint32_t m_owner; ///< number of the thread; 0 for that of the graph
    std::atomic<bool> m_scheduled{false};
    SoSensorQueues* m_queues = nullptr; ///< where it waits
    std::uint64_t m_ticket = 0;         ///< order among equal times
};

/// Triggers once at a set time.
class KALMYR_API SoAlarmSensor final : public SoTimerQueueSensor {
public:
    using SoTimerQueueSensor::SoTimerQueueSensor;
    void setTime(const SbTime& absolute) { m_alarm = absolute; }
    void setTimeFromNow(const SbTime& relative) { m_alarm = SbTime::getTimeOfDay() + relative; }
    void schedule() override { enqueue(m_alarm); }

private:
    SbTime m_alarm;
};

/// Triggers again and again at an interval until unscheduled. Late turns are dropped, not made up.
class KALMYR_API SoTimerSensor final : public SoTimerQueueSensor {
public:
    using SoTimerQueueSensor::SoTimerQueueSensor;
    /// The interval must be above zero; else it stays what it was.
    void setInterval(const SbTime& interval);
    const SbTime& getInterval() const { return m_interval; }
    void schedule() override;
    void trigger() override;

private:
    SbTime m_interval{1.0 / 30.0};
};
