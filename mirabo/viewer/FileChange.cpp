#include "mirabo/viewer/FileChange.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace mirabo {

namespace {

/// A file that is being written changes many times.
constexpr int kSettleMs = 250;

} // namespace

FileChange::FileChange(QObject* parent) : QObject(parent)
{
    for (QObject* part : std::initializer_list<QObject*>{&m_watcher, &m_settled})
        part->setParent(this);
    m_settled.setObjectName("fileSettles");
    m_settled.setSingleShot(true);
    m_settled.setInterval(kSettleMs);
    connect(&m_settled, &QTimer::timeout, this, &FileChange::look);
    // A file that is replaced is another one; its folder tells of that.
    for (const auto signal :
         {&QFileSystemWatcher::fileChanged, &QFileSystemWatcher::directoryChanged})
        connect(&m_watcher, signal, this, [this] {
            if (!m_settled.isActive())
                m_settled.start();
        });
}

std::optional<FileChange::Stamp> FileChange::stampOf(const QString& fileName)
{
    struct stat status {};
    if (fileName.isEmpty() || stat(QFile::encodeName(fileName).constData(), &status) != 0)
        return std::nullopt;
    return Stamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                 status.st_mtim.tv_nsec};
}

void FileChange::watch(const QString& fileName)
{
    m_settled.stop();
    m_told = false;
    m_known = m_last = stampOf(fileName);
    if (fileName != m_fileName) {
        if (const QStringList paths = m_watcher.files() + m_watcher.directories(); !paths.isEmpty())
            m_watcher.removePaths(paths);
        m_fileName = fileName;
    }
    if (fileName.isEmpty())
        return;
    const QFileInfo file(fileName);
    for (const QString& path : {file.absolutePath(), file.absoluteFilePath()})
        if (QFileInfo::exists(path))
            m_watcher.addPath(path); // those that are watched already stay
}

void FileChange::look()
{
    const std::optional<Stamp> now = stampOf(m_fileName);
    const bool isWritten = m_last != now;
    m_last = now;
    if (now)
        m_watcher.addPath(QFileInfo(m_fileName).absoluteFilePath()); // perhaps another one
    if (m_told || now == m_known)
        return;
    if (isWritten) {
        m_settled.start();
        return;
    }
    m_told = true;
    Q_EMIT changed(!now);
}

} // namespace mirabo
