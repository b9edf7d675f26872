#pragma once

#include "mirabo/core/ReadMessages.h"
#include "mirabo/core/RecentFiles.h"

#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>

class LiveInput;
class QMainWindow;
class SoNode;

namespace mirabo {

/// The scene as a document: the file that it came from, the files opened last, and what reading
/// them told. Boxes and progress are shown in a window, which may die at any time: nothing is told
/// or shown afterwards.
///
/// Opening replaces the scene only when the file could be read.
class Document {
public:
    /// Questions and news of the document. All are called in the thread of its functions.
    struct Listener {
        /// Whether another scene may take the present one's place.
        std::function<bool()> mayReplace;
        /// Shows a scene that was read, from the present file once more or from another one. The
        /// file's name is set already.
        std::function<void(SoNode* root, bool isReload)> show;
        std::function<void()> fileChanged;
        std::function<void(const ReadMessages&)> messagesChanged;
        std::function<void(const QStringList&)> recentFilesChanged;
    };

    explicit Document(Listener listener);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// Null: none any more.
    void setWindow(QMainWindow* window);

    /// Empty without one.
    const QString& getFile() const { return m_file; }
    /// The scene has another file now, or none; the title of the window tells which.
    void setFile(const QString& fileName);
    /// The scene was saved to a file, which is its own from now on; empty: it has none any more.
    void adoptFile(const QString& fileName);

    /// Reads a file and makes it the document. False, with a message shown, when it cannot be read.
    bool open(const QString& fileName);
    /// As open(), but asks whether the present scene may go, and tells nothing of a file that
    /// cannot be opened at all.
    bool openDropped(const QString& fileName);
    /// Opens one of the recent files (0: the newest), after asking.
    void reopen(int index);
    /// Reads a whole scene from an opened input and makes it the document. False, with the first
    /// error shown, when it cannot be read.
    bool read(LiveInput& input);
    /// Reads a copy of a document that has another file (empty: none), from then on its own. False,
    /// with a message shown, when it cannot be read.
    bool restore(const QString& copy, const QString& fileName);
    /// A file is being read: the window is painted meanwhile, and timers of the host run, but
    /// nothing may be replaced or torn down.
    bool isReading() const { return m_reading; }
    /// The scene is to be closed: asks; true when it has no file any more.
    bool close();

    /// Adds what reading another file, which the scene refers to, gave.
    void addMessages(const ReadMessages& messages);

    void addRecentFile(const QString& path);
    /// From and to the settings store.
    void readRecentFiles();
    void writeRecentFiles() { m_recentFiles.write(); }

private:
    bool openAs(const QString& path, const QString& fileName);
    bool readAs(LiveInput& input, const QString& fileName);
    void setMessages(const ReadMessages& messages);
    SoNode* readNodes(LiveInput& input);
    void tellLoaded(double seconds);

    Listener m_listener;
    QPointer<QMainWindow> m_window; // Not owned.
    QString m_file;
    RecentFiles m_recentFiles;
    ReadMessages m_messages;
    ReadMessages m_gathered; ///< of the file that is being read
    bool m_reading = false;
};

} // namespace mirabo
