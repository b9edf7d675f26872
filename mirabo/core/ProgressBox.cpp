#include "mirabo/core/ProgressBox.h"

#include "mirabo/core/Messages.h"
#include "mirabo/extender/private/Frame.h"

#include <QCoreApplication>
#include <QProgressBar>
#include <QProgressDialog>

#include <algorithm>

namespace mirabo {

namespace {

/// Work that is done sooner shows no dialog: it would only flash.
constexpr double kPatience = 0.3; // seconds
constexpr int kWidthInCharacters = 50;

} // namespace

ProgressBox::ProgressBox(QWidget* parent, Kind kind) : m_kind(kind), m_parent(parent) {}

ProgressBox::~ProgressBox()
{
    delete m_dialog;
}

bool ProgressBox::isDue() const
{
    return !isBatch() && (SbTime::monotonic() - m_start).getValue() >= kPatience;
}

bool ProgressBox::isShown() const
{
    return m_dialog;
}

void ProgressBox::show(const QString& text)
{
    m_dialog = new QProgressDialog(text, "Cancel", 0, 100, m_parent);
    m_dialog->setWindowModality(Qt::WindowModal);
    m_dialog->setAttribute(Qt::WA_QuitOnClose, false);
    if (m_kind == Kind::Fixed)
        m_dialog->setCancelButton(nullptr);
    // The key Escape may come as either.
    const auto cancel = [this] { m_isCanceled = true; };
    QObject::connect(m_dialog, &QProgressDialog::canceled, m_dialog, cancel);
    QObject::connect(m_dialog, &QProgressDialog::rejected, m_dialog, cancel);
    m_dialog->setWindowTitle("Mirabo");
    m_dialog->setMinimumWidth(kWidthInCharacters * m_dialog->fontMetrics().averageCharWidth());
    m_bar = new QProgressBar(m_dialog);
    m_bar->setRange(0, 100);
    m_dialog->setBar(m_bar);
    m_dialog->show();
}

bool ProgressBox::step(double share, const QString& text)
{
    const Frame frame; // the host may end the tool meanwhile
    if (!m_dialog && m_parent && !m_isCanceled && !Frame::isEnding())
        show(text);
    // Not by the dialog, which would run the loop itself and rely on being there afterwards.
    if (m_bar)
        m_bar->setValue(static_cast<int>(100 * std::clamp(share, 0.0, 1.0)));
    QCoreApplication::processEvents(m_kind == Kind::Fixed ? QEventLoop::ExcludeUserInputEvents
                                                          : QEventLoop::AllEvents);
    return !m_isCanceled && !Frame::isEnding();
}

} // namespace mirabo
