#include "mirabo/launch/Session.h"

#include "mirabo/core/HistoryList.h"
#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extender/MrbShell.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/launch/Automation.h"
#include "mirabo/launch/DocumentActions.h"
#include "mirabo/launch/EditActions.h"
#include "mirabo/launch/HostViews.h"
#include "mirabo/launch/IgnoreSwitch.h"
#include "mirabo/launch/PreferencePages.h"
#include "mirabo/launch/ReloadMemory.h"
#include "mirabo/launch/SceneFollower.h"
#include "mirabo/launch/SoMiraboImpl.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/FilterActions.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/NodePlace.h"
#include "mirabo/tree/RowActions.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/SoTreeViewState.h"
#include "mirabo/tree/TreeNavigator.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QDockWidget>
#include <QFileInfo>
#include <QPointer>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>

#include <utility>

namespace mirabo {

namespace {

constexpr int kMessageMs = 5000; // how long a message stays in the status bar

SoCommandManager* hub()
{
    return MrbServicesImpl::getInstance()->getCommandManager();
}

/// Names the scene for what is kept of it from run to run; empty: a host's that has no name.
QString nameOfScene()
{
    const SoMiraboViewer* viewer = SoMiraboViewer::instance();
    if (!viewer->getCurrentFile().isEmpty())
        return QFileInfo(viewer->getCurrentFile()).absoluteFilePath();
    const SoNode* root = viewer->getScene();
    return root ? QString::fromUtf8(root->getName().getString()) : QString();
}

} // namespace

Session::Session(SoMiraboMainFrame* frame, bool standalone)
    : m_frame(frame), m_standalone(standalone)
{
    EventFrames::addRoot(this);
    m_follower = std::make_unique<SceneFollower>([](SoNode* scene) {
        if (scene != SoMiraboViewer::instance()->getScene())
            SoMiraboViewer::instance()->setScene(scene, true);
    });
    frame->setUp(hub(), standalone);
    createPanels(standalone);
    connectTree();
    connectOverview();
    connectViewer();
    hub()->setUp(frame, SoMiraboViewer::instance(), m_tree, this);
    createNavigator();
    connect(MrbServicesImpl::getInstance(), &MrbServices::selectedNodeChanged, hub(),
            &SoCommandManager::selectedNodeChanged);
    frame->setCloseHandler([this] { windowClosed(); });
    frame->setDeathHandler([this] { windowDied(); });
    frame->setDropHandler(
        [](const QString& path) { SoMiraboViewer::instance()->openDroppedFile(path); });
    registerActions();
    new DocumentActions(frame, m_tree, hub(), standalone); // the window owns it
    new Automation(frame, m_tree);                         // the window owns it
    m_tree->setFocus();                                    // not the box to search in
    SoMiraboStateManager::setCurrentState(SoTreeViewState::kName);
}

Session::~Session()
{
    EventFrames::removeRoot(this);
}

void Session::createPanels(bool standalone)
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    viewer->setUp(m_frame, standalone);
    m_tree = new SoMiraboTreeView(viewer->getTreeDock());
    viewer->getTreeDock()->setWidget(m_tree);
    m_tree->setShowMode([] {
        const bool outlines =
            SoMiraboViewer::exists()
            && SoMiraboViewer::instance()->getHighlightMode() == SoMiraboViewer::OUTLINED;
        return outlines ? SoMiraboTreeView::ShowMode::Outline
                        : SoMiraboTreeView::ShowMode::MakeCurrent;
    });
    m_tree->setContextMenuExtension([](SoType type) {
        const MrbShell* shell = MrbShell::getInstance();
        return shell ? shell->contextMenusFor(type) : QList<QMenu*>();
    });
    m_edition =
        std::make_unique<SoMiraboEdition>(viewer->getOverviewDock(), viewer->getWatchDock());
    m_edition->setIconProvider(&nodeIcon);
    createHistory();
    m_frame->fillViewMenu();
    viewer->readSettings();
    setSettingsListener([frame = QPointer(m_frame)](const QString& message) {
        if (frame)
            frame->statusBar()->showMessage(message);
    });

    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    services->setMainWindow(m_frame);
    services->setSceneSetter([viewer](SoNode* root) { viewer->setScene(root, true); });
}

void Session::createHistory()
{
    auto* dock = new QDockWidget(tr("History"), m_frame);
    dock->setObjectName("dockHistory");
    dock->setWidget(new HistoryList(hub(), dock));
    m_frame->addDockWidget(Qt::RightDockWidgetArea, dock);
    dock->hide();
}

void Session::connectTree()
{
    connect(m_tree, &SoMiraboTreeView::itemChosen, this, [](SoTreeViewItem* item, bool newTab) {
        hub()->treeNodeChosen(item->getNode(), item->getPartKit(), newTab);
    });
    connect(m_tree, &SoMiraboTreeView::rootChanged, this,
            [](SoNode* root) { MrbServicesImpl::getInstance()->announceSceneGraph(root); });
    connect(m_tree, &SoMiraboTreeView::highlightRequested, this,
            [](const SoPath* path) { SoMiraboViewer::instance()->highlight(path); });
    connect(m_tree, &SoMiraboTreeView::expandAllRequested, hub(), [] { hub()->expandAll(); });
    connect(m_tree, &SoMiraboTreeView::overviewRequested, hub(), [] { hub()->setNodeOverview(); });
    connect(m_tree, &SoMiraboTreeView::outsideStructureChange, hub(),
            &SoCommandManager::outsideStructureChange);
    connect(m_tree, &SoMiraboTreeView::overviewRefreshRequested, hub(),
            &SoCommandManager::refreshOverview);
    connect(m_tree, &SoMiraboTreeView::nodeNameChanged, this, [this](SoNode* node) {
        m_edition->getTabs()->nodeRenamed(node);
        m_edition->getWatch()->updateNodeName(node);
    });
    connect(m_tree, &SoMiraboTreeView::helpRequested, this,
            [](const QUrl& address) { QDesktopServices::openUrl(address); });
    connect(m_tree, &SoMiraboTreeView::currentReferencesChanged, this,
            [this](bool canShow, bool shown) {
                m_canShowReferences = canShow && !shown;
                for (const ActionId id : {ActionId::ShowAllReferences, ActionId::HideAllReferences,
                                          ActionId::NextReference, ActionId::PreviousReference})
                    hub()->actions().update(id);
            });
}

void Session::createNavigator()
{
    m_navigator = new TreeNavigator(m_tree, m_frame->findChild<QComboBox*>("SearchBox"), hub());
    m_navigator->setSceneNamer(&nameOfScene);
    new FilterActions(m_tree, m_frame, hub()); // the tree owns it
}

void Session::connectOverview()
{
    connect(m_edition.get(), &SoMiraboEdition::fieldSelected, hub(),
            &SoCommandManager::fieldSelected);
    connect(m_edition.get(), &SoMiraboEdition::overrideRequested, hub(),
            &SoCommandManager::nodeSetOverride);
    connect(m_edition.get(), &SoMiraboEdition::nodeRenamed, hub(),
            &SoCommandManager::nodeNameChanged);
    connect(m_edition.get(), &SoMiraboEdition::message, m_frame,
            [frame = m_frame](const QString& text) {
                frame->statusBar()->showMessage(text, kMessageMs);
            });
    m_edits = std::make_unique<EditActions>(m_frame, m_tree, hub());
    hub()->setOverrideFactory([this](bool on) {
        return m_edits->owner().adopt(
            std::unique_ptr<MrbCommand>(m_edition->makeOverrideCommand(on)));
    });
    new RowActions(m_tree, hub()); // the tree owns it
    m_ignore = std::make_unique<IgnoreSwitch>(m_tree, m_edition.get(), hub(), m_edits->owner());
    // Below a root their events are delivered in frames. The members delete them first.
    for (QObject* part : std::initializer_list<QObject*>{m_follower.get(), m_edits.get(),
                                                         m_edition.get(), m_ignore.get()})
        part->setParent(this);
    new SoTreeViewState(m_tree, hub()); // the tree owns it
    m_edition->createFieldWatchState(hub());
    m_edition->setPlaceProvider(
        [tree = QPointer(m_tree)](const SoNode* node) { return tree ? placeOf(*tree, node) : ""; });
    connect(m_edition->getWatch(), &SoFieldWatch::revealRequested, hub(),
            &SoCommandManager::setNodeOverviewFromWatch);
}

void Session::connectViewer()
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    connect(viewer, &SoMiraboViewer::sceneAboutToChange, this, [this] {
        m_edition->clear();
        m_tree->setContainer(nullptr); // what leaves the selection node now is no scene by itself
    });
    connect(viewer, &SoMiraboViewer::sceneChanged, m_tree, [this](SoNode* root) {
        m_tree->setContainer(SoMiraboViewer::instance()->getSelectionNode());
        m_tree->setSceneGraph(root);
    });
    viewer->setReloadKeeper(
        [tree = QPointer(m_tree), edition = QPointer(m_edition.get())]() -> std::function<void()> {
            if (!tree || !edition)
                return {};
            return [tree, edition, memory = ReloadMemory(*tree, *edition)] {
                if (tree && edition)
                    memory.restore(*tree, *edition);
            };
        });
    connect(viewer, &SoMiraboViewer::fileChanged, hub(),
            [] { hub()->actions().update(ActionId::Reload); });
    connect(viewer, &SoMiraboViewer::undoResetRequested, hub(),
            &SoCommandManager::clearUndoCommand);
    connect(viewer, &SoMiraboViewer::picked, this,
            [this](const SoPath* path) { showPicked(path); });
    m_views = std::make_unique<HostViews>(viewer->getSelectionNode(), m_standalone,
                                          viewer->canHighlight(),
                                          [this](const SoPath* path) { showPicked(path); });
}

/// Registers the handlers of requests to the panels.
void Session::registerActions()
{
    ActionRegistry& actions = hub()->actions();
    actions.add(ActionId::Preferences, this, {[this] {
                    syncSettings(); // what other tools have written shows in the pages
                    editPreferences(*m_frame, *hub(), m_tree, m_edition.get(), m_standalone);
                }});
    actions.add(ActionId::OpenViewer, this,
                {[] { SoMiraboViewer::instance()->bringToFront(); },
                 [] { return SoMiraboViewer::instance()->viewerWidget() != nullptr; }});
    const auto onReferences = [&](ActionId id, void (SoMiraboTreeView::*step)()) {
        actions.add(id, m_tree,
                    {[this, step] { (m_tree->*step)(); },
                     [this] { return m_tree->hasMarkedReferences(); }});
    };
    onReferences(ActionId::HideAllReferences, &SoMiraboTreeView::hideReferences);
    onReferences(ActionId::NextReference, &SoMiraboTreeView::nextReference);
    onReferences(ActionId::PreviousReference, &SoMiraboTreeView::previousReference);
    actions.add(
        ActionId::ShowAllReferences, m_tree,
        {[this] { m_tree->showReferencesOfCurrent(); }, [this] { return m_canShowReferences; }});
}

void Session::windowClosed()
{
    SoMiraboViewer::instance()->saveWindowSettings();
    saveColumnWidths();
    setViewsActive(false);
    SoMiraboImpl::requestFinish();
}

void Session::windowDied()
{
    MrbServicesImpl::getInstance()->setMainWindow(nullptr);
    if (!Frame::isOpen()) {
        MrbPluginsManager::releaseInstance(); // extensions end while their widgets live
        release();
        SoMiraboImpl::requestFinish();
        return;
    }
    // Inside one of our own calls: what is on the stack outlives the window.
    ModalBase::closeAll();
    m_rescued = rescueChildren(*m_frame);
    forgetWindow();
    SoMiraboImpl::stop();
}

/// Nobody touches the window from now on.
void Session::forgetWindow()
{
    hub()->release();
    SoMiraboViewer::instance()->forgetWindow();
    m_frame = nullptr;
}

void Session::setViewsActive(bool on)
{
    if (m_views) // not released yet
        m_views->setActive(on);
}

void Session::show()
{
    if (!m_frame)
        return;
    setViewsActive(true);
    m_frame->show();
    for (const QPointer<QWidget>& widget : std::exchange(m_hidden, {}))
        if (widget)
            widget->show();
}

void Session::hide()
{
    if (!m_frame)
        return;
    setViewsActive(false);
    for (QWidget* widget : m_frame->findChildren<QWidget*>()) {
        if (!widget->isWindow() || widget->isHidden())
            continue;
        if (qobject_cast<QDockWidget*>(widget) || qobject_cast<QToolBar*>(widget))
            m_hidden.emplace_back(widget);
        widget->hide();
    }
    m_frame->hide();
}

void Session::showScene(SoNode* root)
{
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    m_follower->follow(services->isStandalone() ? nullptr : services->getSceneManager());
    SoMiraboViewer::instance()->setScene(root, true);
}

bool Session::openFile(const QString& path)
{
    return SoMiraboViewer::instance()->openSceneFile(path);
}

void Session::pick(const SbViewportRegion& region, SbVec2s cursor)
{
    if (m_frame && m_views)
        m_views->pick(region, cursor);
}

/// Null: the user clicked on nothing.
void Session::showPicked(const SoPath* path)
{
    if (!m_frame)
        return;
    if (path) {
        m_tree->revealPath(*path);
        return;
    }
    m_tree->setCurrentItem(nullptr);
    SoMiraboViewer::instance()->highlight(nullptr);
    m_tree->viewport()->update(); // reference counts: the selection has let go
}

void Session::release()
{
    if (std::exchange(m_released, true))
        return;
    if (m_frame) {
        m_frame->setCloseHandler({});
        m_frame->setDeathHandler({});
        m_frame->setDropHandler({});
    }
    MrbServicesImpl::getInstance()->setSceneSetter({});
    hub()->release();
    m_follower.reset();
    m_views.reset();
    m_navigator->saveBookmarks();
    m_tree->disconnect();
    SoMiraboViewer::instance()->disconnect();
    m_edition->clear();
    m_edition->disconnect();
    m_tree->setContainer(nullptr);
    m_tree->setSceneGraph(nullptr);
    m_ignore.reset();
    m_edits.reset();
    m_edition.reset();
    forgetWindow();
}

void Session::showNode(SoNode* node, SoNode* kit, bool newTab)
{
    m_edition->showNode(node, kit, newTab);
}

void Session::showRow(SoTreeViewItem* row, bool newTab)
{
    showNode(row->getNode(), row->getPartKit(), newTab);
}

SoNode* Session::getNode() const
{
    return m_edition->getNode();
}

void Session::clear()
{
    m_edition->clear();
}

void Session::refresh()
{
    m_edition->refresh();
}

void Session::closeOverview(int index)
{
    m_edition->getTabs()->tabClose(index);
}

void Session::watchSelectedField()
{
    m_edition->addFieldWatch();
}

void Session::watchField(SoFieldItem* row)
{
    m_edition->getWatch()->addField(*row);
}

void Session::deleteWatchedField()
{
    m_edition->getWatch()->deleteCurrent();
}

void Session::selectWatchedField(QTreeWidgetItem* row)
{
    m_edition->setField(row, nullptr);
}

void Session::showWatchedNode(QTreeWidgetItem* row)
{
    SoRef<SoNode> node;
    {
        const SoFieldItem::Look look(*static_cast<SoFieldItem*>(row));
        node = look.node();
    }
    if (!node)
        return; // it died
    m_edition->bringUp(node.get());
    m_tree->revealNode(node.get());
}

QList<SoTreeViewItem*> Session::shownRows() const
{
    QList<SoTreeViewItem*> rows;
    const SoTabNodeOverview* tabs = m_edition->getTabs();
    for (int i = 0; tabs && i < tabs->count(); ++i) {
        const auto* overview = qobject_cast<const SoNodeOverview*>(tabs->widget(i));
        const std::vector<SoTreeViewItem*> places =
            overview ? m_tree->occurrencesOf(overview->getNode()) : std::vector<SoTreeViewItem*>();
        if (!places.empty())
            rows << places.front();
    }
    return rows;
}

void Session::saveColumnWidths()
{
    m_edition->getWatch()->saveColumnWidths();
}

} // namespace mirabo
