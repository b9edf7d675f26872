#include "mirabo/viewer/SceneSaving.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/Modal.h"
#include "mirabo/viewer/ProposedName.h"

#include <kalmyr/base/SoRef.h>

#include <QFileDialog>
#include <QFileInfo>

#include <utility>

namespace mirabo {

SceneSaving::SceneSaving(Document document)
    : m_document(std::make_shared<const Document>(std::move(document)))
{
}

SceneWriter SceneSaving::writer() const
{
    const auto& window = m_document->window;
    return SceneWriter(
        {[window](const QString& fileName) { return askToOverwrite(window(), fileName); },
         [window](const QString& fileName) {
             showWarning(window(), "File Error Dialog", "Error creating file: " + fileName);
         },
         [window](const QString& fileName, const QString& reason) {
             showWarning(
                 window(), "File Error Dialog",
                 QString("%1 was not saved; the old file is as it was.\n%2").arg(fileName, reason));
         }},
        m_document->isVrml());
}

bool SceneSaving::save()
{
    const QString fileName = m_document->file();
    if (fileName.isEmpty())
        return saveAs();
    const std::weak_ptr<const Document> document = m_document;
    const bool isWritten =
        writer().write(m_document->scene(), fileName, SceneFileFormat::Detect).isWritten;
    const auto alive = document.lock();
    if (alive && isWritten)
        alive->saved();
    else if (alive)
        alive->setFile(QString());
    return isWritten;
}

bool SceneSaving::saveAs(SoNode* part)
{
    const SceneWriter::Content content =
        part ? SceneWriter::Content{SoRef<SoNode>(part)} : m_document->scene();
    if (!content.node)
        return false;
    const QString proposed = proposedName(m_document->file());
    QString fileName, filter;
    {
        Modal dialog(
            new QFileDialog(m_document->window(), "Mirabo -- Save As", proposed, saveFilters()));
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->selectFile(proposed);
        if (dialog.run() != QDialog::Accepted)
            return false;
        fileName = dialog->selectedFiles().value(0).trimmed();
        filter = dialog->selectedNameFilter();
    }
    const SceneFileFormat format = formatOfFilter(filter);
    if (fileName.isEmpty() || format == SceneFileFormat::Detect)
        return false;
    const QString whole = withExtension(fileName, format);
    // The dialog has asked about the name as it was typed only.
    if (whole != fileName && QFileInfo::exists(whole)
        && !askToOverwrite(m_document->window(), whole))
        return false;
    const std::weak_ptr<const Document> document = m_document;
    const SceneWriter::Result result = writer().write(content, whole, format);
    const auto alive = document.lock();
    if (alive && result.isWritten && !part) {
        if (result.converted)
            alive->show(result.converted.get());
        alive->saved();
        alive->setFile(whole);
    }
    return result.isWritten;
}

bool SceneSaving::write(SoNode* node, const QString& fileName, SceneFileFormat format, bool isShown)
{
    const SceneWriter::Content content =
        node ? SceneWriter::Content{SoRef<SoNode>(node)} : m_document->scene();
    const std::weak_ptr<const Document> document = m_document;
    const SceneWriter::Result result = writer().write(content, fileName, format);
    const auto alive = document.lock();
    if (!alive || !result.isWritten || !isShown)
        return result.isWritten;
    if (result.converted)
        alive->show(result.converted.get());
    else if (node && alive->scene().node != content.node)
        alive->show(node);
    return true;
}

bool SceneSaving::confirmUnsavedChanges()
{
    if (!m_document->isModified())
        return true;
    const QString fileName = m_document->file();
    const QString text =
        fileName.isEmpty() ? QString("Save changes ") : QString("Save changes to %1").arg(fileName);
    enum { Yes, No, Cancel };
    switch (choose(QMessageBox::Information, m_document->window(), "Mirabo -- Unsaved Changes",
                   text,
                   {{"Yes", QMessageBox::YesRole},
                    {"No", QMessageBox::NoRole},
                    {"Cancel", QMessageBox::RejectRole}},
                   Yes, No)) {
    case Yes:
        save();
        return true;
    case No:
        return true;
    default:
        return false;
    }
}

} // namespace mirabo
