#pragma once

#include <QString>

namespace mirabo {

/// Where the description of plug-ins and profiles comes from.
struct Configuration {
    QString pathOrText;
    bool isFile = false; ///< false: pathOrText is the XML text itself
};

/// Name of the in-memory text file with the built-in minimal configuration.
inline constexpr char kBuiltInConfigurationName[] = "MrbMinimal_xml";

/// The built-in configuration: the default plug-in's "Field Editor" with an editor per field type.
QString builtInConfiguration();
void registerBuiltInConfiguration();

/// The preference KMR_MIRABO_CONFIGURATION_FILE, then the current folder, then the built-in text.
Configuration findConfiguration();

} // namespace mirabo
