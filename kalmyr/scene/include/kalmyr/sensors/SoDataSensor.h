#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>

#include <cstddef>
#include <cstdint>
#include <vector>

class SoField;
class SoFieldContainer;
class SoNode;
class SoPath;

/// A sensor on scene data. It reports what changed: kind, node, field, child, index, and on
/// request the path from the watched node to the change.
///
/// A sensor of priority 0 reports every change, in order. One that waits in the queue reports the
/// last of several changes before its turn. A sensor keeps the container and child that it is still
/// to report alive, and lets go of what it has reported: what the getters tell is valid inside the
/// callback, and nothing (null, UNSPECIFIED, -1) outside.
class KALMYR_API SoDataSensor : public SoDelayQueueSensor, public SoAuditor {
public:
    explicit SoDataSensor(SoSensorCB* function = nullptr, void* data = nullptr);
    ~SoDataSensor() override;

    /// Called when the watched object dies, after the sensor has been detached.
    void setDeleteCallback(SoSensorCB* function, void* data = nullptr);

    virtual void detach() = 0;

    SoNotification::Kind getTriggerOperation() const { return m_record.kind; }
    /// Container in which the change happened; null when unknown or dead.
    SoFieldContainer* getTriggerContainer() const { return m_record.container; }
    SoNode* getTriggerNode() const;
    virtual SoField* getTriggerField() const { return m_record.field; }
    SoNode* getTriggerChild() const { return m_record.child; }
    int getTriggerIndex() const { return m_record.index; }
    /// Whether the path is recorded; off by default, since it costs an allocation a change.
    void setTriggerPathFlag(bool on) { m_wantsPath = on; }
    bool getTriggerPathFlag() const { return m_wantsPath; }
    /// From the watched node down to the trigger node; null unless switched on.
    const SoPath* getTriggerPath() const;

    void auditedChanged(SoNotification& notification) override;
    void auditedDying() override;
    void trigger() override;

protected:
    void forgetTrigger();
    /// True while a change is being reported.
    bool isRecorded() const { return m_record.container || m_record.field; }

private:
    /// A change as it will be reported.
    struct Record {
        SoNotification::Kind kind = SoNotification::UNSPECIFIED;
        int index = -1;
        SoFieldContainer* container = nullptr;
        SoField* field = nullptr;
        SoNode* child = nullptr;
        SoRef<SoFieldContainer> heldContainer;
        SoRef<SoNode> heldChild;
        SoRef<SoPath> path;
    };
    Record recordOf(const SoNotification& notification) const;
    static void hold(Record& record);
    /// Forgets what was not to be held: it may be gone when its turn comes.
    static void dropWhatMayDie(Record& record);

    /// Changes of the sensor inside its own callback.
    enum class Fate : std::uint8_t { KEPT, FORGOTTEN, GONE };
    bool isAnyWaiting() const { return m_nextWaiting < m_waiting.size(); }
    Record takeWaiting();

    SoSensorCB* m_deleteFunction = nullptr;
    void* m_deleteData = nullptr;
    Record m_record;               ///< being reported
    std::vector<Record> m_waiting; ///< changes to report; only the last when it waits in a queue
    std::size_t m_nextWaiting = 0;
    Fate* m_fate = nullptr; ///< of the innermost callback under way
    bool m_wantsPath = false;
};
