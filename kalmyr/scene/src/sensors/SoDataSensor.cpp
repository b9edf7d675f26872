#include <kalmyr/sensors/SoDataSensor.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotificationWay.h>
#include <kalmyr/core/SoPath.h>

#include <utility>

namespace {

/// Room for records that a sensor keeps when all have been reported.
constexpr std::size_t kKeptRecords = 64;

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
    std::vector<SoFieldContainer*> way;
    kalmyr::getWay(notification, way);
    for (SoFieldContainer* container : way) {
        SoNode* node = asNode(container);
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

SoDataSensor::~SoDataSensor()
{
    if (m_fate)
        *m_fate = Fate::GONE;
}

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
    if (m_fate)
        *m_fate = Fate::FORGOTTEN;
    // Objects that die with it may call back here.
    const Record reported = std::exchange(m_record, {});
    const auto waiting = std::exchange(m_waiting, {});
    m_nextWaiting = 0;
}

void SoDataSensor::auditedChanged(SoNotification& notification)
{
    Record record = recordOf(notification);
    if (getPriority() != 0) {
        if (isOfWatched(notification)) {
            // It tells when it dies, and must not be kept from dying by those who want to know.
            SoFieldContainer* watched = record.container;
            SoField* field = record.field;
            record.heldContainer = nullptr;
            dropWhatMayDie(record);
            record.container = watched;
            record.field = field;
        } else {
            dropWhatMayDie(record);
        }
        m_waiting.clear();
        m_nextWaiting = 0;
    }
    m_waiting.push_back(std::move(record));
    schedule();
}

void SoDataSensor::auditedDying()
{
    unschedule();
    forgetTrigger();
    if (m_deleteFunction)
        m_deleteFunction(m_deleteData, this);
}

SoDataSensor::Record SoDataSensor::takeWaiting()
{
    if (!isAnyWaiting())
        return {}; // scheduled by hand
    Record next = std::move(m_waiting[m_nextWaiting++]);
    if (isAnyWaiting())
        return next;
    m_nextWaiting = 0;
    if (m_waiting.capacity() > kKeptRecords)
        std::vector<Record>().swap(m_waiting);
    else
        m_waiting.clear();
    return next;
}

void SoDataSensor::trigger()
{
    unschedule();
    Fate fate = Fate::KEPT;
    Fate* const outerFate = std::exchange(m_fate, &fate);
    // A callback that spins a loop may come here again.
    Record outer = std::exchange(m_record, takeWaiting());
    if (isAnyWaiting())
        schedule();
    SoSensor::trigger();
    if (fate != Fate::KEPT && outerFate)
        *outerFate = fate;
    if (fate == Fate::GONE)
        return;
    m_fate = outerFate;
    // Let go of last: what dies of it may take the sensor along.
    const Record reported =
        std::exchange(m_record, fate == Fate::KEPT ? std::move(outer) : Record());
}
