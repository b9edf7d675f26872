#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <exception>
#include <utility>

class MrbPreferencePage;
class MrbServices;
class MrbShell;
class QWidget;

namespace mirabo {
class HostedExtension;
}

/// What an extension says of itself.
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
/// shell(), and for callables wrapped by guard(). Everything else that Qt calls (painting, timers,
/// models) must not throw.
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

    /// Wraps a callable so that an exception ends the extension instead of the host:
    ///     connect(button, &QPushButton::clicked, this, guard([this] { measure(); }));
    template <typename Callable>
    auto guard(Callable callable)
    {
        return [self = QPointer<MrbExtension>(this), callable](auto&&... arguments) {
            try {
                callable(std::forward<decltype(arguments)>(arguments)...);
            } catch (const std::exception& error) {
                if (self)
                    self->fail(QString::fromLocal8Bit(error.what()));
            } catch (...) {
                if (self)
                    self->fail("an exception of unknown type");
            }
        };
    }

private:
    friend class mirabo::HostedExtension;
    mirabo::HostedExtension* m_host = nullptr; // Not owned; owns us.
};
