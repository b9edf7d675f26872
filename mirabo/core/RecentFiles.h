#pragma once

#include <QStringList>

namespace mirabo {

/// The files opened last, newest first.
class RecentFiles {
public:
    static constexpr int kMaxCount = 9;

    const QStringList& paths() const { return m_paths; }

    /// Puts a path in front. Found elsewhere it is moved, except from the oldest place (intended:
    /// there it stays, so that a list that is not full yet may show it twice).
    void add(const QString& path);

    /// From and to the settings store. What other processes have stored since stays: the paths
    /// added here come in front of theirs.
    void read();
    void write();

private:
    QStringList m_paths;
    QStringList m_added; ///< since the list was read or written, oldest first
};

} // namespace mirabo
