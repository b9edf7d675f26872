#pragma once

#include "mirabo/core/Panels.h"
#include "mirabo/core/RowKeeper.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/base/SoRef.h>

#include <QPoint>
#include <QTreeWidget>

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QMenu;
class QUrl;
class SoField;
class SoGraphTopologyManager;
class SoGroup;
class SoNode;
class SoPath;
class SoTreeViewItem;
class SoType;
class TreeContextMenu;

namespace mirabo {
class DropGuide;
enum class MoveStep;
class OpenBranches;
class TreeEditCommand;
class TreePatcher;
} // namespace mirabo

/// The live scene graph as a tree, one row for every occurrence of every node.
///
/// The root of the scene is a top-level row. With a container that holds it there is one for each
/// of the container's children, in their order; the container itself has no row.
///
/// Built completely from the root; from then on every change of the graph is in the rows before the
/// call that made it returns. Nodes are not kept alive.
class SoMiraboTreeView final : public QTreeWidget,
                               public mirabo::SceneTree,
                               private mirabo::NodeNews::Receiver {
    Q_OBJECT

public:
    /// "Expand All" asks before it opens more rows than this.
    static constexpr int kExpandLimit = 50000;

    explicit SoMiraboTreeView(QWidget* parent = nullptr);
    ~SoMiraboTreeView() override;

    /// The root of the scene, or null. Only compared when it may have died in another thread.
    SoNode* getRoot() const { return m_root; }
    /// False when the root died and the tree is not cleared yet.
    bool hasLivingRoot() const;
    /// The row of the root: the first one, unless the container has other children before it.
    SoTreeViewItem* rootItem() const;
    /// Shows the other children of `container` (null, as at first: of none) beside the root while
    /// it holds the root, which is looked for now and with every new root. A child that replaces
    /// the root is another root; when the root is taken out the tree is empty, until the container
    /// gets another child. The container is not kept alive; its death ends its rows but for the
    /// root's. Takes effect in a later pass of the event loop while another thread edits.
    void setContainer(SoGroup* container);
    /// The container whose children are the top-level rows; null when the root is the only one.
    SoGroup* getContainer() const;
    /// The nodes of the top-level rows as the graph has them now, always with the root.
    std::vector<SoNode*> topNodes() const;
    /// All rows of a node, in no particular order.
    std::vector<SoTreeViewItem*> itemsOf(const SoNode* node) const
    {
        return m_context.index.itemsOf(node);
    }
    /// All rows of a node from top to bottom.
    std::vector<SoTreeViewItem*> occurrencesOf(const SoNode* node) const;
    SoGraphTopologyManager& topologyManager() { return *m_topology; }
    mirabo::TreePatcher& patcher() { return *m_patcher; }
    mirabo::TreeContext& context() { return m_context; }
    const mirabo::TreeContext& context() const { return m_context; }

    /// Puts the row of a node, with everything below it, before row `index` of its siblings (-1:
    /// behind the last). Null for a null node.
    SoTreeViewItem* createItem(SoNode* node, SoTreeViewItem* parentItem,
                               SoField* sourceField = nullptr, int index = -1);
    /// Makes everything below a row anew.
    void populate(SoTreeViewItem* item);
    /// Reaction to a place where the scene has changed.
    enum class ShowMode {
        Outline,    ///< the current row stays; the object is outlined
        MakeCurrent ///< the tree goes there
    };
    /// Asked whenever something is to be shown. Without one the tree goes there.
    void setShowMode(std::function<ShowMode()> mode) { m_showMode = std::move(mode); }
    /// Shows a row where the scene has changed, as the mode says. Rows that are not fresh and null
    /// are ignored.
    void showItem(SoTreeViewItem* item);
    /// Makes a row current, opens its ancestors and scrolls to it. Rows that are not fresh and null
    /// are ignored.
    void goToItem(SoTreeViewItem* item);
    /// Makes a row current and leaves what is closed closed. It is scrolled to in the next pass of
    /// the event loop if the rows above it are open.
    void makeCurrent(SoTreeViewItem* item);
    /// Makes the row current in the next pass of the event loop, unless another one is named
    /// before, or the user is busy with mouse, menu or a text.
    void showLater(SoTreeViewItem* item) { m_context.toShow = item; }

    /// Marks all occurrences of the item's node (null: none), if there are several.
    void showReferences(SoTreeViewItem* item);
    bool hasMarkedReferences() const { return m_context.index.contains(m_markedNode); }

    /// Menus that extensions offer for a node type, appended to the context menu.
    void setContextMenuExtension(std::function<QList<QMenu*>(SoType)> extension);
    TreeContextMenu& contextMenu() { return *m_menu; }
    mirabo::DropGuide& dropGuide() { return *m_dropGuide; }

    SoNode* getCurrentNode() const override;
    SoNode* getCurrentKit() const override;
    bool revealNode(const SoNode* node) override;
    /// The row of the occurrence that a path leads to, or the nearest one above it that has a row.
    /// The path may begin above the root; null when it passes no top-level row, and while the graph
    /// cannot be looked at.
    SoTreeViewItem* rowOfPath(const SoPath& path) const;
    /// Makes the row of an occurrence current that a path leads to, or the nearest one above it
    /// that has a row. When the node is held by a field, the nearest node above that is a child is
    /// outlined. The path may begin above the root; false when it passes no top-level row.
    bool revealPath(const SoPath& path);
    /// Opens a row (null: the current one, else the root) and all rows below it. Asks first when
    /// there are very many, unless the application runs unattended.
    void expandBelow(QTreeWidgetItem* startItem) override;
    /// Opens the current row.
    void explore();
    bool canExplore() const;
    /// Opens the current row and what is below it, the uppermost branches first, as long as no more
    /// rows than that come to be seen. Returns how many branches stay closed.
    int exploreAll(int limit = kExpandLimit);
    /// True as well when it would take long to tell.
    bool canExploreAll() const;
    void showReferencesOfCurrent();
    void hideReferences();
    void nextReference() { stepReference(1); }
    void previousReference() { stepReference(-1); }
    void nodeTextChanged(const SoNode* node) override;

    /// While it lives rows may be patched; the panels hear of a new current row afterwards.
    class PatchScope {
    public:
        explicit PatchScope(SoMiraboTreeView& view);
        ~PatchScope();
        PatchScope(const PatchScope&) = delete;
        PatchScope& operator=(const PatchScope&) = delete;

    private:
        SoMiraboTreeView& m_view;
    };

    void doItemsLayout() override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    using QTreeWidget::indexFromItem;
    using QTreeWidget::itemFromIndex;
    /// Empty while rows are patched.
    QRect visualRect(const QModelIndex& index) const override;

    /// For the patcher: rows come or go; the layout is made once, later.
    void rowsAboutToChange();
    mirabo::OpenBranches& openBranches() { return *m_openBranches; }
    /// Closes all branches without laying out anything.
    void closeAll();
    /// Whether the user has the row opened, also while the view does not know it.
    bool isOpen(const SoTreeViewItem* item) const;
    /// Shows a row that the filter hides, with the rows above it, until the rows are filtered anew.
    void reveal(SoTreeViewItem* item);
    /// Makes a row current, and reveals it.
    void setCurrentItem(QTreeWidgetItem* item);
    /// For the topology manager: texts and icons may have changed with the graph.
    void graphChanged();
    /// For the topology manager: what was put off until the changes of this pass are over.
    void catchUp();
    /// For the topology manager: whether the row is where the graph has its node. If not, it has
    /// patched rows, and the item may be gone. False as well when the graph cannot be looked at.
    bool verify(SoTreeViewItem* item);

    /// Whether anybody would move the current row.
    bool canMoveNodes() const;
    /// Whether ignoreEnable() has something to do for the current row.
    bool canIgnoreOrEnable() const;

public Q_SLOTS:
    /// Shows the graph below `root`; null empties the tree.
    void setSceneGraph(SoNode* root);
    /// Reads fonts and counters from the preferences again.
    void setPreferences();
    /// Reads them for the first time.
    void initPreferences();
    /// Turns the ignore flag of the field around that holds the current row's node. For other rows,
    /// takes the node out of the graph, its rows staying grey, or puts it back.
    void ignoreEnable();
    void selectChange(QTreeWidgetItem* item, QTreeWidgetItem* previous);
    void onItemClicked(QTreeWidgetItem* item, int column);
    void onCustomContextMenu(const QPoint& point);
    /// Shows the rows of the nodes whose categories are in `filter`, a sum of NodeCategory values,
    /// and hides the others with all that is below them. Rows that come later obey it as well.
    /// Whatever row becomes the current one is shown all the same.
    void setFilter(int filter);
    int getFilter() const { return m_context.filter.mask(); }
    /// Hides what was shown against the filter.
    void filterItems();
    /// Fits the columns to what is in view, at the end of this pass of the event loop.
    void resizeAllColumns();

Q_SIGNALS:
    /// A row was chosen, by the user or by the tool; `newTab`: with Shift. Never null.
    void itemChosen(SoTreeViewItem* item, bool newTab);
    /// The rows are about to go, all of them.
    void rootAboutToChange();
    /// Another root is shown; null: none.
    void rootChanged(SoNode* root);
    /// The object is to be outlined; null: nothing. The path starts at its top-level row's node.
    void highlightRequested(const SoPath* path);
    /// Whether the current node occurs several times, and whether occurrences are marked.
    void currentReferencesChanged(bool canShow, bool shown);
    /// An edit to be executed and kept for undo; the receiver owns it.
    void commandReady(mirabo::TreeEditCommand* command);
    /// Whether ignoreEnable() has something to do.
    void ignoreEnableChanged(bool possible);
    void deleteRequested();
    void overviewRequested();
    void expandAllRequested();
    /// A row was dropped on another that is not below it; `asSibling`: with the space bar held.
    void moveRequested(SoTreeViewItem* item, SoTreeViewItem* target, bool asSibling);
    /// The structure of the graph changed, inside the change or, when another thread made it, in a
    /// later pass of the event loop. Receivers must not edit the graph.
    void outsideStructureChange();
    /// A node that the tree shows has got another name, or none; told in the next pass of the event
    /// loop.
    void nodeNameChanged(SoNode* node);
    void overviewRefreshRequested();
    void helpRequested(const QUrl& address);
    /// A row was dropped with Ctrl held: its node is to stand at the target as well.
    void referenceRequested(SoTreeViewItem* item, SoTreeViewItem* target, bool asSibling);
    /// The current row is to move one step.
    void stepRequested(mirabo::MoveStep step);
    /// Tells what a drop would do now, or which of a node's places is current; empty: nothing is
    /// dragged over the tree any more.
    void statusHint(const QString& hint);

protected:
    bool event(QEvent* event) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void nodeDied(const SoNode* node) override;
    void nodeRenamed(const SoNode* node) override;
    void nodeChangedUnheard(const SoNode* node, std::uint64_t since) override;
    void newsWaiting() override;
    void setUpColumns();
    void applyLook();
    void takeRowHeight();
    void clearRows();
    void startDrag();
    bool mayMove(SoTreeViewItem* dragged, SoTreeViewItem* target);
    void choose(SoTreeViewItem* item);
    void putOffCurrent();
    void requestHighlight(SoTreeViewItem* item);
    void announceReferences();
    void showWhatChanged();
    bool outlinesChanges() const { return m_showMode && m_showMode() == ShowMode::Outline; }
    void scrollToCurrent();
    void forgetDisabledNodes();
    void tellNames();
    bool replaceRows(SoNode* root);
    void reportCheck();
    void stepReference(int direction);
    void tellPlace(const std::vector<SoTreeViewItem*>& places, SoTreeViewItem* item);
    void openMenuOfCurrent();
    void sortRows(const std::vector<SoTreeViewItem*>& parents);
    bool mayExpand(SoTreeViewItem* top);
    void expandRows(SoTreeViewItem* top);
    void fitColumns(bool mayShrink);
    void bringTextIntoSight(const QModelIndex& index);
    bool verifyRowsInView();
    SoTreeViewItem* firstStrayAbove(SoTreeViewItem* item) const;
    bool standsInGraph(const SoTreeViewItem* item) const;
    bool isInGraph(SoTreeViewItem* item) const;
    bool isUserBusy() const;

    mirabo::TreeContext m_context; // First: rows use it until the last is gone.
    mirabo::RowKeeper m_keeper;
    SoNode* m_root = nullptr; // Not owned; the host's or the document's.
    std::unique_ptr<mirabo::TreePatcher> m_patcher;
    std::unique_ptr<mirabo::OpenBranches> m_openBranches;
    std::unique_ptr<SoGraphTopologyManager> m_topology;
    std::unique_ptr<TreeContextMenu> m_menu;
    std::unique_ptr<mirabo::DropGuide> m_dropGuide;
    const SoNode* m_markedNode = nullptr; ///< only compared
    std::vector<const SoNode*> m_renamed; ///< in this pass of the event loop; only compared
    std::function<ShowMode()> m_showMode;
    int m_patchDepth = 0;
    bool m_currentMoved = false; ///< while patching; the panels are not told yet
    bool m_fitPending = false;
    bool m_lookPending = false;
    bool m_closing = false;
    bool m_shiftPressed = false;
    bool m_pressChose = false; ///< the press being handled has told the panels already
    bool m_userChose = false;  ///< in this pass of the event loop
    bool m_spaceHeld = false;
    bool m_dragArmed = false;
    QPoint m_dragStart;
    bool m_scrolled = false;      ///< since the columns were fitted
    bool m_textPending = false;   ///< the current row is to be in sight
    bool m_scrollPending = false; ///< it is to be scrolled to
};
