#pragma once

#include <kalmyr/sensors/SoSensor.h>

#include <atomic>
#include <cstdint>

struct SoSensorQueues;

/// A sensor triggered when the delay queue is processed, once however often it was scheduled.
///
/// Priority 0 means immediately: inside the call that made the change, in its thread, right after
/// the notification walk. Higher numbers run later within one processing of the queue.
class KALMYR_API SoDelayQueueSensor : public SoSensor {
public:
    static constexpr std::uint32_t kDefaultPriority = 100;

    explicit SoDelayQueueSensor(SoSensorCB* function = nullptr, void* data = nullptr);
    ~SoDelayQueueSensor() override;

    /// Of a sensor that waits: from the next time on.
    void setPriority(std::uint32_t priority) { m_priority = priority; }
    std::uint32_t getPriority() const { return m_priority; }
    static std::uint32_t getDefaultPriority() { return kDefaultPriority; }

    void schedule() override;
    void unschedule() override;
    bool isScheduled() const override { return m_scheduled.load(std::memory_order_relaxed); }
    /// True for idle sensors: run only when nothing else is pending.
    virtual bool isIdleOnly() const { return false; }
    void trigger() override;

    /// For a sensor that is part of a node: it belongs to whoever owns the graph, not to the thread
    /// that made it.
    void setPartOfGraph() { m_owner = 0; }

protected:
    /// Makes it a sensor of the calling thread.
    void takeOwnership();

private:
    friend class SoSensorManager;
    friend struct SoSensorQueues;
    std::uint32_t m_priority = kDefaultPriority;
    std::uint32_t m_owner; ///< number of the thread; 0 for that of the graph
    std::atomic<bool> m_scheduled{false};
    bool m_running = false;             ///< immediate, inside its callback
    bool m_again = false;               ///< scheduled there; its turn comes after it
    std::uint32_t m_queuedPriority = 0; ///< the one it waits with
    SoSensorQueues* m_queues = nullptr; ///< where it waits; null for the immediate queue
    std::uint64_t m_ticket = 0;         ///< place in the queue; SoSensorManager's own
    std::uint64_t m_runningAt = 0;      ///< place among those inside their callbacks
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
