#pragma once

#include <kalmyr/sensors/SoDataSensor.h>

/// Watches a node and everything below it. Holds no reference on the node.
class KALMYR_API SoNodeSensor final : public SoDataSensor {
public:
    using SoDataSensor::SoDataSensor;
    ~SoNodeSensor() override;

    /// Detaches from an earlier node first. Null detaches.
    void attach(SoNode* node);
    void detach() override;
    SoNode* getAttachedNode() const { return m_node; }

    void auditedDying() override;

private:
    SoNode* m_node = nullptr; // Not owned; forgotten when it dies.
};
