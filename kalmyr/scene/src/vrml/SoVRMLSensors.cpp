#include <kalmyr/vrml/SoVRMLSensors.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/Threads.h"

#include <cmath>

namespace {

template <class Sensor>
void listenToEvents()
{
    SoHandleEventAction::addMethod(Sensor::getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<Sensor*>(node)->handleEvent(static_cast<SoHandleEventAction*>(action));
    });
}

} // namespace

SO_NODE_SOURCE(SoVRMLCylinderSensor)

SoVRMLCylinderSensor::SoVRMLCylinderSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(diskAngle, (0.262f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(maxAngle, (-1.0f));
    SO_VRML_EXPOSED(minAngle, (0.0f));
    SO_VRML_EXPOSED(offset, (0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(rotation_changed);
    SO_VRML_EVENT_OUT(trackPoint_changed);
}

SoVRMLCylinderSensor::~SoVRMLCylinderSensor() = default;

void SoVRMLCylinderSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCylinderSensor, SoNode, "VRMLCylinderSensor");
    listenToEvents<SoVRMLCylinderSensor>();
}

SO_NODE_SOURCE(SoVRMLPlaneSensor)

SoVRMLPlaneSensor::SoVRMLPlaneSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(maxPosition, (-1.0f, -1.0f));
    SO_VRML_EXPOSED(minPosition, (0.0f, 0.0f));
    SO_VRML_EXPOSED(offset, (0.0f, 0.0f, 0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(trackPoint_changed);
    SO_VRML_EVENT_OUT(translation_changed);
}

SoVRMLPlaneSensor::~SoVRMLPlaneSensor() = default;

void SoVRMLPlaneSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPlaneSensor, SoNode, "VRMLPlaneSensor");
    listenToEvents<SoVRMLPlaneSensor>();
}

SO_NODE_SOURCE(SoVRMLProximitySensor)

SoVRMLProximitySensor::SoVRMLProximitySensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(size, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(position_changed);
    SO_VRML_EVENT_OUT(orientation_changed);
    SO_VRML_EVENT_OUT(enterTime);
    SO_VRML_EVENT_OUT(exitTime);
}

SoVRMLProximitySensor::~SoVRMLProximitySensor() = default;

void SoVRMLProximitySensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLProximitySensor, SoNode, "VRMLProximitySensor");
    listenToEvents<SoVRMLProximitySensor>();
}

SO_NODE_SOURCE(SoVRMLSphereSensor)

SoVRMLSphereSensor::SoVRMLSphereSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(offset, (SbVec3f(0.0f, 1.0f, 0.0f), 0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(rotation_changed);
    SO_VRML_EVENT_OUT(trackPoint_changed);
}

SoVRMLSphereSensor::~SoVRMLSphereSensor() = default;

void SoVRMLSphereSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSphereSensor, SoNode, "VRMLSphereSensor");
    listenToEvents<SoVRMLSphereSensor>();
}

SO_NODE_SOURCE(SoVRMLTimeSensor)

SoVRMLTimeSensor::SoVRMLTimeSensor()
    : m_timer([](void* self, SoSensor*) { static_cast<SoVRMLTimeSensor*>(self)->tick(); }, this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    m_timer.setPartOfGraph();
    SO_VRML_EXPOSED(cycleInterval, (1.0));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(loop, (false));
    SO_VRML_EXPOSED_EMPTY(startTime);
    SO_VRML_EXPOSED_EMPTY(stopTime);
    SO_VRML_EVENT_OUT(cycleTime);
    SO_VRML_EVENT_OUT(fraction_changed);
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(time);
}

SoVRMLTimeSensor::~SoVRMLTimeSensor()
{
    m_timer.unschedule();
}

void SoVRMLTimeSensor::listenersChanged(SoField*)
{
    runTimer();
}

bool SoVRMLTimeSensor::noteChange(const SoNotification& notification)
{
    const SoField* field = notification.container == this ? notification.field : nullptr;
    if (field && field->getFieldType() == SoField::EXPOSED) {
        if (field == &startTime)
            m_isMissed = isActive.getValue();
        runTimer();
    }
    return false;
}

void SoVRMLTimeSensor::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    isActive = false; // it begins by itself
    isActive.setDefault(true);
}

bool SoVRMLTimeSensor::isFollowed() const
{
    return fraction_changed.getAuditors().getLength() > 0 || time.getAuditors().getLength() > 0
           || cycleTime.getAuditors().getLength() > 0 || isActive.getAuditors().getLength() > 0;
}

void SoVRMLTimeSensor::runTimer()
{
    // Reading a file sets fields without telling; then the first listener starts the clock.
    if (!isFollowed()) {
        m_timer.unschedule();
    } else if (!m_timer.isScheduled()) {
        m_timer.schedule();
    }
}

void SoVRMLTimeSensor::stop(double now)
{
    if (isActive.getValue()) {
        time = SbTime(now);
        isActive = false;
    }
    m_timer.unschedule(); // a change of a field starts it again
}

/// Whether it is time; then the active time begins.
bool SoVRMLTimeSensor::begin(double now)
{
    const double start = startTime.getValue().getValue();
    const double end = stopTime.getValue().getValue();
    const double cycle = cycleInterval.getValue().getValue();
    if (now < start)
        return false;
    const bool isOver = !loop.getValue() && (now - start >= cycle || m_isMissed);
    if (!(cycle > 0) || (end > start && now >= end) || isOver) {
        stop(now);
        return false;
    }
    m_start = start;
    m_cycle = cycle;
    m_numCycles = std::floor((now - start) / cycle);
    isActive = true;
    cycleTime = SbTime(start + m_numCycles * cycle);
    return true;
}

void SoVRMLTimeSensor::run(double now)
{
    const double end = stopTime.getValue().getValue();
    const bool isStopped = end > m_start && now >= end;
    const double passed = (isStopped ? end - m_start : now - m_start) / m_cycle;
    const double cycles = std::floor(passed);
    const bool isOver = !loop.getValue() && cycles > m_numCycles;
    const bool isFull = isOver || (passed == cycles && passed > 0);
    if (!isStopped && !isOver && cycles != m_numCycles) {
        m_numCycles = cycles;
        cycleTime = SbTime(m_start + cycles * m_cycle);
    }
    fraction_changed = isFull ? 1 : static_cast<float>(passed - cycles);
    if (isStopped || isOver)
        stop(now);
    else
        time = SbTime(now);
}

void SoVRMLTimeSensor::tick()
{
    const kalmyr::detail::SharedEdit edit(SoSensorManager::isApplicationThread());
    if (!edit)
        return; // somebody reads; the next tick comes soon
    const double now = SbTime::getTimeOfDay().getValue();
    // Whoever is told may drop us.
    const SoRef<SoVRMLTimeSensor> self(getRefCount() > 0 ? this : nullptr);
    if (!enabled.getValue())
        stop(now);
    else if (isActive.getValue() || begin(now))
        run(now);
}

void SoVRMLTimeSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTimeSensor, SoNode, "VRMLTimeSensor");
}

SO_NODE_SOURCE(SoVRMLTouchSensor)

SoVRMLTouchSensor::SoVRMLTouchSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EVENT_OUT(hitNormal_changed);
    SO_VRML_EVENT_OUT(hitPoint_changed);
    SO_VRML_EVENT_OUT(hitTexCoord_changed);
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(isOver);
    SO_VRML_EVENT_OUT(touchTime);
}

SoVRMLTouchSensor::~SoVRMLTouchSensor() = default;

void SoVRMLTouchSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTouchSensor, SoNode, "VRMLTouchSensor");
    listenToEvents<SoVRMLTouchSensor>();
}

SO_NODE_SOURCE(SoVRMLVisibilitySensor)

SoVRMLVisibilitySensor::SoVRMLVisibilitySensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(size, (0.0f, 0.0f, 0.0f));
    SO_VRML_EVENT_OUT(enterTime);
    SO_VRML_EVENT_OUT(exitTime);
    SO_VRML_EVENT_OUT(isActive);
}

SoVRMLVisibilitySensor::~SoVRMLVisibilitySensor() = default;

void SoVRMLVisibilitySensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLVisibilitySensor, SoNode, "VRMLVisibilitySensor");
    listenToEvents<SoVRMLVisibilitySensor>();
}
