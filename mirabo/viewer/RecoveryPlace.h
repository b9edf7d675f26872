#pragma once

#include <QDateTime>
#include <QLockFile>
#include <QString>

#include <memory>

namespace mirabo {

/// Place on the disk of a copy of unsaved work: the scene, a description of what it is a copy of,
/// and a lock that tells whether the program that wrote it still runs.
class RecoveryPlace {
public:
    /// Of this user, for all runs of the program.
    static QString folder();

    /// A new place. Null when there is none to be had.
    static std::unique_ptr<RecoveryPlace> create(const QString& folder);
    /// The newest copy whose program has ended without removing it; it belongs to this run from
    /// then on. Null when there is none.
    static std::unique_ptr<RecoveryPlace> takeAbandoned(const QString& folder);

    /// Leaves a copy where it is.
    ~RecoveryPlace() = default;

    /// The scene, in Kalmyr's own format.
    QString scenePath() const { return m_base + ".ky"; }
    /// There is a complete copy now, of a document with that file (empty: it has none).
    void setDescription(const QString& file);
    /// The document's file, as an absolute path.
    const QString& getFile() const { return m_file; }
    const QDateTime& getTime() const { return m_time; }
    /// Removes the copy. The place can be used again.
    void clear();

private:
    explicit RecoveryPlace(const QString& base);
    QString descriptionPath() const { return m_base + ".ini"; }

    QString m_base; ///< path without extension
    QLockFile m_lock;
    QString m_file;
    QDateTime m_time;
};

} // namespace mirabo
