#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QString>
#include <QStringList>

#include <vector>

/// Reads which plug-ins and extensions a configuration asks for.
class MRBEXT_API MrbPluginsManager {
public:
    /// An extension that a profile switches on, with the extensions that it controls.
    struct ActiveExtension {
        QString plugin;
        QString extension;
        std::vector<ActiveExtension> controlled;
    };
    struct Profile {
        QString name;
        std::vector<ActiveExtension> extensions;
    };

    /// Created on first use.
    static MrbPluginsManager* getInstance();
    static void releaseInstance();

    /// Reads a configuration from a file, or from XML text. False, with what was read before kept
    /// and the fault posted with line and column, for a file or text that is no configuration.
    bool read(const QString& pathOrText, bool isFile);

    /// Library names without extension, in the order of the configuration.
    const QStringList& getPluginNames() const { return m_plugins; }
    const std::vector<Profile>& getProfiles() const { return m_profiles; }
    /// The configuration's default profile; null when it names none that exists.
    const Profile* getActiveProfile() const;

private:
    MrbPluginsManager() = default;

    QStringList m_plugins;
    std::vector<Profile> m_profiles;
    QString m_defaultProfile;
};
