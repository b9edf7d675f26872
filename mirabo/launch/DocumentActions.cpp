#include "mirabo/launch/DocumentActions.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/launch/CrashRecovery.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/ChangedFileBar.h"
#include "mirabo/viewer/ReadMessagesButton.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/vrml/SoVRMLParent.h>

#include <QPointer>
#include <QStatusBar>

namespace mirabo {

namespace {

/// At the right of the status bar.
void showReadMessages(SoMiraboMainFrame* frame)
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    auto* button = new ReadMessagesButton(frame);
    frame->statusBar()->addPermanentWidget(button);
    QObject::connect(viewer, &SoMiraboViewer::readMessagesChanged, button,
                     &ReadMessagesButton::setMessages);
    QObject::connect(frame, &SoMiraboMainFrame::inlineRead, viewer,
                     &SoMiraboViewer::addReadMessages);
}

} // namespace

DocumentActions::DocumentActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree,
                                 SoCommandManager* hub, bool standalone)
    : QObject(frame), m_frame(frame), m_hub(hub), m_change(this)
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    viewer->setSceneState({[hub = QPointer(hub)] { return hub && hub->isModified(); },
                           [] {
                               // One that is a world in part only may have files that were edited.
                               const SoNode* root = SoMiraboViewer::instance()->getScene();
                               return root && root->isOfType(SoVRMLParent::getClassTypeId());
                           }});
    const auto hasScene = [] { return SoMiraboViewer::instance()->getScene() != nullptr; };
    const auto tell = [hub = QPointer(hub)](bool isSaved) {
        if (hub && !isSaved && hub->wasModifiedBeforeSave())
            hub->undoStack().markModified();
    };
    ActionRegistry& actions = hub->actions();
    actions.add(ActionId::Save, this, {[viewer, tell] { tell(viewer->saveScene()); }, hasScene});
    actions.add(ActionId::SaveAs, this,
                {[viewer, tell] { tell(viewer->saveSceneAs()); }, hasScene});
    actions.add(ActionId::SaveBranch, this,
                {[viewer, tree] { viewer->saveSceneAs(tree->getCurrentNode()); },
                 [tree] { return tree->getCurrentNode() != nullptr; }});
    actions.add(ActionId::Export, this, {[viewer] { viewer->exportImage(); }, hasScene});
    actions.add(ActionId::Print, this, {[viewer] { viewer->printFile(); }, hasScene});
    connect(tree, &SoMiraboTreeView::rootChanged, this, [hub] {
        for (const ActionId id :
             {ActionId::Save, ActionId::SaveAs, ActionId::Export, ActionId::Print})
            hub->actions().update(id);
    });
    for (const auto signal : {&SoMiraboViewer::fileChanged, &SoMiraboViewer::sceneSaved})
        connect(viewer, signal, this, &DocumentActions::watchFile);
    connect(&m_change, &FileChange::changed, this, &DocumentActions::showFileChange);
    if (standalone)
        frame->setCloseQuestion([] {
            return !SoMiraboViewer::exists() || SoMiraboViewer::instance()->confirmUnsavedChanges();
        });
    if (standalone && !isBatch())
        new CrashRecovery(frame, tree, hub); // the window owns it
    showReadMessages(frame);
}

DocumentActions::~DocumentActions()
{
    if (SoMiraboViewer::exists())
        SoMiraboViewer::instance()->setSceneState({});
}

/// The scene and its file agree from now on.
void DocumentActions::watchFile()
{
    if (m_bar)
        m_bar->remove();
    m_change.watch(isBatch() ? QString() : SoMiraboViewer::instance()->getCurrentFile());
}

void DocumentActions::showFileChange(bool isDeleted)
{
    if (m_bar)
        m_bar->remove();
    m_bar = new ChangedFileBar(m_frame, m_change.fileName(), isDeleted);
    connect(m_bar, &ChangedFileBar::keepRequested, this, &DocumentActions::watchFile);
    connect(m_bar, &ChangedFileBar::reloadRequested, m_hub,
            [hub = m_hub] { hub->actions().run(ActionId::Reload); });
}

} // namespace mirabo
