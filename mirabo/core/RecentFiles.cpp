#include "mirabo/core/RecentFiles.h"

#include "mirabo/preferences/Settings.h"

#include <utility>

namespace mirabo {

namespace {

QString key(int number)
{
    return QString(kMainFrameGroup) + "/File" + QString::number(number);
}

QStringList readPaths()
{
    QStringList paths;
    for (int i = 1; i <= RecentFiles::kMaxCount; ++i) {
        const QString path = readText(key(i));
        if (!path.isEmpty())
            paths << path;
    }
    return paths;
}

void addTo(QStringList& paths, const QString& path)
{
    const int at = paths.indexOf(path);
    if (at >= 0 && at < paths.size() - 1)
        paths.removeAt(at);
    paths.prepend(path);
    if (paths.size() > RecentFiles::kMaxCount)
        paths.removeLast();
}

} // namespace

void RecentFiles::add(const QString& path)
{
    addTo(m_paths, path);
    m_added << path;
}

void RecentFiles::read()
{
    m_paths = readPaths();
    m_added.clear();
}

void RecentFiles::write()
{
    syncSettings();
    m_paths = readPaths();
    for (const QString& path : std::exchange(m_added, {}))
        addTo(m_paths, path);
    const SettingsChange change;
    for (int i = 1; i <= kMaxCount; ++i)
        writeSetting(key(i), m_paths.value(i - 1));
}

} // namespace mirabo
