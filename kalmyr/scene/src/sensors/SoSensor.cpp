#include <kalmyr/sensors/SoSensor.h>

void SoSensor::trigger()
{
    if (m_function)
        m_function(m_data, this);
}
