#include <kalmyr/sensors/SoDelayQueueSensor.h>

#include <kalmyr/sensors/SoSensorManager.h>

SoDelayQueueSensor::~SoDelayQueueSensor()
{
    unschedule();
    if (m_running)
        SoSensorManager::forgetRunning(this);
}

void SoDelayQueueSensor::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    SoSensorManager::insert(this);
}

void SoDelayQueueSensor::unschedule()
{
    if (!m_scheduled)
        return;
    m_scheduled = false;
    SoSensorManager::remove(this);
}

void SoDelayQueueSensor::trigger()
{
    unschedule();
    SoSensor::trigger();
}
