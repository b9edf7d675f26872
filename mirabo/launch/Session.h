#pragma once

#include "mirabo/core/Panels.h"
#include "mirabo/launch/Rescue.h"

#include <kalmyr/base/SbVec.h>

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

class SbViewportRegion;
class SoMiraboEdition;
class SoMiraboMainFrame;
class SoMiraboTreeView;
class SoNode;
class SoPath;

namespace mirabo {

class EditActions;
class HostViews;
class IgnoreSwitch;
class SceneFollower;
class TreeNavigator;

/// The panels of one run and the wires between them: what the user does in one reaches the hub,
/// and through it the others.
class Session final : public QObject, private NodePanels {
    Q_OBJECT

public:
    Session(SoMiraboMainFrame* frame, bool standalone);
    ~Session() override;

    void showScene(SoNode* root);
    bool openFile(const QString& path);
    /// Whether a new start of this kind may go on with this session's window.
    bool canServe(bool standalone) const { return m_frame && m_standalone == standalone; }
    /// Selects what lies under a window position of a view of the host.
    void pick(const SbViewportRegion& region, SbVec2s cursor);

    /// Shows the window; nothing once it has died.
    void show();
    /// Hides all windows at once, popups and torn-off docks included.
    void hide();

    /// Cuts the wires and lets go of the scene, before the panels are destroyed.
    void release();

private:
    void createPanels(bool standalone);
    void createHistory();
    void registerActions();
    void connectTree();
    void createNavigator();
    void connectOverview();
    void connectViewer();
    void showPicked(const SoPath* path);
    void setViewsActive(bool on);
    void windowClosed();
    void windowDied();
    void forgetWindow();

    void showNode(SoNode* node, SoNode* kit, bool newTab) override;
    void showRow(SoTreeViewItem* row, bool newTab) override;
    SoNode* getNode() const override;
    void clear() override;
    void refresh() override;
    void saveColumnWidths() override;
    void closeOverview(int index) override;
    void watchSelectedField() override;
    void watchField(SoFieldItem* row) override;
    void deleteWatchedField() override;
    void selectWatchedField(QTreeWidgetItem* row) override;
    void showWatchedNode(QTreeWidgetItem* row) override;
    QList<SoTreeViewItem*> shownRows() const override;
    SoMiraboEdition* edition() const override { return m_edition.get(); }

    SoMiraboMainFrame* m_frame; // Not owned; the shell's. Null once the window has died.
    std::vector<QPointer<QWidget>>
        m_hidden;      ///< torn-off docks and tool bars, shown again by show()
    Rescued m_rescued; ///< the panels of a window that died while they were in use
    const bool m_standalone;
    bool m_released = false;
    SoMiraboTreeView* m_tree = nullptr; // Not owned; its dock's.
    std::unique_ptr<SoMiraboEdition> m_edition;
    std::unique_ptr<SceneFollower> m_follower; ///< of the host's scene manager
    std::unique_ptr<HostViews> m_views;
    std::unique_ptr<EditActions> m_edits;
    std::unique_ptr<IgnoreSwitch> m_ignore; // after the edits, whose commands it makes
    TreeNavigator* m_navigator = nullptr;   // Owned by the tree.
    bool m_canShowReferences = false;
};

} // namespace mirabo
