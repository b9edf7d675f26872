#include "mirabo/launch/Session.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/launch/Automation.h"
#include "mirabo/launch/SoMiraboImpl.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoNodeOverrideCommand.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/gui/SoGuiViewer.h>
#include <kalmyr/nodes/SoSelection.h>

#include <QAction>
#include <QDesktopServices>
#include <QDockWidget>
#include <QUrl>

namespace mirabo {

namespace {

SoCommandManager* hub()
{
    return MrbServicesImpl::getInstance()->getCommandManager();
}

} // namespace

Session::Session(SoMiraboMainFrame* frame, bool standalone) : m_frame(frame)
{
    frame->setUp(hub(), standalone);
    createPanels(standalone);
    connectTree();
    connectOverview();
    connectViewer();
    hub()->setUp(frame, SoMiraboViewer::instance(), m_tree, this);
    connect(MrbServicesImpl::getInstance(), &MrbServices::selectedNodeChanged, hub(),
            &SoCommandManager::selectedNodeChanged);
    frame->setCloseHandler([this] { windowClosed(); });
    frame->setOpenHandler([this](const QString& path) { openFile(path); });
    new Automation(frame, m_tree); // the window owns it
}

Session::~Session() = default;

void Session::createPanels(bool standalone)
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    viewer->setUp(m_frame, standalone);
    m_tree = new SoMiraboTreeView(viewer->getTreeDock());
    viewer->getTreeDock()->setWidget(m_tree);
    m_edition =
        std::make_unique<SoMiraboEdition>(viewer->getOverviewDock(), viewer->getWatchDock());
    m_edition->setIconProvider(&nodeIcon);
    m_frame->fillViewMenu();
    viewer->readSettings();

    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    services->setMainWindow(m_frame);
    services->setSceneSetter([viewer](SoNode* root) { viewer->setScene(root, true); });
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
    connect(m_tree, &SoMiraboTreeView::expandAllRequested, hub(), &SoCommandManager::expandAll);
    connect(m_tree, &SoMiraboTreeView::overviewRequested, hub(),
            &SoCommandManager::setNodeOverview);
    connect(m_tree, &SoMiraboTreeView::outsideStructureChange, hub(),
            &SoCommandManager::outsideStructureChange);
    connect(m_tree, &SoMiraboTreeView::overviewRefreshRequested, hub(),
            &SoCommandManager::refreshOverview);
    connect(m_tree, &SoMiraboTreeView::helpRequested, this,
            [](const QUrl& address) { QDesktopServices::openUrl(address); });
    connect(m_tree, &SoMiraboTreeView::currentReferencesChanged, this,
            [this](bool canShow, bool shown) {
                m_frame->action(ActionId::ShowAllReferences)->setEnabled(canShow && !shown);
                for (const ActionId id : {ActionId::HideAllReferences, ActionId::NextReference,
                                          ActionId::PreviousReference})
                    m_frame->action(id)->setEnabled(shown);
            });
}

void Session::connectOverview()
{
    connect(m_edition.get(), &SoMiraboEdition::fieldSelected, hub(),
            &SoCommandManager::fieldSelected);
    connect(m_edition.get(), &SoMiraboEdition::overrideRequested, hub(),
            &SoCommandManager::nodeSetOverride);
    connect(m_edition.get(), &SoMiraboEdition::nodeRenamed, hub(),
            &SoCommandManager::nodeNameChanged);
    connect(hub(), &SoCommandManager::overrideCommandRequested, this, [this](bool on) {
        if (SoNode* node = m_edition->getNode())
            hub()->addCommand(new SoNodeOverrideCommand(node, on));
    });
    connect(m_edition->getWatch(), &SoFieldWatch::revealRequested, this,
            [this](QTreeWidgetItem* row) {
                SoNode* node = static_cast<SoFieldItem*>(row)->getNode();
                if (node && m_tree->revealNode(node))
                    m_edition->showNode(node, nullptr, false);
            });
}

void Session::connectViewer()
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    connect(viewer, &SoMiraboViewer::sceneAboutToChange, this, [this] { m_edition->clear(); });
    connect(viewer, &SoMiraboViewer::sceneChanged, m_tree, &SoMiraboTreeView::setSceneGraph);
    connect(viewer, &SoMiraboViewer::undoResetRequested, hub(),
            &SoCommandManager::clearUndoCommand);
    connect(viewer, &SoMiraboViewer::nodePicked, this,
            [this](SoNode* node) { m_tree->revealNode(node); });
}

void Session::windowClosed()
{
    SoMiraboViewer::instance()->saveWindowSettings();
    saveColumnWidths();
    SoMiraboImpl::requestFinish();
}

void Session::showScene(SoNode* root)
{
    SoMiraboViewer::instance()->setScene(root, true);
}

bool Session::openFile(const QString& path)
{
    return SoMiraboViewer::instance()->openSceneFile(path);
}

void Session::pick(const SbViewportRegion& region, SbVec2s cursor)
{
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    SoGuiRenderArea* area = services->getRenderArea();
    if (services->isStandalone() || !area || !area->isOfType(SoGuiViewer::getClassTypeId()))
        return;
    auto* viewer = static_cast<SoGuiViewer*>(area);
    if (viewer->isViewing())
        return;
    const SoRef<SoSeparator> scene(new SoSeparator);
    scene->addChild(viewer->getCamera());
    scene->addChild(SoMiraboViewer::instance()->getSelectionNode());
    SoRayPickAction action(region);
    action.setPoint(cursor);
    action.apply(scene.get());
    if (const SoPickedPoint* point = action.getPickedPoint())
        m_tree->revealNode(point->getPath()->getTail());
}

void Session::release()
{
    m_frame->setCloseHandler({});
    m_frame->setOpenHandler({});
    hub()->release();
    m_tree->disconnect();
    SoMiraboViewer::instance()->disconnect();
    m_edition->clear();
    m_edition->disconnect();
    m_tree->setSceneGraph(nullptr);
}

void Session::showNode(SoNode* node, SoNode* kit, bool newTab)
{
    m_edition->showNode(node, kit, newTab);
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
    if (SoNode* node = m_edition->getNode())
        m_edition->showNode(node, nullptr, false);
}

void Session::saveColumnWidths()
{
    m_edition->getWatch()->saveColumnWidths();
}

} // namespace mirabo
