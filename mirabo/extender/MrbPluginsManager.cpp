#include "mirabo/extender/MrbPluginsManager.h"

#include <kalmyr/base/SoReadError.h>

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

MrbPluginsManager* s_instance = nullptr;

using ActiveExtension = MrbPluginsManager::ActiveExtension;
using Profile = MrbPluginsManager::Profile;

QString attribute(const QXmlStreamReader& xml, const char* name)
{
    return xml.attributes().value(QLatin1String(name)).toString();
}

ActiveExtension readExtension(QXmlStreamReader& xml)
{
    ActiveExtension found{attribute(xml, "plugin"), attribute(xml, "extension"), {}};
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("controlledExtension"))
            found.controlled.push_back(readExtension(xml));
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

} // namespace

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

bool MrbPluginsManager::read(const QString& pathOrText, bool isFile)
{
    QFile file(isFile ? pathOrText : QString());
    QXmlStreamReader xml;
    const QByteArray source = isFile ? pathOrText.toUtf8() : QByteArray("built-in configuration");
    if (isFile && !file.open(QIODevice::ReadOnly)) {
        SoReadError::post(source.constData(), 0, 0, "%s", file.errorString().toUtf8().constData());
        return false;
    }
    if (isFile)
        xml.setDevice(&file);
    else
        xml.addData(pathOrText);
    QStringList plugins;
    std::vector<Profile> profiles;
    QString active;
    if (xml.readNextStartElement() && xml.name() != QLatin1String("configuration"))
        xml.raiseError("expected the element \"configuration\"");
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("plugins"))
            readPlugins(xml, plugins);
        else if (xml.name() == QLatin1String("profiles"))
            readProfiles(xml, profiles, active);
        else
            xml.skipCurrentElement();
    }
    if (xml.hasError()) {
        SoReadError::post(source.constData(), static_cast<int>(xml.lineNumber()),
                          static_cast<int>(xml.columnNumber()) + 1, "%s",
                          xml.errorString().toUtf8().constData());
        return false;
    }
    m_plugins = plugins;
    m_profiles = std::move(profiles);
    m_defaultProfile = active;
    return true;
}

const MrbPluginsManager::Profile* MrbPluginsManager::getActiveProfile() const
{
    const auto at =
        std::find_if(m_profiles.begin(), m_profiles.end(),
                     [this](const Profile& profile) { return profile.name == m_defaultProfile; });
    return at == m_profiles.end() ? nullptr : &*at;
}
