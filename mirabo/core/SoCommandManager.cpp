#include "mirabo/core/SoCommandManager.h"

#include "mirabo/core/AboutDialog.h"
#include "mirabo/core/MainActions.h"
#include "mirabo/core/Modal.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbServices.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <QAction>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QStatusBar>
#include <QUrl>
#include <QUrlQuery>

#include <utility>

using mirabo::ActionId;

namespace {

constexpr int kMessageMs = 10000; // how long a message stays in the status bar

} // namespace

SoCommandManager::SoCommandManager()
{
    mirabo::EventFrames::addRoot(this);
}

SoCommandManager::~SoCommandManager()
{
    mirabo::EventFrames::removeRoot(this);
}

void SoCommandManager::setUp(SoMiraboMainFrame* frame, mirabo::SceneDocument* document,
                             mirabo::SceneTree* tree, mirabo::NodePanels* panels)
{
    m_frame = frame;
    m_document = document;
    m_tree = tree;
    m_panels = panels;
    m_undo.setStateCallback([this] { stackChanged(); });
    registerOwnActions();
    registerUndo();
}

/// May run inside a change of the graph: only enables and names actions; the rest comes later.
void SoCommandManager::stackChanged()
{
    m_actions.update(ActionId::Undo);
    m_actions.update(ActionId::Redo);
    if (std::exchange(m_historyPending, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_historyPending = false;
            Q_EMIT historyChanged();
        },
        Qt::QueuedConnection);
}

QString SoCommandManager::nameOfStep(int index) const
{
    const QString name = m_undo.nameOf(index);
    return name.isEmpty() ? tr("Edit") : name;
}

void SoCommandManager::showStatus(const QString& text) const
{
    if (m_frame)
        m_frame->statusBar()->showMessage(text, kMessageMs);
}

void SoCommandManager::registerUndo()
{
    m_actions.add(ActionId::Undo, this,
                  {[this] { undo(); }, [this] { return m_undo.canUndo(); },
                   [this] {
                       return m_undo.canUndo()
                                  ? tr("Undo %1").arg(nameOfStep(m_undo.currentIndex()))
                                  : QString();
                   }});
    m_actions.add(ActionId::Redo, this,
                  {[this] { redo(); }, [this] { return m_undo.canRedo(); },
                   [this] {
                       return m_undo.canRedo()
                                  ? tr("Redo %1").arg(nameOfStep(m_undo.currentIndex() + 1))
                                  : QString();
                   }});
}

void SoCommandManager::registerOwnActions()
{
    const auto always = [this](ActionId id, auto slot) {
        m_actions.add(id, this, {[this, slot] { (this->*slot)(); }});
    };
    if (m_frame->mayReplaceScene()) {
        always(ActionId::New, &SoCommandManager::closeFile);
        always(ActionId::Open, &SoCommandManager::openFile);
        always(ActionId::Close, &SoCommandManager::closeFile);
    }
    always(ActionId::Quit, &SoCommandManager::closeApp);
    always(ActionId::Contents, &SoCommandManager::launchMiraboHelpViewer);
    always(ActionId::About, &SoCommandManager::launchAboutMiraboFrame);
    m_actions.add(
        ActionId::Reload, this,
        {[this] { reloadFile(); }, [this] { return m_document && m_document->canReload(); }});
}

void SoCommandManager::setOverrideFactory(std::function<MrbCommand*(bool)> factory)
{
    m_overrideFactory = std::move(factory);
}

void SoCommandManager::release()
{
    m_frame = nullptr;
    m_document = nullptr;
    m_tree = nullptr;
    m_panels = nullptr;
    m_overrideFactory = {};
    m_actions.clear();
}

void SoCommandManager::reloadFile()
{
    if (m_document)
        m_document->reopenRecentFile(0);
}

void SoCommandManager::closeApp()
{
    if (m_frame)
        m_frame->close();
}

void SoCommandManager::printFile()
{
    m_actions.run(ActionId::Export);
}

void SoCommandManager::printQt()
{
    m_actions.run(ActionId::Print);
}

void SoCommandManager::openFile()
{
    const SbString models = SbFileHelper::expandString("$KMRHOME/data/models");
    const QString directory = QString::fromUtf8(models.getString());
    // The dialog would take a folder that is not there for the name of a file.
    mirabo::Modal dialog(new QFileDialog(m_frame, "open file",
                                         QFileInfo(directory).isDir() ? directory : QString(),
                                         "Kalmyr files (*.ky *.kyz *.ky.gz);;All files (*.*)"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    if (dialog.run() == QDialog::Accepted && m_document)
        m_document->openSceneFile(dialog->selectedFiles().value(0));
}

void SoCommandManager::openFileRecent()
{
    const auto* action = qobject_cast<QAction*>(sender());
    if (action && m_document)
        m_document->openSceneFile(action->data().toString());
}

void SoCommandManager::newFile()
{
    setScene(nullptr);
}

void SoCommandManager::runSave(ActionId id)
{
    m_modifiedBeforeSave = m_undo.isModified();
    m_undo.clear();
    m_actions.run(id);
}

void SoCommandManager::saveFile()
{
    runSave(ActionId::Save);
}

void SoCommandManager::saveAsFile()
{
    runSave(ActionId::SaveAs);
}

void SoCommandManager::closeFile()
{
    if (m_document && m_document->closeScene())
        m_actions.update(ActionId::Reload);
}

void SoCommandManager::copy()
{
    m_actions.run(ActionId::Copy);
}

void SoCommandManager::paste()
{
    m_actions.run(ActionId::Paste);
}

void SoCommandManager::refreshView()
{
    if (m_document)
        m_document->refresh();
}

void SoCommandManager::setFieldWatch(SoFieldItem* row)
{
    if (!m_panels)
        return;
    if (row)
        m_panels->watchField(row);
    else
        m_panels->watchSelectedField();
}

void SoCommandManager::extensionsChanged()
{
    Q_EMIT extensionsDescribed();
}

void SoCommandManager::nodeSetOverride(bool on)
{
    if (!m_overrideFactory)
        return;
    if (MrbCommand* command = m_overrideFactory(on))
        addCommand(command);
}

bool SoCommandManager::addCommand(MrbCommand* command)
{
    if (!command)
        return false;
    const mirabo::Frame frame;
    const bool done = m_undo.add(command);
    // It is the last one, unless executing it had the stack cleared.
    if (done && m_undo.canUndo())
        showStatus(nameOfStep(m_undo.currentIndex()));
    return done;
}

void SoCommandManager::undo()
{
    const mirabo::Frame frame;
    if (!m_undo.canUndo())
        return;
    const QString name = nameOfStep(m_undo.currentIndex());
    showStatus(tr("Undone: %1").arg(name)); // first: a refusal that follows takes its place
    m_undo.undo();
}

void SoCommandManager::redo()
{
    const mirabo::Frame frame;
    if (!m_undo.canRedo())
        return;
    const QString name = nameOfStep(m_undo.currentIndex() + 1);
    showStatus(tr("Redone: %1").arg(name));
    m_undo.redo();
}

void SoCommandManager::goToCommand(int executed)
{
    const mirabo::Frame frame;
    const auto now = [this] { return m_undo.currentIndex() + 1; };
    // A listener may clear the stack, or end the tool.
    const auto goOn = [&](int before, int step) {
        return now() == before + step && now() != executed && !mirabo::Frame::isEnding();
    };
    for (int before = now(); before > executed && m_undo.canUndo(); before = now()) {
        undo();
        if (!goOn(before, -1))
            return;
    }
    for (int before = now(); before < executed && m_undo.canRedo(); before = now()) {
        redo();
        if (!goOn(before, 1))
            return;
    }
}

void SoCommandManager::clearUndoCommand()
{
    m_undo.clear();
}

void SoCommandManager::outsideStructureChange()
{
    if (!m_undo.isBusy())
        m_undo.clear();
}

void SoCommandManager::setScene(SoNode* root)
{
    if (m_document)
        m_document->setScene(root, true);
}

void SoCommandManager::nodeNameChanged(SoNode* node)
{
    if (m_tree)
        m_tree->nodeTextChanged(node);
}

void SoCommandManager::announce(SoNode* node)
{
    MrbServices* services = MrbServices::getInstance();
    if (!services)
        return;
    m_announcing = true;
    services->setSelectedNode(node);
    m_announcing = false;
}

void SoCommandManager::treeNodeChosen(SoNode* node, SoNode* kit, bool newTab)
{
    const mirabo::Frame frame; // the sender is a view
    // The node before its first field: an editor that starts afresh for a node keeps the field. An
    // extension that is told may take either out of the graph.
    const SoRef<SoNode> keptNode(node);
    const SoRef<SoNode> keptKit(kit);
    announce(node);
    if (m_panels)
        m_panels->showNode(node, kit, newTab);
}

void SoCommandManager::selectedNodeChanged(SoFieldContainer* container)
{
    if (m_announcing || !container || !container->isOfType(SoNode::getClassTypeId()))
        return;
    const mirabo::Frame frame;
    auto* node = static_cast<SoNode*>(container);
    const SoRef<SoNode> kept(node);
    if (m_tree)
        m_tree->revealNode(node);
    if (m_panels)
        m_panels->showNode(node, nullptr, false);
}

void SoCommandManager::fieldSelected(SoField* field)
{
    const mirabo::Frame frame; // the sender is a list
    if (MrbServices* services = MrbServices::getInstance())
        services->setSelectedField(field);
}

void SoCommandManager::setNodeOverview(SoTreeViewItem* item, bool addTab)
{
    if (!m_tree || !m_panels)
        return;
    if (item)
        m_panels->showRow(item, addTab);
    else if (SoNode* node = m_tree->getCurrentNode())
        m_panels->showNode(node, m_tree->getCurrentKit(), addTab);
}

void SoCommandManager::setFieldEditorFromWatch(QTreeWidgetItem* row)
{
    if (m_panels)
        m_panels->selectWatchedField(row);
}

void SoCommandManager::setNodeOverviewFromWatch(QTreeWidgetItem* row)
{
    if (m_panels && row)
        m_panels->showWatchedNode(row);
}

SoMiraboEdition* SoCommandManager::getNodeEdition() const
{
    return m_panels ? m_panels->edition() : nullptr;
}

SoTreeViewItemList* SoCommandManager::getItemOverviewList()
{
    m_overviewList = m_panels ? m_panels->shownRows().mid(0, kOverviewCount) : SoTreeViewItemList();
    return &m_overviewList;
}

void SoCommandManager::closeNodeOverview(int index)
{
    if (m_panels)
        m_panels->closeOverview(index);
}

void SoCommandManager::refreshOverview()
{
    if (m_panels)
        m_panels->refresh();
}

void SoCommandManager::deleteFieldWatch()
{
    if (m_panels)
        m_panels->deleteWatchedField();
}

void SoCommandManager::highlightNodeItem(const SoPath* path)
{
    if (m_document)
        m_document->highlight(path);
}

void SoCommandManager::expandAll(QTreeWidgetItem* startItem)
{
    const mirabo::Frame frame;
    if (m_tree)
        m_tree->expandBelow(startItem);
    m_actions.updateLater();
}

void SoCommandManager::showAllReferences()
{
    m_actions.run(ActionId::ShowAllReferences);
}

void SoCommandManager::removeAllReferences()
{
    m_actions.run(ActionId::HideAllReferences);
}

void SoCommandManager::nextReference()
{
    m_actions.run(ActionId::NextReference);
}

void SoCommandManager::previousReference()
{
    m_actions.run(ActionId::PreviousReference);
}

void SoCommandManager::ignoreEnable()
{
    m_actions.run(ActionId::IgnoreEnable);
}

void SoCommandManager::treeAddNode()
{
    m_actions.run(ActionId::AddNode);
}

void SoCommandManager::treeDeleteNode()
{
    m_actions.run(ActionId::DeleteNode);
}

void SoCommandManager::treeMoveNode(SoTreeViewItem* itemToMove, SoTreeViewItem* itemInsertAfter)
{
    Q_EMIT moveRequested(itemToMove, itemInsertAfter, m_spaceHeld);
}

void SoCommandManager::saveSubSceneGraph()
{
    m_actions.run(ActionId::SaveBranch);
}

void SoCommandManager::cutNode()
{
    m_actions.run(ActionId::Cut);
}

void SoCommandManager::toggleBookmark()
{
    m_actions.run(ActionId::ToggleBookmark);
}

void SoCommandManager::nextBookmark()
{
    m_actions.run(ActionId::NextBookmark);
}

void SoCommandManager::previousBookmark()
{
    m_actions.run(ActionId::PreviousBookmark);
}

void SoCommandManager::clearBookmark()
{
    m_actions.run(ActionId::ClearBookmarks);
}

void SoCommandManager::showFindDialog()
{
    m_actions.run(ActionId::Find);
}

void SoCommandManager::find()
{
    m_actions.run(ActionId::FindAgain);
}

void SoCommandManager::findNext()
{
    m_actions.run(ActionId::FindNext);
}

void SoCommandManager::findPrevious()
{
    m_actions.run(ActionId::FindPrevious);
}

void SoCommandManager::setFilter(int filter)
{
    Q_EMIT filterRequested(filter);
}

void SoCommandManager::editPreferences()
{
    m_actions.run(ActionId::Preferences);
}

void SoCommandManager::launchAboutMiraboFrame()
{
    mirabo::Modal(new mirabo::AboutDialog(m_frame)).run();
}

void SoCommandManager::launchMiraboHelpViewer()
{
    const QString server = mirabo::readDocumentationAddress();
    QUrl page(server + "/APIS/RefManCpp/toolsmirabo.html");
    QUrl address(server + "/content/c-api");
    QUrlQuery query;
    query.addQueryItem("apiurl", page.toString());
    address.setQuery(query);
    QDesktopServices::openUrl(address);
}
