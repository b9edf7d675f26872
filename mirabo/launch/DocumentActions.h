#pragma once

#include "mirabo/viewer/FileChange.h"

#include <QObject>
#include <QPointer>

class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

class ChangedFileBar;

/// Answers the requests to save, to export and to print, and asks before unsaved changes are lost:
/// another scene, and, in a program of its own, the end. Tells when another program has changed the
/// file.
class DocumentActions final : public QObject {
    Q_OBJECT

public:
    /// None is owned; the parent is the window, which lives as long as they do.
    DocumentActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub,
                    bool standalone);
    ~DocumentActions() override;

private:
    void watchFile();
    void showFileChange(bool isDeleted);

    SoMiraboMainFrame* m_frame; // Not owned; the parent.
    SoCommandManager* m_hub;    // Not owned.
    FileChange m_change;
    QPointer<ChangedFileBar> m_bar; // Not owned; the window's.
};

} // namespace mirabo
