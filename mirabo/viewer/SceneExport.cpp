#include "mirabo/viewer/SceneExport.h"

#include "mirabo/core/ErrorScope.h"
#include "mirabo/core/Messages.h"
#include "mirabo/core/Modal.h"
#include "mirabo/core/ProgressBox.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/viewer/ProposedName.h"
#include "mirabo/viewer/ShownScene.h"
#include "mirabo/viewer/StatusNote.h"

#include <kalmyr/base/SoDebugError.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QScopedValueRollback>
#include <QThread>

#include <optional>

namespace mirabo {

namespace {

constexpr double kStepSeconds = 0.05; // between two looks for the user's wish to cancel

/// Holds the lock, and keeps errors to itself, while the export works; neither while events are
/// delivered.
class ExportWork {
public:
    ExportWork(QWidget* parent, const QString& name)
        : m_text("Exporting " + name), m_box(parent, ProgressBox::Kind::Cancelable)
    {
    }

    /// Waits while another thread edits. False when the user has cancelled that.
    bool begin()
    {
        while (m_goesOn && !hold())
            wait(0);
        return m_goesOn;
    }
    void end()
    {
        if (m_hold && m_remark.isEmpty())
            m_remark = m_hold->error.text();
        m_hold.reset();
    }
    bool goesOn(float share)
    {
        // At 0 the scene is being traversed: nobody may change it.
        if (share <= 0 || !m_box.isDue() || SbTime::monotonic() - m_latest < SbTime(kStepSeconds))
            return m_goesOn;
        end();
        step(share);
        // Also when it is to stop: what is given up looks at the graph once more.
        while (!hold())
            wait(share);
        return m_goesOn;
    }
    /// The first error or warning that was posted; empty for none.
    const QString& getRemark() const { return m_remark; }

private:
    struct Hold {
        GraphReading reading;
        FirstError<SoError> error;
    };

    bool hold()
    {
        m_hold.emplace();
        if (!m_hold->reading)
            m_hold.reset();
        return m_hold.has_value();
    }
    void wait(float share)
    {
        QThread::msleep(GraphReading::kRetryMilliseconds);
        if (m_box.isDue())
            step(share);
    }
    void step(float share)
    {
        m_goesOn = m_box.step(share, m_text) && m_goesOn;
        m_latest = SbTime::monotonic();
    }

    QString m_text;
    QString m_remark;
    ProgressBox m_box;
    SbTime m_latest;
    std::optional<Hold> m_hold;
    bool m_goesOn = true;
};

/// The dialog takes the words of the filters, which are none, for patterns of file names: lets it
/// show the files that have the format's extension. A dialog of the desktop does as it likes.
void showFilesOfFormat(QFileDialog* dialog, const QString& filter)
{
    auto* files = dialog->findChild<QFileSystemModel*>();
    const ExportFormat* format = findExportFormat(filter);
    if (files && format)
        files->setNameFilters({QString("*") + format->extension});
}

} // namespace

SceneExport::Choice SceneExport::ask()
{
    const QString proposed = proposedName(m_document.file());
    auto* widget = new QFileDialog(m_document.window(), "Choose a filename to export under",
                                   proposed, exportFilters());
    Modal dialog(widget);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->selectFile(proposed);
    if (!m_filter.isEmpty())
        dialog->selectNameFilter(m_filter);
    showFilesOfFormat(widget, widget->selectedNameFilter());
    QObject::connect(widget, &QFileDialog::filterSelected, widget,
                     [widget](const QString& filter) { showFilesOfFormat(widget, filter); });
    if (dialog.run() != QDialog::Accepted)
        return {};
    m_filter = dialog->selectedNameFilter();
    return {dialog->selectedFiles().value(0), findExportFormat(m_filter)};
}

ExportResult SceneExport::write(const Choice& choice, QString& remark)
{
    ExportWork work(m_document.window(), QFileInfo(choice.fileName).fileName());
    if (!work.begin())
        return ExportResult::Stopped;
    const ShownScene scene;
    ExportResult result = ExportResult::Failed;
    if (scene.getRoot())
        result = choice.format->write(
            scene, {choice.fileName, [&work](float share) { return work.goesOn(share); }});
    work.end();
    remark = work.getRemark();
    return result;
}

void SceneExport::run()
{
    if (m_isRunning)
        return;
    const QScopedValueRollback<bool> running(m_isRunning, true);
    Choice choice = ask();
    if (choice.fileName.isEmpty() || !choice.format)
        return;
    const QString typed = choice.fileName;
    choice.fileName = withExtension(typed, *choice.format);
    // The dialog has asked about the name as it was typed only.
    if (choice.fileName != typed && QFileInfo::exists(choice.fileName)
        && !askToOverwrite(m_document.window(), choice.fileName))
        return;
    QString remark;
    const ExportResult result = write(choice, remark);
    // Intended: the cause is not told, and the source is that of printing.
    if (result == ExportResult::Failed)
        SoDebugError::post("SoMiraboViewer::printFile()", "Unable to do export");
    QMainWindow* window = m_document.window();
    if (!window)
        return;
    const QString name = QFileInfo(choice.fileName).fileName();
    switch (result) {
    case ExportResult::Written:
        StatusNote::tellWritten(window, choice.fileName, remark);
        break;
    case ExportResult::Stopped:
        StatusNote::tell(window, QString("The export of %1 was cancelled").arg(name));
        break;
    case ExportResult::Failed:
        StatusNote::tell(window, QString("%1 could not be exported").arg(name));
        break;
    }
}

} // namespace mirabo
