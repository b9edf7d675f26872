#pragma once

#include "mirabo/viewer/RecoveryCopy.h"

#include <QObject>

class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

/// Keeps a copy of unsaved work while the program runs, and offers the one of a run that ended
/// without closing its scene. For a program of its own.
class CrashRecovery final : public QObject {
    Q_OBJECT

public:
    /// None is owned; the parent is the window, which lives as long as they do.
    CrashRecovery(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub);

private:
    void follow(SoMiraboTreeView* tree);
    void setUnsaved(bool isUnsaved);
    void offer();

    SoMiraboMainFrame* m_frame; // Not owned; the parent.
    SoCommandManager* m_hub;    // Not owned.
    RecoveryCopy m_copy;
    bool m_isUnsaved = false; ///< edited since the scene was shown or saved
};

} // namespace mirabo
