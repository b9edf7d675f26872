#include "mirabo/core/LiveInput.h"

#include "mirabo/core/ReadMessages.h"

#include <QFileInfo>

LiveInput::LiveInput(QWidget* parent) : m_box(parent, mirabo::ProgressBox::Kind::Fixed) {}

LiveInput::~LiveInput() = default;

void LiveInput::progress(std::size_t bytesRead, std::size_t total)
{
    if (total == 0 || !m_box.isDue())
        return;
    QString text;
    if (!m_box.isShown())
        text = "Loading " + QFileInfo(QString::fromUtf8(getCurFileName().getString())).fileName();
    m_box.step(static_cast<double>(bytesRead) / static_cast<double>(total), text);
}

void LiveInput::warn(const SbString& fileName, int line, int column, const SbString& text)
{
    SoInput::warn(fileName, line, column, text);
    if (m_messages)
        m_messages->add({mirabo::ReadMessage::Warning, fileName, line, column, text});
}
