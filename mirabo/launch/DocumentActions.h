#pragma once

#include "mirabo/viewer/SceneSaving.h"

#include <QObject>

class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

/// Answers the requests to save, and asks before unsaved changes are lost: another scene, and, in
/// a program of its own, the end.
class DocumentActions final : public QObject {
    Q_OBJECT

public:
    /// None is owned; the parent is the window, which lives as long as they do.
    DocumentActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub,
                    bool standalone);
    ~DocumentActions() override;

private:
    SceneSaving m_saving;
};

} // namespace mirabo
