#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class MrbPlugin;
class QPluginLoader;

namespace mirabo {

/// A plug-in library: found, checked, loaded.
///
/// Its root object goes with this; its code stays mapped until the process ends, since a widget or
/// a queued call may outlive every care.
class PluginLibrary {
public:
    enum class Result { Loaded, Missing, Unusable };

    /// The name as the configuration has it: a library name without prefix and suffix, a file name,
    /// or an absolute path.
    explicit PluginLibrary(const QString& name);
    ~PluginLibrary();

    /// Looks through the folders in order. Anything but Loaded comes with the cause.
    Result load(const QStringList& folders, QString& cause);

    const QString& name() const { return m_name; }
    /// The file; empty when none was found.
    const QString& path() const { return m_path; }
    /// Null unless loaded.
    MrbPlugin* plugin() const { return m_plugin; }

private:
    bool find(const QStringList& folders);
    bool checkInterface(QString& cause) const;
    void instantiate(QString& cause);

    QString m_name;
    QString m_path;
    std::unique_ptr<QPluginLoader> m_loader;
    MrbPlugin* m_plugin = nullptr; // Not owned; the loader's.
};

} // namespace mirabo
