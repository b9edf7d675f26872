#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>

class SoField;
class SoFieldContainer;
class SoNode;
class SoPath;

/// A sensor on scene data. It reports what changed: kind, node, field, child, index, and on
/// request the path from the watched node to the change.
///
/// Several changes before one trigger are reported as the last one. The reported pointers are
/// valid inside the callback. A priority 0 sensor holds no reference on them; a queued sensor keeps
/// the container and child that it will report alive until it is triggered the next time.
class KALMYR_API SoDataSensor : public SoDelayQueueSensor, public SoAuditor {
public:
    explicit SoDataSensor(SoSensorCB* function = nullptr, void* data = nullptr);
    ~SoDataSensor() override;

    /// Called when the watched object dies, after the sensor has been detached.
    void setDeleteCallback(SoSensorCB* function, void* data = nullptr);

    virtual void detach() = 0;

    SoNotification::Kind getTriggerOperation() const { return m_kind; }
    /// Container in which the change happened; null when unknown or dead.
    SoFieldContainer* getTriggerContainer() const { return m_container; }
    SoNode* getTriggerNode() const;
    virtual SoField* getTriggerField() const { return m_field; }
    SoNode* getTriggerChild() const { return m_child; }
    int getTriggerIndex() const { return m_index; }
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
    /// True once a change has been recorded since the sensor was attached.
    bool isRecorded() const { return m_container || m_field; }

private:
    void record(const SoNotification& notification);
    void hold();

    SoSensorCB* m_deleteFunction = nullptr;
    void* m_deleteData = nullptr;
    SoNotification::Kind m_kind = SoNotification::UNSPECIFIED;
    SoFieldContainer* m_container = nullptr;
    SoField* m_field = nullptr;
    SoNode* m_child = nullptr;
    SoRef<SoFieldContainer> m_heldContainer; ///< queued sensors keep what they will report alive
    SoRef<SoNode> m_heldChild;
    int m_index = -1;
    bool m_wantsPath = false;
    SoRef<SoPath> m_path;
};
