#include <kalmyr/sensors/SoDataSensor.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include <utility>

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

/// A change of the watched object itself, not of something below it.
bool isOfWatched(const SoNotification& notification)
{
    return !notification.chain || !notification.chain->below;
}

SoRef<SoPath> pathOf(const SoNotification& notification)
{
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
    return path;
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
    return asNode(m_record.container);
}

const SoPath* SoDataSensor::getTriggerPath() const
{
    return m_record.path.get();
}

SoDataSensor::Record SoDataSensor::recordOf(const SoNotification& notification) const
{
    Record record;
    record.kind = notification.kind;
    record.index = notification.index;
    record.container = notification.container;
    record.field = notification.field;
    record.child = notification.child;
    if (m_wantsPath)
        record.path = pathOf(notification);
    hold(record);
    return record;
}

void SoDataSensor::hold(Record& record)
{
    // An object that is being destroyed has no references left and must not get new ones.
    const auto alive = [](const SoBase* object) { return object && object->getRefCount() > 0; };
    record.heldContainer = alive(record.container) ? record.container : nullptr;
    record.heldChild = alive(record.child) ? record.child : nullptr;
}

void SoDataSensor::dropWhatMayDie(Record& record)
{
    if (!record.heldContainer) {
        record.container = nullptr;
        record.field = nullptr;
    }
    if (!record.heldChild)
        record.child = nullptr;
}

void SoDataSensor::forgetTrigger()
{
    m_record = {};
    m_waiting.clear();
}

void SoDataSensor::auditedChanged(SoNotification& notification)
{
    if (getPriority() != 0) {
        m_record = recordOf(notification);
        if (isOfWatched(notification)) {
            // It tells when it dies, and must not be kept from dying by those who want to know.
            SoFieldContainer* watched = m_record.container;
            SoField* field = m_record.field;
            m_record.heldContainer = nullptr;
            dropWhatMayDie(m_record);
            m_record.container = watched;
            m_record.field = field;
        } else {
            dropWhatMayDie(m_record);
        }
    } else {
        m_waiting.push_back(recordOf(notification));
    }
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
    unschedule();
    SoRef<SoFieldContainer> container;
    SoRef<SoNode> child;
    if (!m_waiting.empty()) {
        m_record = std::move(m_waiting.front());
        m_waiting.erase(m_waiting.begin());
        if (!m_waiting.empty())
            schedule();
        container.swap(m_record.heldContainer);
        child.swap(m_record.heldChild);
    }
    // The callback may delete the sensor: nothing of it is touched afterwards. What a queued sensor
    // reported is let go with the next record, detach() or death.
    SoSensor::trigger();
}
