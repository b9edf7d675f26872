#include "mirabo/core/RecentFiles.h"

#include "mirabo/preferences/Settings.h"

#include <QSettings>

namespace mirabo {

namespace {

QString key(int number)
{
    return QString(kMainFrameGroup) + "/File" + QString::number(number);
}

} // namespace

void RecentFiles::add(const QString& path)
{
    const int at = m_paths.indexOf(path);
    if (at >= 0 && at < m_paths.size() - 1)
        m_paths.removeAt(at);
    m_paths.prepend(path);
    if (m_paths.size() > kMaxCount)
        m_paths.removeLast();
}

void RecentFiles::read()
{
    m_paths.clear();
    for (int i = 1; i <= kMaxCount; ++i) {
        const QString path = readText(key(i), QString());
        if (!path.isEmpty())
            m_paths << path;
    }
}

void RecentFiles::write() const
{
    for (int i = 1; i <= kMaxCount; ++i)
        settings().setValue(key(i), m_paths.value(i - 1));
}

} // namespace mirabo
