#include <kalmyr/sensors/SoSensorsInit.h>

#include <kalmyr/sensors/SoSensorManager.h>

void kalmyr::initSensors()
{
    SoSensorManager::init();
}
