#include <kalmyr/sensors/SoDelayQueueSensor.h>

#include <kalmyr/sensors/SoSensorManager.h>

#include "core/Threads.h"

SoDelayQueueSensor::SoDelayQueueSensor(SoSensorCB* function, void* data)
    : SoSensor(function, data), m_owner(kalmyr::detail::threadNumber())
{
}

SoDelayQueueSensor::~SoDelayQueueSensor()
{
    unschedule();
    if (m_running)
        SoSensorManager::forgetRunning(this);
}

void SoDelayQueueSensor::takeOwnership()
{
    m_owner = kalmyr::detail::threadNumber();
}

void SoDelayQueueSensor::schedule()
{
    if (isScheduled())
        return;
    if (m_priority == 0 && !isIdleOnly())
        SoSensorManager::insertImmediate(this);
    else
        SoSensorManager::insert(this);
}

void SoDelayQueueSensor::unschedule()
{
    if (isScheduled())
        SoSensorManager::remove(this);
}

void SoDelayQueueSensor::trigger()
{
    unschedule();
    SoSensor::trigger();
}
