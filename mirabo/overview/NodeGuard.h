#pragma once

#include <kalmyr/core/SoAuditor.h>

#include <functional>

class SoNode;

namespace mirabo {

/// Tells when a node dies, and nothing else: what a hidden pane keeps of a node that it shows.
/// Holds no reference.
class NodeGuard final : public SoAuditor {
public:
    using Callback = std::function<void()>;

    /// `died` is called while the node and its fields are still whole; the guard has let go of the
    /// node by then and may be destroyed inside the call.
    NodeGuard(SoNode* node, Callback died);
    ~NodeGuard();
    NodeGuard(const NodeGuard&) = delete;
    NodeGuard& operator=(const NodeGuard&) = delete;

    void auditedChanged(SoNotification&) override {}
    void auditedDying() override;

private:
    SoNode* m_node; // Not owned; null once it died.
    Callback m_died;
};

} // namespace mirabo
