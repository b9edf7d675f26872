#include "mirabo/viewer/ReadMessagesButton.h"

#include "mirabo/viewer/ReadMessagesDialog.h"
#include "mirabo/viewer/ReadMessagesModel.h"

#include <QFileInfo>

namespace mirabo {

ReadMessagesButton::ReadMessagesButton(QWidget* parent) : QToolButton(parent)
{
    setObjectName("readMessagesButton");
    setAutoRaise(true);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setFocusPolicy(Qt::TabFocus);
    setMessages({}); // the status bar has its height from the beginning
    connect(this, &QToolButton::clicked, this, &ReadMessagesButton::open);
}

void ReadMessagesButton::setMessages(const ReadMessages& messages)
{
    m_messages = messages;
    const int count = messages.count();
    setText(count == 1 ? tr("1 &message") : tr("%1 &messages").arg(count));
    setIcon(
        iconOf(messages.count(ReadMessage::Error) > 0 ? ReadMessage::Error : ReadMessage::Warning));
    const QString name = QFileInfo(messages.fileName()).fileName();
    const QString told = tr("Messages of %1: %2").arg(name, messages.summary());
    setToolTip(told);
    setAccessibleName(told);
    setVisible(count > 0);
    if (m_dialog)
        m_dialog->setMessages(messages);
}

void ReadMessagesButton::open()
{
    if (!m_dialog) {
        m_dialog = new ReadMessagesDialog(window());
        m_dialog->setMessages(m_messages);
    }
    m_dialog->present();
}

} // namespace mirabo
