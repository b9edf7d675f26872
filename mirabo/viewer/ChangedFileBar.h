#pragma once

#include <QToolBar>

class QMainWindow;

namespace mirabo {

/// Tells that another program has changed the scene's file, and offers to read it anew. Stands
/// below the tool bars of a window until it is answered.
class ChangedFileBar final : public QToolBar {
    Q_OBJECT

public:
    /// The window owns it.
    ChangedFileBar(QMainWindow* window, const QString& fileName, bool isDeleted);

    /// Takes it out of the window; it is deleted later.
    void remove();

Q_SIGNALS:
    void reloadRequested();
    /// The scene is to stay as it is.
    void keepRequested();

private:
    QMainWindow* m_window;
};

} // namespace mirabo
