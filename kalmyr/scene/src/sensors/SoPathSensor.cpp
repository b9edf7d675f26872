#include <kalmyr/sensors/SoPathSensor.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

/// Listens to one node of the path.
class SoPathSensor::Watch final : public SoAuditor {
public:
    Watch(SoPathSensor* sensor, SoNode* watched, int at)
        : level(at), node(watched), m_sensor(sensor)
    {
        node->addAuditor(this, SoAuditor::SENSOR);
    }
    ~Watch()
    {
        if (node)
            node->removeAuditor(this);
    }
    void auditedChanged(SoNotification& notification) override
    {
        m_sensor->tell(*this, notification);
    }
    void auditedDying() override { node = nullptr; }

    const int level;
    SoNode* node; ///< null once it died

private:
    SoPathSensor* m_sensor; // Not owned; it owns us.
};

SoPathSensor::SoPathSensor(SoSensorCB* function, void* data) : SoDataSensor(function, data) {}

SoPathSensor::~SoPathSensor()
{
    detach();
}

void SoPathSensor::attach(SoPath* path)
{
    detach();
    takeOwnership();
    m_path = path;
    if (!path)
        return;
    path->addAuditor(this, SoAuditor::SENSOR);
    watch();
}

void SoPathSensor::detach()
{
    unschedule();
    forgetTrigger();
    m_watches.clear();
    if (!m_path)
        return;
    m_path->removeAuditor(this);
    m_path = nullptr;
}

void SoPathSensor::watch()
{
    m_watches.clear();
    for (int i = 0; i < m_path->getLength(); ++i)
        m_watches.push_back(std::make_unique<Watch>(this, m_path->getNode(i), i));
}

/// Every node of the path hears of what happens at or below it; the deepest one on the way of the
/// change decides.
bool SoPathSensor::concerns(int level, const SoNotification& notification) const
{
    const auto* below = notification.chain ? notification.chain->below : nullptr;
    if (!below || level + 1 >= m_path->getLength())
        return true;
    const SoNode* next = m_path->getNode(level + 1);
    if (below->container == next)
        return false;
    const int index = m_path->getIndex(level + 1);
    const SoChildList* children = m_path->getNode(level)->getInternalChildren();
    if (index < 0 || !children || !below->container->isOfType(SoNode::getClassTypeId()))
        return true;
    const auto* changed = static_cast<const SoNode*>(below->container);
    const int place = children->find(changed);
    return place < index && changed->affectsState();
}

void SoPathSensor::tell(const Watch& watch, SoNotification& notification)
{
    if (watch.level >= m_path->getLength() || m_path->getNode(watch.level) != watch.node
        || !concerns(watch.level, notification))
        return;
    SoDataSensor::auditedChanged(notification);
}

void SoPathSensor::trigger()
{
    if (m_path && static_cast<int>(m_watches.size()) != m_path->getLength())
        watch();
    SoDataSensor::trigger();
}

void SoPathSensor::auditedDying()
{
    m_watches.clear();
    m_path = nullptr;
    SoDataSensor::auditedDying();
}
