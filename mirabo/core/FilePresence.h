#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

namespace mirabo {

/// Finds out which files exist, in a thread of its own: a folder of a network that does not answer
/// keeps nobody waiting, not even at the end of the program.
class FilePresence final : public QObject {
    Q_OBJECT

public:
    explicit FilePresence(QObject* parent = nullptr);
    ~FilePresence() override;

    /// Looks at each path, in order. While an earlier check goes on only the last list waits.
    void check(const QStringList& paths);

Q_SIGNALS:
    /// For each path of a list, from the event loop.
    void checked(const QString& path, bool exists);

private:
    struct Owner;
    void start(const QStringList& paths);
    void finished();

    std::shared_ptr<Owner> m_owner; ///< shared with the thread; never null
    QStringList m_waiting;
    bool m_checking = false;
};

} // namespace mirabo
