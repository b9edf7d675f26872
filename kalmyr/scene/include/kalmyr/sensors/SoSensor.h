#pragma once

#include <kalmyr/base/Export.h>

class SoSensor;

/// Called when a sensor triggers, with the data given at its construction.
using SoSensorCB = void(void* data, SoSensor* sensor);

/// Something that calls back when an event happens: a change of data, or a time.
///
/// A sensor may be detached, re-attached or deleted inside any callback, its own included. In which
/// thread it calls back: SoSensorManager.
class KALMYR_API SoSensor {
public:
    explicit SoSensor(SoSensorCB* function = nullptr, void* data = nullptr)
        : m_function(function), m_data(data)
    {
    }
    virtual ~SoSensor() = default;
    SoSensor(const SoSensor&) = delete;
    SoSensor& operator=(const SoSensor&) = delete;

    void setFunction(SoSensorCB* function) { m_function = function; }
    SoSensorCB* getFunction() const { return m_function; }
    void setData(void* data) { m_data = data; }
    void* getData() const { return m_data; }

    /// Puts the sensor into its queue (idempotent); takes it out.
    virtual void schedule() = 0;
    virtual void unschedule() = 0;
    virtual bool isScheduled() const = 0;

    /// Calls the callback. The queues call it; the sensor may be gone when it returns.
    virtual void trigger();

protected:
    SoSensorCB* m_function;
    void* m_data;
};
