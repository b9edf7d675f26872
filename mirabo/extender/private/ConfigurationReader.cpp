#include "mirabo/extender/private/ConfigurationReader.h"

#include <kalmyr/base/SoReadError.h>

#include <QFile>
#include <QXmlStreamReader>

namespace mirabo {

namespace {

/// Controlled extensions within controlled extensions.
constexpr int kMaxDepth = 16;

using ActiveExtension = MrbPluginsManager::ActiveExtension;
using Profile = MrbPluginsManager::Profile;

QString attribute(const QXmlStreamReader& xml, const char* name)
{
    return xml.attributes().value(QLatin1String(name)).toString();
}

ActiveExtension readExtension(QXmlStreamReader& xml, int depth = 0)
{
    ActiveExtension found{attribute(xml, "plugin"), attribute(xml, "extension"), {}};
    if (depth > kMaxDepth)
        xml.raiseError("controlled extensions are nested too deeply");
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("controlledExtension"))
            found.controlled.push_back(readExtension(xml, depth + 1));
        else
            xml.skipCurrentElement();
    }
    return found;
}

Profile readProfile(QXmlStreamReader& xml)
{
    Profile profile{attribute(xml, "name"), {}};
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("activeExtension"))
            profile.extensions.push_back(readExtension(xml));
        else
            xml.skipCurrentElement();
    }
    return profile;
}

void readPlugins(QXmlStreamReader& xml, QStringList& plugins)
{
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("loadPlugin"))
            plugins << attribute(xml, "file");
        xml.skipCurrentElement();
    }
}

void readProfiles(QXmlStreamReader& xml, std::vector<Profile>& profiles, QString& active)
{
    active = attribute(xml, "default");
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("profile"))
            profiles.push_back(readProfile(xml));
        else
            xml.skipCurrentElement();
    }
}

void readContent(QXmlStreamReader& xml, PluginConfiguration& found)
{
    if (xml.readNextStartElement() && xml.name() != QLatin1String("configuration"))
        xml.raiseError("expected the element \"configuration\"");
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("plugins"))
            readPlugins(xml, found.plugins);
        else if (xml.name() == QLatin1String("profiles"))
            readProfiles(xml, found.profiles, found.activeProfile);
        else
            xml.skipCurrentElement();
    }
}

} // namespace

std::optional<PluginConfiguration> readConfiguration(const QString& pathOrText, bool isFile)
{
    QFile file(isFile ? pathOrText : QString());
    QXmlStreamReader xml;
    const QByteArray source = isFile ? pathOrText.toUtf8() : QByteArray("built-in configuration");
    if (isFile && !file.open(QIODevice::ReadOnly)) {
        SoReadError::post(source.constData(), 0, 0, "%s", file.errorString().toUtf8().constData());
        return {};
    }
    if (isFile)
        xml.setDevice(&file);
    else
        xml.addData(pathOrText);
    PluginConfiguration found;
    readContent(xml, found);
    if (!xml.hasError())
        return found;
    SoReadError::post(source.constData(), static_cast<int>(xml.lineNumber()),
                      static_cast<int>(xml.columnNumber()) + 1, "%s",
                      xml.errorString().toUtf8().constData());
    return {};
}

} // namespace mirabo
