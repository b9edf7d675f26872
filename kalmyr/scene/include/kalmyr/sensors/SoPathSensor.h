#pragma once

#include <kalmyr/sensors/SoDataSensor.h>

#include <memory>
#include <vector>

/// Watches what a path stands for: changes of its nodes, changes at or below its last node, and
/// changes of what stands before its nodes and has an effect on them. Changes further on, and
/// inside separators beside the path, do not concern it.
///
/// It follows the path when edits of the graph shorten it; a path that is edited by hand is to be
/// attached again. Holds no reference on the path.
class KALMYR_API SoPathSensor final : public SoDataSensor {
public:
    explicit SoPathSensor(SoSensorCB* function = nullptr, void* data = nullptr);
    ~SoPathSensor() override;

    /// Detaches from an earlier path first. Null detaches.
    void attach(SoPath* path);
    void detach() override;
    SoPath* getAttachedPath() const { return m_path; }

    /// The path itself, whose nodes tell.
    void auditedChanged(SoNotification&) override {}
    void auditedDying() override;
    void trigger() override;

private:
    class Watch;
    void watch();
    void tell(const Watch& watch, SoNotification& notification);
    bool concerns(int level, const SoNotification& notification) const;

    SoPath* m_path = nullptr;                      // Not owned; forgotten when it dies.
    std::vector<std::unique_ptr<Watch>> m_watches; ///< one a node of the path
};
