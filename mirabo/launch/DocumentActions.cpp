#include "mirabo/launch/DocumentActions.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <QPointer>

namespace mirabo {

namespace {

SceneSaving::Document documentOf(SoMiraboMainFrame* frame, SoCommandManager* hub)
{
    return {[frame = QPointer<QWidget>(frame)]() -> QWidget* { return frame; },
            [] { return SoMiraboViewer::instance()->getScene(); },
            [] { return SoMiraboViewer::instance()->getCurrentFile(); },
            [](const QString& fileName) { SoMiraboViewer::instance()->adoptFile(fileName); },
            [](SoNode* written) {
                // A scene that was written unconverted is shown already.
                if (written != SoMiraboViewer::instance()->getScene())
                    SoMiraboViewer::instance()->setScene(written, true);
            },
            [] { return SoGraphTopologyManager::isVrmlScene(); },
            [hub] { return hub->undoStack().isModified(); }};
}

} // namespace

DocumentActions::DocumentActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree,
                                 SoCommandManager* hub, bool standalone)
    : QObject(frame), m_saving(documentOf(frame, hub))
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
    if (standalone)
        frame->setCloseQuestion(mayGoOn);
}

DocumentActions::~DocumentActions()
{
    if (SoMiraboViewer::exists())
        SoMiraboViewer::instance()->setUnsavedQuestion({});
}

} // namespace mirabo
