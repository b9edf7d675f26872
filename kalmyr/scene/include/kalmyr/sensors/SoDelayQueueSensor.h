#pragma once

#include <kalmyr/sensors/SoSensor.h>

#include <cstdint>

/// A sensor triggered when the delay queue is processed, once however often it was scheduled.
///
/// Priority 0 means immediately: inside the call that made the change, right after the
/// notification walk. Higher numbers run later within one processing of the queue.
class KALMYR_API SoDelayQueueSensor : public SoSensor {
public:
    static constexpr std::uint32_t kDefaultPriority = 100;

    using SoSensor::SoSensor;
    ~SoDelayQueueSensor() override;

    void setPriority(std::uint32_t priority) { m_priority = priority; }
    std::uint32_t getPriority() const { return m_priority; }
    static std::uint32_t getDefaultPriority() { return kDefaultPriority; }

    void schedule() override;
    void unschedule() override;
    bool isScheduled() const override { return m_scheduled; }
    /// True for idle sensors: run only when nothing else is pending.
    virtual bool isIdleOnly() const { return false; }
    void trigger() override;

private:
    friend class SoSensorManager;
    std::uint32_t m_priority = kDefaultPriority;
    bool m_scheduled = false;
    bool m_running = false;     ///< immediate, inside its callback
    bool m_again = false;       ///< scheduled there; its turn comes after it
    std::uint64_t m_ticket = 0; ///< place in the queue; SoSensorManager's own
};

/// Runs once, the next time the delay queue is processed.
class KALMYR_API SoOneShotSensor final : public SoDelayQueueSensor {
public:
    using SoDelayQueueSensor::SoDelayQueueSensor;
};

/// Runs once when the application is idle.
class KALMYR_API SoIdleSensor final : public SoDelayQueueSensor {
public:
    using SoDelayQueueSensor::SoDelayQueueSensor;
    bool isIdleOnly() const override { return true; }
};
