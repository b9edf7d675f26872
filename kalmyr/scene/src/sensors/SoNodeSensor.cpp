#include <kalmyr/sensors/SoNodeSensor.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

SoNodeSensor::~SoNodeSensor()
{
    detach();
}

void SoNodeSensor::attach(SoNode* node)
{
    detach();
    takeOwnership();
    m_node = node;
    if (node)
        node->addAuditor(this, SoAuditor::SENSOR);
}

void SoNodeSensor::detach()
{
    unschedule();
    forgetTrigger();
    if (!m_node)
        return;
    m_node->removeAuditor(this);
    m_node = nullptr;
}

void SoNodeSensor::auditedDying()
{
    m_node = nullptr;
    SoDataSensor::auditedDying();
}
