#include <kalmyr/sensors/SoFieldSensor.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

SoFieldSensor::~SoFieldSensor()
{
    detach();
}

void SoFieldSensor::attach(SoField* field)
{
    detach();
    takeOwnership();
    m_attached = field;
    if (field)
        field->addAuditor(this, SoAuditor::SENSOR);
}

void SoFieldSensor::detach()
{
    unschedule();
    forgetTrigger();
    if (!m_attached)
        return;
    m_attached->removeAuditor(this);
    m_attached = nullptr;
}

SoField* SoFieldSensor::getTriggerField() const
{
    return isRecorded() ? m_attached : nullptr;
}

void SoFieldSensor::auditedDying()
{
    m_attached = nullptr;
    SoDataSensor::auditedDying();
}
