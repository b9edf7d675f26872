#include "mirabo/extender/private/PluginLibrary.h"

#include "mirabo/extender/MrbPlugin.h"

#include <kalmyr/base/SoDynamicLibManager.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QPluginLoader>

#include <exception>

namespace mirabo {

namespace {

constexpr char kOwnVersion[] = MRB_PLUGIN_API;

/// The part of our interface's name that all its versions share.
QString interfaceName()
{
    const QString iid = MrbPlugin_iid;
    return iid.left(iid.indexOf('/') + 1);
}

struct Version {
    explicit Version(const QString& text)
        : major(text.section('.', 0, 0).toInt()), minor(text.section('.', 1, 1).toInt())
    {
    }
    int major;
    int minor;
};

bool isCompatible(const QString& version)
{
    const Version theirs(version);
    const Version ours(kOwnVersion);
    return theirs.major == ours.major && theirs.minor <= ours.minor;
}

} // namespace

PluginLibrary::PluginLibrary(const QString& name) : m_name(name) {}

PluginLibrary::~PluginLibrary()
{
    if (m_loader)
        m_loader->unload();
}

bool PluginLibrary::find(const QStringList& folders)
{
    const SbString plain(m_name.toUtf8().constData());
    const QString decorated = QString::fromUtf8(SoDynamicLibManager::fileName(plain).getString());
    const QString suffix = '.' + QFileInfo(decorated).suffix();
    for (const QString& folder : folders)
        for (const QString& file : {decorated, m_name + suffix, m_name}) {
            const QFileInfo info(QDir(folder), file); // an absolute name leaves the folder aside
            if (!info.isFile())
                continue;
            m_path = info.absoluteFilePath();
            return true;
        }
    return false;
}

PluginLibrary::Result PluginLibrary::load(const QStringList& folders, QString& cause)
{
    if (m_name.isEmpty()) {
        cause = "the configuration gives no name";
        return Result::Unusable;
    }
    if (!find(folders)) {
        cause = "no such library in " + folders.join(", ");
        return Result::Missing;
    }
    m_loader = std::make_unique<QPluginLoader>(m_path);
    // A symbol that is missing is to fail here, not in the middle of a call.
    m_loader->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!checkInterface(cause))
        return Result::Unusable;
    instantiate(cause);
    return m_plugin ? Result::Loaded : Result::Unusable;
}

// Read from the file: nothing of the library runs before it is known to fit.
bool PluginLibrary::checkInterface(QString& cause) const
{
    const QString iid = m_loader->metaData().value("IID").toString();
    if (iid.isEmpty()) {
        m_loader->load();
        cause = m_loader->errorString();
    } else if (!iid.startsWith(interfaceName())) {
        cause = QString("%1 is no extension plug-in (its interface is %2)").arg(m_path, iid);
    } else if (const QString version = iid.mid(interfaceName().size()); !isCompatible(version)) {
        cause = QString("%1 was built for version %2 of the extension interface, this is %3")
                    .arg(m_path, version, kOwnVersion);
    } else {
        return true;
    }
    return false;
}

void PluginLibrary::instantiate(QString& cause)
{
    try {
        QObject* root = m_loader->instance();
        m_plugin = qobject_cast<MrbPlugin*>(root);
        if (!root)
            cause = m_loader->errorString();
        else if (!m_plugin)
            cause = m_path + " has a root object that is no MrbPlugin";
    } catch (const std::exception& error) {
        cause = "its root object threw: " + QString::fromLocal8Bit(error.what());
    } catch (...) {
        cause = "its root object threw an exception of unknown type";
    }
}

} // namespace mirabo
