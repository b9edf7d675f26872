#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace mirabo {

/// Content of a configuration.
struct PluginConfiguration {
    QStringList plugins;
    std::vector<MrbPluginsManager::Profile> profiles;
    QString activeProfile;
};

/// Reads a file, or XML text. Nothing, with the fault posted with line and column, for a file or
/// text that is no configuration.
std::optional<PluginConfiguration> readConfiguration(const QString& pathOrText, bool isFile);

} // namespace mirabo
