#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class MrbCommand;
class MrbExtension;
class MrbServices;
class MrbShell;

namespace mirabo {

class ExtensionServices;
class ExtensionShell;

/// One extension as the tool runs it: every call into its code goes through run(), and whatever it
/// has placed or pushed goes with it.
class HostedExtension final : public QObject {
    Q_OBJECT

public:
    /// Told of the first failure, with its cause.
    using Reporter = std::function<void(const HostedExtension&, const QString& cause)>;

    HostedExtension(const QString& plugin, const QString& name, MrbExtension* extension,
                    Reporter reporter);
    ~HostedExtension() override;

    const QString& pluginName() const { return m_plugin; }
    const QString& name() const { return m_name; }
    MrbExtension* extension() const { return m_extension.get(); }
    MrbServices* services() const;
    MrbShell* shell() const;
    bool isFailed() const { return m_failed; }
    /// The extension whose code the tool is calling; null for none.
    static const HostedExtension* current();
    /// Some of its code, or of one that it controls, is being run.
    bool isBusy() const;

    /// False when it failed or refused.
    bool activate();
    void control(std::unique_ptr<HostedExtension> child);
    const std::vector<std::unique_ptr<HostedExtension>>& controlled() const { return m_controlled; }
    /// Switches a controlled extension off; false when it is none, at any depth.
    bool releaseControlled(const HostedExtension* child);

    /// Runs some of the extension's code; an exception becomes a failure. False then.
    bool run(const QString& what, const std::function<void()>& body) noexcept;
    /// Reports the first failure. Later ones are consequences.
    void fail(const QString& cause);

    /// Deletes an object of the extension at its end, if it still lives then.
    void keepUntilEnd(QObject* object) { m_kept.emplace_back(object); }

    /// Cuts it off from the tool without ending it; for one that is busy when the tool goes.
    void abandon();

    /// Wraps a command of the extension so that it can fail alone.
    std::unique_ptr<MrbCommand> adopt(MrbCommand* command);

Q_SIGNALS:
    /// It has failed and none of its code runs: whoever owns it ends it now.
    void switchOffWanted(mirabo::HostedExtension* self);

private:
    class GuardedCommand;
    void requestSwitchOff();
    void deactivate();
    void removeCommands();

    QString m_plugin;
    QString m_name;
    Reporter m_reporter;
    std::unique_ptr<MrbExtension> m_extension;
    std::unique_ptr<ExtensionServices> m_services;
    std::unique_ptr<ExtensionShell> m_shell;
    std::vector<std::unique_ptr<HostedExtension>> m_controlled;
    std::vector<GuardedCommand*> m_commands; // Not owned; the undo stack's until it forgets them.
    std::vector<QPointer<QObject>> m_kept;
    bool m_active = false;
    bool m_failed = false;
    int m_depth = 0;
};

} // namespace mirabo
