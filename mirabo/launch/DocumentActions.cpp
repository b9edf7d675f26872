#include "mirabo/launch/DocumentActions.h"

#include "mirabo/core/Later.h"
#include "mirabo/core/Messages.h"
#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/ChangedFileBar.h"
#include "mirabo/viewer/ReadMessagesButton.h"
#include "mirabo/viewer/RecoveryCopy.h"
#include "mirabo/viewer/RecoveryPlace.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/vrml/SoVRMLParent.h>

#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
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
    connect(tree, &SoMiraboTreeView::rootChanged, this, [hub] {
        for (const ActionId id : {ActionId::Save, ActionId::SaveAs})
            hub->actions().update(id);
    });
    connect(viewer, &SoMiraboViewer::fileChanged, this, &DocumentActions::watchFile);
    connect(viewer, &SoMiraboViewer::sceneSaved, this, &DocumentActions::documentSaved);
    connect(&m_change, &FileChange::changed, this, &DocumentActions::showFileChange);
    if (standalone)
        frame->setCloseQuestion([] {
            return !SoMiraboViewer::exists() || SoMiraboViewer::instance()->confirmUnsavedChanges();
        });
    if (standalone && !isBatch())
        keepRecoveryCopy(tree);
    showReadMessages(frame);
}

DocumentActions::~DocumentActions()
{
    if (SoMiraboViewer::exists())
        SoMiraboViewer::instance()->setSceneState({});
}

void DocumentActions::keepRecoveryCopy(SoMiraboTreeView* tree)
{
    m_recovery = std::make_unique<RecoveryCopy>(
        RecoveryCopy::Document{[] { return SoMiraboViewer::instance()->wholeScene(); },
                               [] { return SoMiraboViewer::instance()->getCurrentFile(); },
                               [this] { return m_isUnsaved; }},
        RecoveryPlace::folder(), this);
    RecoveryCopy* copy = m_recovery.get();
    // Also when the stack was cleared because somebody else changed the scene.
    connect(m_hub, &SoCommandManager::historyChanged, this, [this] {
        m_isUnsaved = m_isUnsaved || m_hub->isModified();
        m_recovery->documentChanged();
    });
    connect(tree, &SoMiraboTreeView::outsideStructureChange, copy, &RecoveryCopy::documentChanged);
    connect(SoMiraboViewer::instance(), &SoMiraboViewer::undoResetRequested, this, [this] {
        m_isUnsaved = false; // another scene
        m_recovery->documentChanged();
    });
    connect(copy, &RecoveryCopy::failed, this, [this] {
        m_hub->showStatus(tr("Unsaved work cannot be kept for the case of a crash: %1 cannot be "
                             "written.")
                              .arg(RecoveryPlace::folder()));
    });
    // When the window is there, and the file of the command line is shown.
    callLater(this, 0, [this] { offerRecovery(); });
}

void DocumentActions::offerRecovery()
{
    auto place = RecoveryPlace::takeAbandoned(RecoveryPlace::folder());
    if (!place || !m_frame->isVisible())
        return;
    const QString what = place->getFile().isEmpty()
                             ? tr("a scene that was never saved")
                             : tr("unsaved changes to '%1'").arg(place->getFile());
    const QPointer<DocumentActions> self(this);
    Modal box(
        new QMessageBox(QMessageBox::Question, "Mirabo -- Recover Scene",
                        tr("Mirabo ended without closing the scene. There is a copy of %1, "
                           "made on %2.")
                            .arg(what, QLocale().toString(place->getTime(), QLocale::ShortFormat)),
                        QMessageBox::NoButton, m_frame));
    const QPushButton* recover = box->addButton(tr("&Recover"), QMessageBox::AcceptRole);
    const QPushButton* discard = box->addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    box->addButton(tr("&Later"), QMessageBox::RejectRole);
    if (!box.run() || !self)
        return; // it is offered again
    if (box->clickedButton() == discard)
        place->clear();
    if (box->clickedButton() != recover || !SoMiraboViewer::instance()->confirmUnsavedChanges()
        || !self || !SoMiraboViewer::instance()->restoreScene(place->scenePath(), place->getFile()))
        return;
    m_hub->undoStack().markModified();
    m_isUnsaved = true;
    m_recovery->adopt(std::move(place));
}

/// The scene and its file agree from now on.
void DocumentActions::documentSaved()
{
    watchFile();
    m_isUnsaved = false;
    if (m_recovery)
        m_recovery->documentChanged();
}

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
