#include "mirabo/extender/private/HostedExtension.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/MrbExtension.h"
#include "mirabo/extender/private/CommandStackAccess.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/extender/private/ExtensionServices.h"
#include "mirabo/extender/private/ExtensionShell.h"
#include "mirabo/extender/private/Frame.h"

#include <QTimer>

#include <algorithm>
#include <exception>
#include <unordered_set>
#include <utility>

namespace mirabo {

namespace {

/// Between two tries to end an extension while a command, which may show a dialog, runs.
constexpr int kPatienceMs = 100;

const HostedExtension* s_current = nullptr;

CommandStackAccess* commandStack()
{
    return dynamic_cast<CommandStackAccess*>(ExtensionServices::tool());
}

} // namespace

CommandStackAccess::~CommandStackAccess() = default;

/// Forwards to an extension's command. One that has failed, or whose extension has, does nothing.
class HostedExtension::GuardedCommand final : public MrbCommand {
public:
    GuardedCommand(HostedExtension& owner, MrbCommand* command)
        : m_owner(&owner), m_command(command)
    {
        m_owner->m_commands.push_back(this);
        setName(command->getName());
    }

    ~GuardedCommand() override { orphan(); }

    /// Lets go of the extension; from now on it does nothing.
    void orphan()
    {
        if (!m_owner)
            return;
        auto& all = m_owner->m_commands;
        // From the back: undo stacks drop their youngest commands first.
        all.erase(std::next(std::find(all.rbegin(), all.rend(), this)).base());
        m_owner = nullptr;
        m_command.reset();
    }

    bool execute() override
    {
        bool done = false;
        call("execute() of a command", [&] { done = m_command->execute(); });
        return done;
    }
    void undo() override
    {
        call("undo() of a command", [this] { m_command->undo(); });
    }
    void redo() override
    {
        call("redo() of a command", [this] { m_command->redo(); });
    }

private:
    void call(const char* what, const std::function<void()>& body)
    {
        if (m_owner && !m_dead)
            m_dead = !m_owner->run(what, body);
    }

    HostedExtension* m_owner; // Not owned; null once it has ended.
    std::unique_ptr<MrbCommand> m_command;
    bool m_dead = false;
};

HostedExtension::HostedExtension(const QString& plugin, const QString& name,
                                 MrbExtension* extension, Reporter reporter)
    : m_plugin(plugin),
      m_name(name),
      m_reporter(std::move(reporter)),
      m_extension(extension),
      m_services(std::make_unique<ExtensionServices>(*this)),
      m_shell(std::make_unique<ExtensionShell>(*this))
{
    m_extension->m_host = this;
    EventFrames::addRoot(extension);
}

HostedExtension::~HostedExtension()
{
    deactivate();
}

const HostedExtension* HostedExtension::current()
{
    return s_current;
}

MrbServices* HostedExtension::services() const
{
    return m_services.get();
}

MrbShell* HostedExtension::shell() const
{
    return m_shell.get();
}

bool HostedExtension::activate()
{
    bool accepted = false;
    const bool done = run("activate()", [&] { accepted = m_extension->activate(); });
    if (done && !accepted)
        fail("activate() refused");
    m_active = done && accepted;
    return m_active && !m_failed;
}

void HostedExtension::control(std::unique_ptr<HostedExtension> child)
{
    HostedExtension* added = child.get();
    m_controlled.push_back(std::move(child));
    run("addControlled()", [&] { m_extension->addControlled(added->extension()); });
}

bool HostedExtension::releaseControlled(const HostedExtension* child)
{
    const auto at = std::find_if(m_controlled.begin(), m_controlled.end(),
                                 [child](const auto& some) { return some.get() == child; });
    if (at == m_controlled.end())
        return std::any_of(m_controlled.begin(), m_controlled.end(),
                           [child](const auto& some) { return some->releaseControlled(child); });
    const std::unique_ptr<HostedExtension> leaving = std::move(*at);
    m_controlled.erase(at);
    if (m_active)
        run("removeControlled()", [&] { m_extension->removeControlled(leaving->extension()); });
    return true;
}

bool HostedExtension::run(const QString& what, const std::function<void()>& body) noexcept
{
    bool done = false;
    const Frame frame;
    const HostedExtension* caller = std::exchange(s_current, this);
    ++m_depth;
    try {
        body();
        done = true;
    } catch (const std::exception& error) {
        fail(what + " threw: " + QString::fromLocal8Bit(error.what()));
    } catch (...) {
        fail(what + " threw an exception of unknown type");
    }
    --m_depth;
    s_current = caller;
    if (m_failed && m_depth == 0)
        requestSwitchOff();
    return done;
}

void HostedExtension::fail(const QString& cause)
{
    if (m_failed)
        return;
    m_failed = true;
    m_services->mute();
    m_reporter(*this, cause);
    if (m_depth == 0)
        requestSwitchOff();
}

// Later: a widget of the extension may be handling an event, or a signal be on its way.
void HostedExtension::requestSwitchOff()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_depth > 0)
                return; // the end of the outermost call asks again
            const auto* stack = commandStack();
            if (stack && stack->isRunningCommand())
                QTimer::singleShot(kPatienceMs, this, &HostedExtension::requestSwitchOff);
            else
                Q_EMIT switchOffWanted(this);
        },
        Qt::QueuedConnection);
}

bool HostedExtension::isBusy() const
{
    return m_depth > 0
           || std::any_of(m_controlled.begin(), m_controlled.end(),
                          [](const auto& child) { return child->isBusy(); });
}

void HostedExtension::abandon()
{
    for (const auto& child : m_controlled)
        child->abandon();
    m_services->mute();
    m_failed = true;
    disconnect();
    while (!m_commands.empty())
        m_commands.back()->orphan();
}

std::unique_ptr<MrbCommand> HostedExtension::adopt(MrbCommand* command)
{
    return std::make_unique<GuardedCommand>(*this, command);
}

void HostedExtension::deactivate()
{
    while (!m_controlled.empty())
        releaseControlled(m_controlled.back().get());
    m_services->mute();
    if (m_active)
        run("deactivate()", [this] { m_extension->deactivate(); });
    m_active = false;
    m_shell->removeAll();
    for (const QPointer<QObject>& object : m_kept)
        delete object;
    m_kept.clear();
    removeCommands();
    m_extension->m_host = nullptr;
    EventFrames::removeRoot(m_extension.get());
    m_extension.reset();
}

void HostedExtension::removeCommands()
{
    if (m_commands.empty())
        return;
    const std::unordered_set<const MrbCommand*> own(m_commands.begin(), m_commands.end());
    auto* stack = commandStack();
    const bool running = stack && stack->isRunningCommand();
    if (stack && !running)
        stack->removeCommands([&own](const MrbCommand* command) { return own.count(command) > 0; });
    while (!m_commands.empty()) {
        GuardedCommand* left = m_commands.back();
        left->orphan();
        // A stack that was cleared has forgotten them without deleting: nobody else has these.
        if (stack && !running)
            delete left;
    }
}

} // namespace mirabo
