#include <kalmyr/sensors/SoDataSensor.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

namespace {

/// Index of the node below on the way of a change, where it is a child; -1 for a field's node.
int indexBelow(const SoNode* parent, const SoNode* below)
{
    const SoChildList* children = parent->getInternalChildren();
    return children ? children->find(below) : -1;
}

SoNode* asNode(SoFieldContainer* container)
{
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<SoNode*>(container)
               : nullptr;
}

} // namespace

SoDataSensor::SoDataSensor(SoSensorCB* function, void* data) : SoDelayQueueSensor(function, data) {}

SoDataSensor::~SoDataSensor() = default;

void SoDataSensor::setDeleteCallback(SoSensorCB* function, void* data)
{
    m_deleteFunction = function;
    m_deleteData = data;
}

SoNode* SoDataSensor::getTriggerNode() const
{
    return asNode(m_container);
}

const SoPath* SoDataSensor::getTriggerPath() const
{
    return m_path.get();
}

void SoDataSensor::record(const SoNotification& notification)
{
    m_kind = notification.kind;
    m_index = notification.index;
    m_container = notification.container;
    m_field = notification.field;
    m_child = notification.child;
    m_path = nullptr;
    if (getPriority() != 0)
        hold();
    if (!m_wantsPath)
        return;
    SoNode* above = nullptr;
    SoRef<SoPath> path;
    for (const auto* link = notification.chain; link; link = link->below) {
        SoNode* node = asNode(link->container);
        if (!node || node->getRefCount() == 0)
            continue;
        if (!path)
            path = SoRef<SoPath>(new SoPath(node));
        else
            path->append(node, indexBelow(above, node));
        above = node;
    }
    m_path = path;
}

void SoDataSensor::hold()
{
    // An object that is being destroyed has no references left and must not get new ones.
    m_heldContainer = m_container && m_container->getRefCount() > 0 ? m_container : nullptr;
    m_heldChild = m_child && m_child->getRefCount() > 0 ? m_child : nullptr;
    if (!m_heldContainer) {
        m_container = nullptr;
        m_field = nullptr;
    }
    if (!m_heldChild)
        m_child = nullptr;
}

void SoDataSensor::forgetTrigger()
{
    m_kind = SoNotification::UNSPECIFIED;
    m_index = -1;
    m_container = nullptr;
    m_field = nullptr;
    m_child = nullptr;
    m_heldContainer = nullptr;
    m_heldChild = nullptr;
    m_path = nullptr;
}

void SoDataSensor::auditedChanged(SoNotification& notification)
{
    record(notification);
    schedule();
}

void SoDataSensor::auditedDying()
{
    unschedule();
    forgetTrigger();
    if (m_deleteFunction)
        m_deleteFunction(m_deleteData, this);
}

void SoDataSensor::trigger()
{
    // The callback may delete the sensor: nothing of it is touched afterwards. What the last
    // trigger reported is let go with the next record, detach() or death.
    SoDelayQueueSensor::trigger();
}
