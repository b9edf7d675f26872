#include <kalmyr/sensors/SoTimerSensor.h>

#include <kalmyr/sensors/SoSensorManager.h>

SoTimerQueueSensor::~SoTimerQueueSensor()
{
    unschedule();
}

void SoTimerQueueSensor::enqueue(const SbTime& when)
{
    unschedule();
    m_time = when;
    m_scheduled = true;
    SoSensorManager::insert(this);
}

void SoTimerQueueSensor::unschedule()
{
    if (!m_scheduled)
        return;
    m_scheduled = false;
    SoSensorManager::remove(this);
}

void SoTimerSensor::trigger()
{
    schedule(); // first: the callback may unschedule or delete this sensor
    SoSensor::trigger();
}
