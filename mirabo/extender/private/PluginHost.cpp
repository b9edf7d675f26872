#include "mirabo/extender/private/PluginHost.h"

#include "mirabo/extender/MrbExtension.h"
#include "mirabo/extender/MrbPlugin.h"
#include "mirabo/extender/MrbPreferencePage.h"
#include "mirabo/extender/MrbServices.h"
#include "mirabo/extender/MrbShell.h"
#include "mirabo/extender/private/HostedExtension.h"
#include "mirabo/extender/private/PluginLibrary.h"

#include <kalmyr/base/SoDynamicLibManager.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/base/SoPreferences.h>

#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <exception>

namespace mirabo {

namespace {

constexpr char kPathPreference[] = "KMR_MIRABO_PLUGIN_PATH";
constexpr int kMessageMs = 15000;

QString ownFolder()
{
    const SbString library =
        SoDynamicLibManager::getLibraryFromSymbol(&MrbPluginsManager::getInstance);
    return QFileInfo(QString::fromUtf8(library.getString())).absolutePath();
}

QString nameOf(const MrbPluginsManager::Problem& problem)
{
    return problem.extension.isEmpty() ? QString("plug-in \"%1\"").arg(problem.plugin)
                                       : QString("extension \"%1\" of plug-in \"%2\"")
                                             .arg(problem.extension, problem.plugin);
}

QStringList namesOf(MrbPlugin& plugin, QString& cause)
{
    try {
        return plugin.getExtensionNames();
    } catch (const std::exception& error) {
        cause = "getExtensionNames() threw: " + QString::fromLocal8Bit(error.what());
    } catch (...) {
        cause = "getExtensionNames() threw an exception of unknown type";
    }
    return {};
}

MrbExtension* make(MrbPlugin& plugin, const QString& name, QString& cause)
{
    try {
        if (MrbExtension* extension = plugin.createExtension(name))
            return extension;
        const QStringList names = namesOf(plugin, cause);
        if (cause.isEmpty())
            cause = names.contains(name)
                        ? QString("createExtension() gave none")
                        : "the plug-in has none of that name, but: " + names.join(", ");
    } catch (const std::exception& error) {
        cause = "createExtension() threw: " + QString::fromLocal8Bit(error.what());
    } catch (...) {
        cause = "createExtension() threw an exception of unknown type";
    }
    return nullptr;
}

/// For the rest of the process.
void abandon(std::unique_ptr<HostedExtension> extension)
{
    static auto& s_abandoned = *new std::vector<HostedExtension*>; // not destroyed at exit either
    extension->abandon();
    s_abandoned.push_back(extension.release());
}

} // namespace

PluginHost::PluginHost() = default;

PluginHost::~PluginHost()
{
    endAll();
}

bool PluginHost::read(const QString& pathOrText, bool isFile)
{
    if (refusesToChange())
        return false;
    std::optional<PluginConfiguration> found = readConfiguration(pathOrText, isFile);
    if (!found)
        return false;
    endAll();
    m_problems.clear();
    m_configuration = std::move(*found);
    m_configurationFile = isFile ? QFileInfo(pathOrText).absoluteFilePath() : QString();
    if (!MrbServices::getInstance() || !MrbShell::getInstance())
        return true; // nobody is there to run for
    loadPlugins(!isFile);
    activateProfile();
    return true;
}

QStringList PluginHost::searchPath() const
{
    const QString preferred =
        QString::fromUtf8(SoPreferences::getValue(kPathPreference).getString());
    QStringList folders = preferred.split(QDir::listSeparator(), Qt::SkipEmptyParts);
    folders << ownFolder() + '/' + MIRABO_PLUGIN_FOLDER << ownFolder();
    if (!m_configurationFile.isEmpty())
        folders << QFileInfo(m_configurationFile).absolutePath();
    return folders;
}

void PluginHost::loadPlugins(bool mayBeMissing)
{
    // Those that stay are not loaded again: their code stays mapped in any case, and so does their
    // root object.
    std::map<QString, std::unique_ptr<PluginLibrary>> before;
    std::swap(before, m_libraries);
    const QStringList folders = searchPath();
    for (const QString& name : qAsConst(m_configuration.plugins)) {
        if (m_libraries.count(name))
            continue;
        std::unique_ptr<PluginLibrary>& library = m_libraries[name];
        if (const auto known = before.find(name); known != before.end() && known->second->plugin())
            library = std::move(known->second);
        if (library)
            continue;
        library = std::make_unique<PluginLibrary>(name);
        QString cause;
        const PluginLibrary::Result result = library->load(folders, cause);
        if (result != PluginLibrary::Result::Loaded)
            report({name, {}, cause}, mayBeMissing && result == PluginLibrary::Result::Missing);
    }
}

const PluginHost::Profile* PluginHost::activeProfile() const
{
    const auto& profiles = m_configuration.profiles;
    const auto at = std::find_if(profiles.begin(), profiles.end(), [this](const Profile& profile) {
        return profile.name == m_configuration.activeProfile;
    });
    return at == profiles.end() ? nullptr : &*at;
}

bool PluginHost::setActiveProfile(const QString& name)
{
    const auto& profiles = m_configuration.profiles;
    if (std::none_of(profiles.begin(), profiles.end(),
                     [&name](const Profile& profile) { return profile.name == name; }))
        return false;
    if (refusesToChange())
        return false;
    endAll();
    m_configuration.activeProfile = name;
    if (MrbServices::getInstance() && MrbShell::getInstance())
        activateProfile();
    return true;
}

void PluginHost::activateProfile()
{
    const Profile* profile = activeProfile();
    if (!profile) {
        if (!m_configuration.profiles.empty())
            SoError::post("Mirabo configuration: there is no profile \"%s\"",
                          m_configuration.activeProfile.toUtf8().constData());
        return;
    }
    for (const Wanted& wanted : profile->extensions) {
        const bool twice =
            std::any_of(m_extensions.begin(), m_extensions.end(), [&](const Owned& other) {
                return other->pluginName() == wanted.plugin && other->name() == wanted.extension;
            });
        if (twice)
            report({wanted.plugin, wanted.extension, "the profile names it twice"});
        else if (Owned extension = start(wanted))
            m_extensions.push_back(std::move(extension));
    }
}

PluginHost::Owned PluginHost::start(const Wanted& wanted)
{
    Owned hosted = create(wanted);
    if (!hosted || !hosted->activate())
        return nullptr;
    startControlled(*hosted, wanted);
    if (hosted->isFailed())
        return nullptr;
    connect(hosted.get(), &HostedExtension::switchOffWanted, this, &PluginHost::end);
    return hosted;
}

void PluginHost::startControlled(HostedExtension& parent, const Wanted& wanted)
{
    for (const Wanted& inner : wanted.controlled)
        if (Owned child = start(inner); child && !parent.isFailed())
            parent.control(std::move(child));
}

PluginHost::Owned PluginHost::create(const Wanted& wanted)
{
    const auto library = m_libraries.find(wanted.plugin);
    if (library == m_libraries.end()) {
        report({wanted.plugin, wanted.extension, "the configuration loads no such plug-in"});
        return nullptr;
    }
    MrbPlugin* plugin = library->second->plugin();
    if (!plugin)
        return nullptr; // reported when it was loaded
    QString cause;
    MrbExtension* extension = make(*plugin, wanted.extension, cause);
    if (!extension) {
        report({wanted.plugin, wanted.extension, cause});
        return nullptr;
    }
    return std::make_unique<HostedExtension>(
        wanted.plugin, wanted.extension, extension,
        [this](const HostedExtension& hosted, const QString& reason) {
            report({hosted.pluginName(), hosted.name(), reason});
        });
}

void PluginHost::end(HostedExtension* extension)
{
    const auto at =
        std::find_if(m_extensions.begin(), m_extensions.end(),
                     [extension](const Owned& some) { return some.get() == extension; });
    if (at == m_extensions.end()) {
        for (const Owned& some : m_extensions)
            if (some->releaseControlled(extension))
                return;
        return;
    }
    const Owned leaving = std::move(*at);
    m_extensions.erase(at);
}

void PluginHost::endAll()
{
    while (!m_extensions.empty()) {
        Owned leaving = std::move(m_extensions.back());
        m_extensions.pop_back();
        // The tool is being stopped from within the extension: it has to be there when that call
        // returns into it.
        if (leaving->isBusy())
            abandon(std::move(leaving));
    }
}

bool PluginHost::refusesToChange() const
{
    const std::vector<HostedExtension*> all = running();
    const auto busy = std::find_if(all.begin(), all.end(),
                                   [](const HostedExtension* hosted) { return hosted->isBusy(); });
    if (busy == all.end())
        return false;
    SoError::post("Mirabo extension \"%s\" may not change the extensions while it runs",
                  (*busy)->name().toUtf8().constData());
    return true;
}

void PluginHost::collect(const std::vector<Owned>& from, std::vector<HostedExtension*>& to) const
{
    for (const Owned& hosted : from) {
        if (!hosted->isFailed())
            to.push_back(hosted.get());
        collect(hosted->controlled(), to);
    }
}

std::vector<HostedExtension*> PluginHost::running() const
{
    std::vector<HostedExtension*> found;
    collect(m_extensions, found);
    return found;
}

std::vector<PluginHost::State> PluginHost::states()
{
    std::vector<State> found;
    if (const Profile* profile = activeProfile())
        addStates(profile->extensions, m_extensions, 0, found);
    return found;
}

void PluginHost::addStates(const std::vector<Wanted>& wanted, const std::vector<Owned>& hosted,
                           int depth, std::vector<State>& to)
{
    static const std::vector<Owned> kNone;
    for (const Wanted& one : wanted) {
        const auto at = std::find_if(hosted.begin(), hosted.end(), [&one](const Owned& some) {
            return some->pluginName() == one.plugin && some->name() == one.extension;
        });
        HostedExtension* running = at != hosted.end() && !(*at)->isFailed() ? at->get() : nullptr;
        State state{one.plugin, one.extension, depth, running != nullptr, {}, {}};
        if (running)
            state.isRunning =
                running->run("getInfo()", [&] { state.info = running->extension()->getInfo(); });
        if (!state.isRunning)
            state.cause = causeOf(one);
        to.push_back(state);
        addStates(one.controlled, running ? running->controlled() : kNone, depth + 1, to);
    }
}

QString PluginHost::causeOf(const Wanted& wanted) const
{
    for (const bool itself : {true, false})
        for (const Problem& problem : m_problems)
            if (problem.plugin == wanted.plugin
                && problem.extension == (itself ? wanted.extension : QString()))
                return problem.cause;
    return "the extension that controls it does not run";
}

std::vector<MrbExtension*> PluginHost::extensions() const
{
    std::vector<MrbExtension*> found;
    for (const HostedExtension* hosted : running())
        found.push_back(hosted->extension());
    return found;
}

std::vector<MrbPluginsManager::PreferencePage> PluginHost::createPreferencePages(QWidget* parent)
{
    std::vector<MrbPluginsManager::PreferencePage> pages;
    for (HostedExtension* hosted : running())
        addPage(hosted, parent, pages);
    return pages;
}

void PluginHost::addPage(HostedExtension* hosted, QWidget* parent,
                         std::vector<MrbPluginsManager::PreferencePage>& pages)
{
    QPointer<MrbPreferencePage> page;
    QString name;
    hosted->run("createPreferencePage()", [&] {
        page = hosted->extension()->createPreferencePage(parent);
        name = hosted->extension()->getInfo().name;
    });
    if (!page || hosted->isFailed()) {
        delete page;
        return;
    }
    hosted->keepUntilEnd(page); // it may end while the dialog is open
    const auto call = [host = QPointer<HostedExtension>(hosted),
                       page](const char* what, void (MrbPreferencePage::*operation)()) {
        if (host && page && !host->isFailed())
            host->run(what, [&] { (page->*operation)(); });
    };
    pages.push_back({name, page, [call] { call("load()", &MrbPreferencePage::load); },
                     [call] { call("save()", &MrbPreferencePage::save); }});
}

void PluginHost::report(const Problem& problem, bool quietly)
{
    m_problems.push_back(problem);
    if (quietly)
        return;
    const QString text =
        QString("Mirabo %1 is switched off: %2").arg(nameOf(problem), problem.cause);
    SoError::post("%s", text.toUtf8().constData());
    if (MrbShell* shell = MrbShell::getInstance())
        shell->showStatusMessage(SbString(text.toLatin1().constData()), kMessageMs);
}

} // namespace mirabo
