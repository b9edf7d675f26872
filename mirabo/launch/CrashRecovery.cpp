#include "mirabo/launch/CrashRecovery.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/private/Later.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/RecoveryPlace.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace mirabo {

CrashRecovery::CrashRecovery(SoMiraboMainFrame* frame, SoMiraboTreeView* tree,
                             SoCommandManager* hub)
    : QObject(frame),
      m_frame(frame),
      m_hub(hub),
      m_copy({[] { return SoMiraboViewer::instance()->wholeScene(); },
              [] { return SoMiraboViewer::instance()->getCurrentFile(); },
              [this] { return m_isUnsaved; }},
             RecoveryPlace::folder(), this)
{
    follow(tree);
    connect(&m_copy, &RecoveryCopy::failed, this, [this] {
        m_hub->showStatus(tr("Unsaved work cannot be kept for the case of a crash: %1 cannot be "
                             "written.")
                              .arg(RecoveryPlace::folder()));
    });
    // When the window is there, and the file of the command line is shown.
    callLater(this, 0, [this] { offer(); });
}

void CrashRecovery::follow(SoMiraboTreeView* tree)
{
    const SoMiraboViewer* viewer = SoMiraboViewer::instance();
    // The work stays unsaved when the stack is cleared because somebody else changed the scene.
    connect(m_hub, &SoCommandManager::historyChanged, this,
            [this] { setUnsaved(m_isUnsaved || m_hub->isModified()); });
    connect(tree, &SoMiraboTreeView::outsideStructureChange, &m_copy,
            &RecoveryCopy::documentChanged);
    for (const auto signal : {&SoMiraboViewer::undoResetRequested, &SoMiraboViewer::sceneSaved})
        connect(viewer, signal, this, [this] { setUnsaved(false); });
}

void CrashRecovery::setUnsaved(bool isUnsaved)
{
    m_isUnsaved = isUnsaved;
    m_copy.documentChanged();
}

void CrashRecovery::offer()
{
    auto place = RecoveryPlace::takeAbandoned(RecoveryPlace::folder());
    if (!place || !m_frame->isVisible())
        return;
    const QString what = place->getFile().isEmpty()
                             ? tr("a scene that was never saved")
                             : tr("unsaved changes to '%1'").arg(place->getFile());
    const QPointer<CrashRecovery> self(this);
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
        || !self || !SoMiraboViewer::instance()->restoreScene(place->scenePath(), place->getFile())
        || !self)
        return;
    m_hub->undoStack().markModified();
    m_isUnsaved = true;
    m_copy.adopt(std::move(place));
}

} // namespace mirabo
