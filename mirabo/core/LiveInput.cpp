#include "mirabo/core/LiveInput.h"

#include "mirabo/core/Messages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProgressDialog>

namespace {

/// A read that is done sooner shows no dialog: it would only flash.
constexpr int kPatienceMs = 300;

} // namespace

LiveInput::LiveInput(QWidget* parent) : m_parent(parent)
{
    m_sinceStart.start();
}

LiveInput::~LiveInput()
{
    delete m_dialog;
}

void LiveInput::showDialog()
{
    const QString name = QFileInfo(QString::fromUtf8(getCurFileName().getString())).fileName();
    m_dialog = new QProgressDialog("Loading " + name, "Cancel", 0, 100, m_parent);
    m_dialog->setWindowModality(Qt::WindowModal);
    m_dialog->setCancelButton(nullptr);
    m_dialog->setMinimumDuration(0);
    m_dialog->setAutoReset(false);
    m_dialog->setValue(0);
}

void LiveInput::progress(std::size_t bytesRead, std::size_t total)
{
    if (mirabo::isBatch() || total == 0 || m_sinceStart.elapsed() < kPatienceMs)
        return;
    if (!m_dialog)
        showDialog();
    // Repaints by itself; the user's input waits until the file is read.
    m_dialog->setValue(static_cast<int>(100 * bytesRead / total));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void LiveInput::warn(int line, int column, const SbString& text)
{
    SoInput::warn(line, column, text);
    if (m_numWarnings++ > 0)
        return;
    const QString name = QFileInfo(QString::fromUtf8(getCurFileName().getString())).fileName();
    m_firstWarning = QStringLiteral("%1:%2:%3: ").arg(name).arg(line).arg(column)
                     + QString::fromUtf8(text.getString());
}
