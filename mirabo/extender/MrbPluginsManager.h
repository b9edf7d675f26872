#pragma once

#include "mirabo/extender/MrbExport.h"
#include "mirabo/extender/MrbExtension.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QWidget;

namespace mirabo {
class PluginHost;
}

/// Loads the plug-ins that a configuration names and runs the extensions of its active profile.
///
/// A plug-in that is missing, broken or built for another version of the interface, and an
/// extension that refuses, fails or throws, is reported: as a toolkit error, in the status bar and
/// in getProblems(). It is then left out; everything else goes on.
///
/// Plug-ins are looked for in this order: an absolute name where it says; the folders of the
/// preference or environment variable KMR_MIRABO_PLUGIN_PATH; the folder "mirabo-plugins" beside
/// the tool's library, and the library's own folder; the folder of the configuration file.
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
    /// Why something of the configuration does not run.
    struct Problem {
        QString plugin;
        QString extension; ///< empty: the whole plug-in
        QString cause;
    };
    /// State of an extension that the profile in force names.
    struct ExtensionState {
        QString plugin;
        QString extension;
        int depth; ///< 0, or how many extensions it is controlled by in turn
        bool isRunning;
        MrbExtensionInfo info; ///< empty when it does not run
        QString cause;         ///< why it does not run
    };
    /// A page for the preferences dialog; the operations never throw.
    struct PreferencePage {
        QString name;
        QWidget* widget; ///< owned by the parent it was made for; goes with its extension, too
        std::function<void()> load;
        std::function<void()> save;
    };

    /// Created on first use.
    static MrbPluginsManager* getInstance();
    /// Ends all extensions and lets go of the plug-ins. An extension from whose code this is called
    /// is only cut off, and left to its call.
    static void releaseInstance();

    /// Reads a configuration from a file, or from XML text (the built-in one), ends what ran
    /// before, loads the plug-ins and, while the tool runs, activates the extensions of the default
    /// profile. A library that the built-in configuration names and that is not there is no error.
    /// False, with everything as it was and the fault posted with line and column, for a file or
    /// text that is no configuration.
    bool read(const QString& pathOrText, bool isFile);

    /// Library names without extension, in the order of the configuration.
    const QStringList& getPluginNames() const;
    const std::vector<Profile>& getProfiles() const;
    /// The profile in force; null when the configuration names none that exists.
    const Profile* getActiveProfile() const;
    /// Ends the extensions of the profile in force and starts those of this one. False, with
    /// nothing done, for an unknown name, or (posted) from within an extension's code; read()
    /// neither.
    bool setActiveProfile(const QString& name);

    /// The file that the configuration was read from; empty for text.
    const QString& getConfigurationFile() const;
    /// The extensions that the profile in force names, running or not; a controlling one before
    /// those that it controls.
    std::vector<ExtensionState> getExtensionStates() const;
    /// The running extensions, a controlling one before those that it controls. Not owned.
    std::vector<MrbExtension*> getExtensions() const;
    /// In the order in which they came up, since the configuration was read.
    const std::vector<Problem>& getProblems() const;
    /// The folders that plug-ins are looked for in.
    QStringList getSearchPath() const;

    /// Asks every running extension for its preference page, a child of `parent`.
    std::vector<PreferencePage> createPreferencePages(QWidget* parent);

private:
    MrbPluginsManager();
    ~MrbPluginsManager();

    std::unique_ptr<mirabo::PluginHost> m_host;
};
