#include "mirabo/core/SoCommandManager.h"

#include "mirabo/core/AboutDialog.h"
#include "mirabo/core/MainActions.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbServices.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/core/SoNode.h>

#include <QAction>
#include <QDesktopServices>
#include <QFileDialog>
#include <QUrl>
#include <QUrlQuery>

using mirabo::ActionId;

namespace {

constexpr char kDocumentationServer[] = "https://docs.mirabo.dev";

} // namespace

SoCommandManager::SoCommandManager() = default;
SoCommandManager::~SoCommandManager() = default;

void SoCommandManager::setUp(SoMiraboMainFrame* frame, mirabo::SceneDocument* document,
                             mirabo::SceneTree* tree, mirabo::NodePanels* panels)
{
    m_frame = frame;
    m_document = document;
    m_tree = tree;
    m_panels = panels;
    m_undo.setStateCallback([this](bool canUndo, bool canRedo) {
        if (!m_frame)
            return;
        m_frame->action(ActionId::Undo)->setEnabled(canUndo);
        m_frame->action(ActionId::Redo)->setEnabled(canRedo);
    });
}

void SoCommandManager::release()
{
    m_frame = nullptr;
    m_document = nullptr;
    m_tree = nullptr;
    m_panels = nullptr;
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

void SoCommandManager::openFile()
{
    const SbString directory = SbFileHelper::expandString("$KMRHOME/data/models");
    const QString name = QFileDialog::getOpenFileName(
        m_frame, "open file", QString::fromUtf8(directory.getString()),
        "Kalmyr files (*.ky *.kyz *.ky.gz);;VRML files (*.wrl *.wrz *.wrl.gz);;All files (*.*)");
    if (!name.isEmpty() && m_document)
        m_document->openSceneFile(name);
}

void SoCommandManager::openFileRecent()
{
    const auto* action = qobject_cast<QAction*>(sender());
    if (action && m_document)
        m_document->openSceneFile(action->data().toString());
}

void SoCommandManager::newFile()
{
    if (m_document)
        m_document->setScene(nullptr, true);
}

void SoCommandManager::closeFile()
{
    if (m_document && m_document->closeScene())
        m_frame->action(ActionId::Reload)->setEnabled(false);
}

void SoCommandManager::refreshView()
{
    if (m_document)
        m_document->refresh();
}

bool SoCommandManager::addCommand(MrbCommand* command)
{
    return command && m_undo.add(command);
}

void SoCommandManager::undo()
{
    m_undo.undo();
}

void SoCommandManager::redo()
{
    m_undo.redo();
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
    if (m_panels)
        m_panels->showNode(node, kit, newTab);
    announce(node);
}

void SoCommandManager::selectedNodeChanged(SoFieldContainer* container)
{
    if (m_announcing || !container || !container->isOfType(SoNode::getClassTypeId()))
        return;
    auto* node = static_cast<SoNode*>(container);
    if (m_tree)
        m_tree->revealNode(node);
    if (m_panels)
        m_panels->showNode(node, nullptr, false);
}

void SoCommandManager::fieldSelected(SoField* field)
{
    if (MrbServices* services = MrbServices::getInstance())
        services->setSelectedField(field);
}

void SoCommandManager::setNodeOverview()
{
    if (m_tree && m_panels && m_tree->getCurrentNode())
        m_panels->showNode(m_tree->getCurrentNode(), m_tree->getCurrentKit(), true);
}

void SoCommandManager::nodeSetOverride(bool on)
{
    Q_EMIT overrideCommandRequested(on);
}

void SoCommandManager::expandAll()
{
    if (m_tree)
        m_tree->expandBelow(nullptr);
}

void SoCommandManager::showAllReferences()
{
    if (m_tree)
        m_tree->showReferencesOfCurrent();
}

void SoCommandManager::removeAllReferences()
{
    if (m_tree)
        m_tree->hideReferences();
}

void SoCommandManager::nextReference()
{
    if (m_tree)
        m_tree->nextReference();
}

void SoCommandManager::previousReference()
{
    if (m_tree)
        m_tree->previousReference();
}

void SoCommandManager::refreshOverview()
{
    if (m_panels)
        m_panels->refresh();
}

void SoCommandManager::launchAboutMiraboFrame()
{
    mirabo::AboutDialog(m_frame).exec();
}

void SoCommandManager::launchMiraboHelpViewer()
{
    QUrl page(QString(kDocumentationServer) + "/APIS/RefManCpp/toolsmirabo.html");
    QUrl address(QString(kDocumentationServer) + "/content/c-api");
    QUrlQuery query;
    query.addQueryItem("apiurl", page.toString());
    address.setQuery(query);
    QDesktopServices::openUrl(address);
}
