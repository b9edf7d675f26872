// Whether Qt can open a display: it ends the process when it cannot, so that is found out before.
// The display is tried through the window system's own library, loaded when it is needed: a child
// process would be asked in vain in a program with threads, and a fixed link would tie every host
// to X.

#include <kalmyr/qt/SoQt.h>

#include <kalmyr/base/SbString.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

#include <string_view>

namespace {

/// The settings of the environment and the command line that Qt reads.
struct Wishes {
    QStringList platforms; ///< in the order in which they are tried
    QString pluginPath;
    QByteArray display; ///< of X; empty: the environment's
};

QStringList defaultPlatforms()
{
    const QByteArray desktop =
        qgetenv("XDG_CURRENT_DESKTOP").toLower() + qgetenv("XDG_SESSION_DESKTOP").toLower();
    if (qgetenv("XDG_SESSION_TYPE") == "wayland" && !desktop.contains("gnome"))
        return {"wayland", "xcb"};
    return {"xcb"};
}

Wishes wishesOf(int argc, char** argv)
{
    Wishes wishes;
    QString names = qEnvironmentVariable("QT_QPA_PLATFORM");
    wishes.pluginPath = qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH");
    for (int i = 1; argv && i + 1 < argc; ++i) {
        if (!argv[i] || !argv[i + 1])
            continue;
        const std::string_view option = argv[i];
        if (option == "-platform" || option == "--platform")
            names = QString::fromLocal8Bit(argv[i + 1]);
        else if (option == "-platformpluginpath" || option == "--platformpluginpath")
            wishes.pluginPath = QString::fromLocal8Bit(argv[i + 1]);
        else if (option == "-display" || option == "--display")
            wishes.display = argv[i + 1];
    }
    wishes.platforms = names.isEmpty() ? defaultPlatforms() : names.split(';', Qt::SkipEmptyParts);
    return wishes;
}

QStringList pluginFolders(const Wishes& wishes)
{
    QStringList folders;
    if (!wishes.pluginPath.isEmpty())
        folders << wishes.pluginPath;
    for (const QString& path : QCoreApplication::libraryPaths())
        folders << path + "/platforms";
    // Known to Qt once the application is there.
    folders << QFileInfo(QFile::symLinkTarget("/proc/self/exe")).absolutePath() + "/platforms";
    return folders;
}

/// The plug-in of a platform is there, with all that it needs.
bool hasPlugin(const QString& platform, const QStringList& folders)
{
    for (const QString& folder : folders)
        for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files)) {
            if (!QLibrary::isLibrary(file.fileName()))
                continue;
            QPluginLoader plugin(file.absoluteFilePath());
            const QJsonValue keys = plugin.metaData().value("MetaData").toObject().value("Keys");
            for (const QJsonValue& key : keys.toArray())
                if (key.toString().compare(platform, Qt::CaseInsensitive) == 0 && plugin.load())
                    return true; // Qt loads it as well
        }
    return false;
}

bool canOpenX(const QByteArray& display)
{
    using Connect = void* (*)(const char*, int*);
    using HasError = int (*)(void*);
    using Disconnect = void (*)(void*);
    QLibrary library("xcb", 1);
    const auto connect = reinterpret_cast<Connect>(library.resolve("xcb_connect"));
    const auto hasError = reinterpret_cast<HasError>(library.resolve("xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<Disconnect>(library.resolve("xcb_disconnect"));
    if (!connect || !hasError || !disconnect)
        return false;
    void* connection = connect(display.isEmpty() ? nullptr : display.constData(), nullptr);
    const bool opened = hasError(connection) == 0;
    disconnect(connection);
    return opened;
}

bool canOpenWayland()
{
    using Connect = void* (*)(const char*);
    using Disconnect = void (*)(void*);
    QLibrary library("wayland-client", 0);
    const auto connect = reinterpret_cast<Connect>(library.resolve("wl_display_connect"));
    const auto disconnect = reinterpret_cast<Disconnect>(library.resolve("wl_display_disconnect"));
    void* display = connect && disconnect ? connect(nullptr) : nullptr;
    if (display)
        disconnect(display);
    return display;
}

/// Platforms that draw without a window system are taken on trust.
bool canOpen(const QString& platform, const Wishes& wishes)
{
    if (platform.compare("xcb", Qt::CaseInsensitive) == 0)
        return canOpenX(wishes.display);
    return !platform.startsWith("wayland", Qt::CaseInsensitive) || canOpenWayland();
}

} // namespace

SbString SoQt::whyNoDisplay([[maybe_unused]] int argc, [[maybe_unused]] char** argv)
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    if (QCoreApplication::instance())
        return {};
    const Wishes wishes = wishesOf(argc, argv);
    const QStringList folders = pluginFolders(wishes);
    QStringList tried;
    for (const QString& wish : wishes.platforms) {
        const QString platform = wish.section(':', 0, 0).trimmed();
        if (!hasPlugin(platform, folders))
            tried << QString("there is no usable plug-in for the platform \"%1\"").arg(platform);
        else if (!canOpen(platform, wishes))
            tried << QString("no display can be opened on the platform \"%1\"").arg(platform);
        else
            return {};
    }
    return SbString(tried.join("; ").toUtf8().constData());
#else
    return {};
#endif
}
