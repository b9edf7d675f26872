#include "mirabo/launch/DocumentActions.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/ChangedFileBar.h"
#include "mirabo/viewer/ReadMessagesButton.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <QPointer>
#include <QStatusBar>

namespace mirabo {

SceneSaving::Document DocumentActions::document()
{
    return {[frame = QPointer<QWidget>(m_frame)]() -> QWidget* { return frame; },
            [] { return SoMiraboViewer::instance()->getScene(); },
            [] { return SoMiraboViewer::instance()->getCurrentFile(); },
            [](const QString& fileName) { SoMiraboViewer::instance()->adoptFile(fileName); },
            [this] { watchFile(); },
            [](SoNode* written) {
                // A scene that was written unconverted is shown already.
                if (written != SoMiraboViewer::instance()->getScene())
                    SoMiraboViewer::instance()->setScene(written, true);
            },
            [] { return SoGraphTopologyManager::isVrmlScene(); },
            [this] { return m_hub->undoStack().isModified(); }};
}

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
    : QObject(frame), m_frame(frame), m_hub(hub), m_saving(document()), m_change(this)
{
    const auto hasScene = [] { return SoMiraboViewer::instance()->getScene() != nullptr; };
    ActionRegistry& actions = hub->actions();
    actions.add(ActionId::Save, this, {[this] { m_saving.save(); }, hasScene});
    actions.add(ActionId::SaveAs, this, {[this] { m_saving.saveAs(); }, hasScene});
    actions.add(ActionId::SaveBranch, this,
                {[this, tree] { m_saving.saveAs(tree->getCurrentNode()); },
                 [tree] { return tree->getCurrentNode() != nullptr; }});
    connect(tree, &SoMiraboTreeView::rootChanged, this, [hub] {
        for (const ActionId id : {ActionId::Save, ActionId::SaveAs})
            hub->actions().update(id);
    });
    const auto mayGoOn = [self = QPointer<DocumentActions>(this)] {
        return !self || self->m_saving.confirmUnsavedChanges();
    };
    SoMiraboViewer::instance()->setUnsavedQuestion(mayGoOn);
    connect(SoMiraboViewer::instance(), &SoMiraboViewer::fileChanged, this,
            &DocumentActions::watchFile);
    connect(&m_change, &FileChange::changed, this, &DocumentActions::showFileChange);
    if (standalone)
        frame->setCloseQuestion(mayGoOn);
    showReadMessages(frame);
}

DocumentActions::~DocumentActions()
{
    if (SoMiraboViewer::exists())
        SoMiraboViewer::instance()->setUnsavedQuestion({});
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
