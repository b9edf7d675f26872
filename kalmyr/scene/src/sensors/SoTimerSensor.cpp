#include <kalmyr/sensors/SoTimerSensor.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include "core/Threads.h"

#include <cmath>
#include <limits>

SoTimerQueueSensor::SoTimerQueueSensor(SoSensorCB* function, void* data)
    : SoSensor(function, data), m_owner(kalmyr::detail::threadNumber())
{
}

SoTimerQueueSensor::~SoTimerQueueSensor()
{
    unschedule();
}

void SoTimerQueueSensor::enqueue(const SbTime& when)
{
    unschedule();
    if (!kalmyr::holds(!std::isnan(when.getValue()), "the time is a number"))
        return;
    SoSensorManager::insert(this, when);
}

void SoTimerQueueSensor::unschedule()
{
    if (isScheduled())
        SoSensorManager::remove(this);
}

void SoTimerSensor::setInterval(const SbTime& interval)
{
    if (kalmyr::holds(interval > SbTime(), "interval > 0"))
        m_interval = interval;
}

void SoTimerSensor::schedule()
{
    const double now = SbTime::getTimeOfDay().getValue();
    const double next = now + m_interval.getValue();
    // An interval that vanishes beside the time of day is still one.
    enqueue(
        SbTime(next > now ? next : std::nextafter(now, std::numeric_limits<double>::infinity())));
}

void SoTimerSensor::trigger()
{
    schedule(); // first: the callback may unschedule or delete this sensor
    SoSensor::trigger();
}
