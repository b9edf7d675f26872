#include "mirabo/core/FilePresence.h"

#include <QFileInfo>

#include <mutex>
#include <thread>
#include <utility>

namespace mirabo {

/// Tells the thread whether there is still somebody to be told.
struct FilePresence::Owner {
    std::mutex mutex;
    FilePresence* presence;

    explicit Owner(FilePresence* self) : presence(self) {}
    template <class Call>
    void call(Call call)
    {
        const std::scoped_lock lock(mutex);
        if (presence)
            QMetaObject::invokeMethod(
                presence, [call, self = presence] { call(self); }, Qt::QueuedConnection);
    }
};

FilePresence::FilePresence(QObject* parent)
    : QObject(parent), m_owner(std::make_shared<Owner>(this))
{
}

FilePresence::~FilePresence()
{
    const std::scoped_lock lock(m_owner->mutex);
    m_owner->presence = nullptr;
}

void FilePresence::check(const QStringList& paths)
{
    if (m_checking)
        m_waiting = paths;
    else if (!paths.isEmpty())
        start(paths);
}

void FilePresence::start(const QStringList& paths)
{
    m_checking = true;
    std::thread([owner = m_owner, paths] {
        for (const QString& path : paths) {
            const bool exists = QFileInfo::exists(path);
            owner->call([path, exists](FilePresence* self) { Q_EMIT self->checked(path, exists); });
        }
        owner->call([](FilePresence* self) { self->finished(); });
    }).detach();
}

void FilePresence::finished()
{
    m_checking = false;
    check(std::exchange(m_waiting, {}));
}

} // namespace mirabo
