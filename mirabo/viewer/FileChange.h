#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <optional>

namespace mirabo {

/// Notices that a file was written, replaced or deleted by somebody else.
class FileChange final : public QObject {
    Q_OBJECT

public:
    explicit FileChange(QObject* parent = nullptr);

    /// Watches a file from its present state on; empty: none. To be called again when the program
    /// itself has written it.
    void watch(const QString& fileName);
    const QString& fileName() const { return m_fileName; }

Q_SIGNALS:
    /// Once until the next watch(), when the file has not changed any further for a moment.
    void changed(bool isDeleted);

private:
    /// Tells two states of a file apart.
    struct Stamp {
        std::uint64_t device;
        std::uint64_t number; ///< of the inode
        std::int64_t size;
        std::int64_t seconds; ///< of the last change, with the nanoseconds
        std::int64_t nanoseconds;
        bool operator==(const Stamp&) const = default;
    };
    static std::optional<Stamp> stampOf(const QString& fileName);
    void look();

    QFileSystemWatcher m_watcher;
    QTimer m_settled;
    QString m_fileName;
    std::optional<Stamp> m_known; ///< nothing: there is no file
    std::optional<Stamp> m_last;  ///< as found by the look before
    bool m_told = false;
};

} // namespace mirabo
