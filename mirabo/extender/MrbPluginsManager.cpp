#include "mirabo/extender/MrbPluginsManager.h"

#include "mirabo/extender/MrbPlugin.h"
#include "mirabo/extender/private/PluginHost.h"

namespace {

MrbPluginsManager* s_instance = nullptr;

} // namespace

MrbPlugin::~MrbPlugin() = default;

MrbPluginsManager* MrbPluginsManager::getInstance()
{
    if (!s_instance)
        s_instance = new MrbPluginsManager;
    return s_instance;
}

void MrbPluginsManager::releaseInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

MrbPluginsManager::MrbPluginsManager() : m_host(std::make_unique<mirabo::PluginHost>()) {}
MrbPluginsManager::~MrbPluginsManager() = default;

bool MrbPluginsManager::read(const QString& pathOrText, bool isFile)
{
    return m_host->read(pathOrText, isFile);
}

const QStringList& MrbPluginsManager::getPluginNames() const
{
    return m_host->configuration().plugins;
}

const std::vector<MrbPluginsManager::Profile>& MrbPluginsManager::getProfiles() const
{
    return m_host->configuration().profiles;
}

const MrbPluginsManager::Profile* MrbPluginsManager::getActiveProfile() const
{
    return m_host->activeProfile();
}

bool MrbPluginsManager::setActiveProfile(const QString& name)
{
    return m_host->setActiveProfile(name);
}

const QString& MrbPluginsManager::getConfigurationFile() const
{
    return m_host->configurationFile();
}

std::vector<MrbPluginsManager::ExtensionState> MrbPluginsManager::getExtensionStates() const
{
    return m_host->states();
}

std::vector<MrbExtension*> MrbPluginsManager::getExtensions() const
{
    return m_host->extensions();
}

const std::vector<MrbPluginsManager::Problem>& MrbPluginsManager::getProblems() const
{
    return m_host->problems();
}

QStringList MrbPluginsManager::getSearchPath() const
{
    return m_host->searchPath();
}

std::vector<MrbPluginsManager::PreferencePage>
MrbPluginsManager::createPreferencePages(QWidget* parent)
{
    return m_host->createPreferencePages(parent);
}
