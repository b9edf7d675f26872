#pragma once

#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extender/private/ConfigurationReader.h"

#include <QObject>

#include <map>
#include <memory>
#include <vector>

namespace mirabo {

class HostedExtension;
class PluginLibrary;

/// Owns the running part of a configuration: its libraries and the extensions of the active
/// profile.
class PluginHost final : public QObject {
    Q_OBJECT

public:
    using Profile = MrbPluginsManager::Profile;
    using Problem = MrbPluginsManager::Problem;

    PluginHost();
    ~PluginHost() override;

    bool read(const QString& pathOrText, bool isFile);
    bool setActiveProfile(const QString& name);

    const PluginConfiguration& configuration() const { return m_configuration; }
    const Profile* activeProfile() const;
    std::vector<MrbExtension*> extensions() const;
    const std::vector<Problem>& problems() const { return m_problems; }
    const QString& configurationFile() const { return m_configurationFile; }
    std::vector<MrbPluginsManager::ExtensionState> states();
    QStringList searchPath() const;
    std::vector<MrbPluginsManager::PreferencePage> createPreferencePages(QWidget* parent);

private:
    using Wanted = MrbPluginsManager::ActiveExtension;
    using Owned = std::unique_ptr<HostedExtension>;
    using State = MrbPluginsManager::ExtensionState;

    void addStates(const std::vector<Wanted>& wanted, const std::vector<Owned>& hosted, int depth,
                   std::vector<State>& to);
    QString causeOf(const Wanted& wanted) const;
    void loadPlugins(bool mayBeMissing);
    void activateProfile();
    /// Null, reported, when it does not run.
    Owned start(const Wanted& wanted);
    Owned create(const Wanted& wanted);
    void startControlled(HostedExtension& parent, const Wanted& wanted);
    void end(HostedExtension* extension);
    void endAll();
    bool refusesToChange() const;
    void collect(const std::vector<Owned>& from, std::vector<HostedExtension*>& to) const;
    std::vector<HostedExtension*> running() const;
    void addPage(HostedExtension* hosted, QWidget* parent,
                 std::vector<MrbPluginsManager::PreferencePage>& pages);
    void report(const Problem& problem, bool quietly = false);

    PluginConfiguration m_configuration;
    QString m_configurationFile; ///< empty for text
    // Declared before the extensions: the libraries go last.
    std::map<QString, std::unique_ptr<PluginLibrary>> m_libraries;
    std::vector<Owned> m_extensions;
    std::vector<Problem> m_problems;
};

} // namespace mirabo
