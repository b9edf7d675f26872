#include "mirabo/core/LiveInput.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/ReadMessages.h"
#include "mirabo/extender/private/Frame.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProgressBar>
#include <QProgressDialog>

namespace {

/// A read that is done sooner shows no dialog: it would only flash.
constexpr double kPatience = 0.3; // seconds

} // namespace

LiveInput::LiveInput(QWidget* parent) : m_parent(parent) {}

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
    m_dialog->setAttribute(Qt::WA_QuitOnClose, false);
    m_bar = new QProgressBar(m_dialog);
    m_bar->setRange(0, 100);
    m_dialog->setBar(m_bar);
    m_dialog->show();
}

void LiveInput::progress(std::size_t bytesRead, std::size_t total)
{
    if (mirabo::isBatch() || total == 0 || (SbTime::monotonic() - m_start).getValue() < kPatience)
        return;
    const mirabo::Frame frame; // the host may end the tool meanwhile
    if (!m_dialog && m_parent && !mirabo::Frame::isEnding())
        showDialog();
    // Not by the dialog, which would run the loop itself and rely on being there afterwards.
    if (m_bar)
        m_bar->setValue(static_cast<int>(100 * bytesRead / total));
    // The user's input waits until the file is read.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void LiveInput::warn(const SbString& fileName, int line, int column, const SbString& text)
{
    SoInput::warn(fileName, line, column, text);
    if (m_messages)
        m_messages->add({mirabo::ReadMessage::Warning, fileName, line, column, text});
}
