#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <utility>

class MrbPreferencePage;
class MrbServices;
class MrbShell;
class QWidget;
class SoSensor;

namespace mirabo {
class HostedExtension;
}

/// Description of an extension, given by itself.
struct MrbExtensionInfo {
    QString name;        ///< heads its preference page
    QString description; ///< short; heads its view and the menu entry that shows the view
    QString author;
    QString version;
};

/// One extension of the tool, made by a plug-in and switched on by the active profile.
///
/// Life: constructed, activate(), [addControlled() for each controlled extension], ...,
/// [removeControlled()], deactivate(), destroyed. All in the GUI thread. An extension may come and
/// go several times in a process.
///
/// Any operation may throw: the tool reports the extension with the cause, removes what it has
/// placed, and goes on without it. The same holds for slots connected to services()' signals, for
/// commands pushed through services(), for the entries, menus, tool bars and buttons placed through
/// shell(), for callables wrapped by guard(), and for sensors with a MrbSensorGuard. Everything
/// else that Qt or the toolkit calls (painting, timers, models, callbacks) must not throw.
///
/// The host, the user or another extension may end the tool at any time, also while code of this
/// extension runs: once that code has returned deactivate() is called and the extension destroyed.
///
/// The order of the virtual operations is part of the binary interface.
class MRBEXT_API MrbExtension : public QObject {
    Q_OBJECT

public:
    MrbExtension();
    ~MrbExtension() override;

    virtual MrbExtensionInfo getInfo() const = 0;

    /// Places widgets and entries, connects to the services. False switches the extension off at
    /// once; say why with fail() before. Neither then nor after an exception is deactivate()
    /// called.
    virtual bool activate() = 0;
    /// Lets go of the scene and stops whatever runs. What was placed through shell() need not be
    /// removed here: the tool deletes it next, and the pushed commands with it.
    virtual void deactivate() = 0;

    /// The content of the extension's view, a child of `parent`; asked for by MrbShell::addView().
    /// Null (the default): the extension has no view.
    virtual QWidget* createView(QWidget* parent);
    /// A page for the preferences dialog, a child of `parent`, each time the dialog opens. Null
    /// (the default): none.
    virtual MrbPreferencePage* createPreferencePage(QWidget* parent);

    /// The profile puts another active extension, of any plug-in, under this one's control (an
    /// editor of one field type under the field editor, for instance). It is active from before
    /// addControlled() until after removeControlled(); it is not owned. Do nothing by default.
    virtual void addControlled(MrbExtension* extension);
    virtual void removeControlled(MrbExtension* extension);

    /// The services and the shell as this extension's own: what it connects, pushes and places
    /// through them goes when it goes. Null before activate() and after deactivate().
    MrbServices* services() const;
    MrbShell* shell() const;

    /// Has the extension switched off, with this cause, as soon as none of its code runs.
    void fail(const QString& cause);

    /// Wraps a callable so that an exception ends the extension instead of the host. Once the
    /// extension has failed or is gone it does nothing.
    ///     connect(button, &QPushButton::clicked, this, guard([this] { measure(); }));
    template <typename Callable>
    auto guard(Callable callable)
    {
        return [self = QPointer<MrbExtension>(this), callable](auto&&... arguments) {
            if (self)
                self->runGuarded("guarded code", [&] {
                    callable(std::forward<decltype(arguments)>(arguments)...);
                });
        };
    }

    /// Runs some code as one call into the extension, which an exception ends; `what` names the
    /// code in the report. Nothing is run once the extension has failed. Any thread: in others than
    /// its own the exception is reported later.
    void runGuarded(const char* what, const std::function<void()>& code);

private:
    friend class mirabo::HostedExtension;
    mirabo::HostedExtension* m_host = nullptr; // Not owned; owns us.
};

/// Lets a sensor of the toolkit call an extension under its guard. Declared before the
/// sensor, which it must outlive:
///     MrbSensorGuard m_guard;
///     SoNodeSensor m_sensor{&MrbSensorGuard::call, &m_guard};
/// The same for delete callbacks. Does nothing once the extension has failed or is gone.
class MRBEXT_API MrbSensorGuard {
public:
    using Code = std::function<void(SoSensor* sensor)>;

    MrbSensorGuard(MrbExtension* extension, Code code);
    ~MrbSensorGuard();
    MrbSensorGuard(const MrbSensorGuard&) = delete;
    MrbSensorGuard& operator=(const MrbSensorGuard&) = delete;

    /// The callback, a SoSensorCB; its data is the guard.
    static void call(void* guard, SoSensor* sensor);

private:
    QPointer<MrbExtension> m_extension;
    Code m_code;
};
