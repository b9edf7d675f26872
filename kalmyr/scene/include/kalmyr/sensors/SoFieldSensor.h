#pragma once

#include <kalmyr/sensors/SoDataSensor.h>

/// Watches one field. Reports it as the trigger field.
class KALMYR_API SoFieldSensor final : public SoDataSensor {
public:
    using SoDataSensor::SoDataSensor;
    ~SoFieldSensor() override;

    void attach(SoField* field);
    void detach() override;
    SoField* getAttachedField() const { return m_attached; }
    SoField* getTriggerField() const override;

    void auditedDying() override;

private:
    SoField* m_attached = nullptr; // Not owned; forgotten when it dies.
};
