#pragma once

#include "mirabo/viewer/FileChange.h"

#include <QObject>
#include <QPointer>

#include <memory>

class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

class ChangedFileBar;
class RecoveryCopy;

/// Answers the requests to save, and asks before unsaved changes are lost: another scene, and, in
/// a program of its own, the end. Tells when another program has changed the file. In a program of
/// its own a copy of unsaved work is kept, and offered at the next start after a crash.
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
    void documentSaved();
    void keepRecoveryCopy(SoMiraboTreeView* tree);
    void offerRecovery();

    SoMiraboMainFrame* m_frame; // Not owned; the parent.
    SoCommandManager* m_hub;    // Not owned.
    FileChange m_change;
    QPointer<ChangedFileBar> m_bar;           // Not owned; the window's.
    std::unique_ptr<RecoveryCopy> m_recovery; ///< in a program of its own
    bool m_isUnsaved = false; ///< edited since the scene was shown or saved; known with m_recovery
};

} // namespace mirabo
