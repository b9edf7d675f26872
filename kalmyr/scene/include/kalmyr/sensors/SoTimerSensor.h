#pragma once

#include <kalmyr/base/SbTime.h>
#include <kalmyr/sensors/SoSensor.h>

/// A sensor triggered at a time: the timer queue's common part.
class KALMYR_API SoTimerQueueSensor : public SoSensor {
public:
    using SoSensor::SoSensor;
    ~SoTimerQueueSensor() override;

    const SbTime& getTriggerTime() const { return m_time; }
    void unschedule() override;
    bool isScheduled() const override { return m_scheduled; }

protected:
    friend class SoSensorManager;
    void enqueue(const SbTime& when);
    SbTime m_time;
    bool m_scheduled = false;
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
    void setInterval(const SbTime& interval) { m_interval = interval; }
    const SbTime& getInterval() const { return m_interval; }
    void schedule() override { enqueue(SbTime::getTimeOfDay() + m_interval); }
    void trigger() override;

private:
    SbTime m_interval{1.0 / 30.0};
};
