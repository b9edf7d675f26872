#pragma once

#include <QObject>

namespace mirabo {

class HostedExtension;

/// Keeps exceptions of slots that hang on the menus, buttons and actions of an extension from
/// reaching the host's event loop.
///
/// Those objects get the events that set slots off directly, without filters that were installed
/// on them before they were watched.
class EventGuard final : public QObject {
    Q_OBJECT

public:
    explicit EventGuard(HostedExtension& owner);

    /// Watches an object and what is or comes below it.
    void watch(QObject* root);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    HostedExtension& m_owner;
};

} // namespace mirabo
