#pragma once

#include <QAction>
#include <QPointer>

namespace mirabo {

class HostedExtension;

/// Stands for an extension's action in a menu or tool bar of the tool: looks like it, and triggers
/// it under the extension's guard.
class GuardedEntry final : public QAction {
    Q_OBJECT

public:
    GuardedEntry(HostedExtension& owner, QAction* original);

    QAction* original() const { return m_original; }

private:
    void copyLook();
    void pass(bool checked);

    HostedExtension& m_owner;
    QPointer<QAction> m_original;
    bool m_passing = false; ///< the original's changes are ours
};

} // namespace mirabo
