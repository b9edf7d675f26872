#pragma once

#include "mirabo/core/ReadMessages.h"

#include <QPointer>
#include <QToolButton>

namespace mirabo {

class ReadMessagesDialog;

/// Tells in the status bar how many messages the last read gave, and opens the list of them. Hidden
/// while there are none.
class ReadMessagesButton final : public QToolButton {
    Q_OBJECT

public:
    /// The list belongs to the window that the button is in when it is opened first.
    explicit ReadMessagesButton(QWidget* parent);

    void setMessages(const ReadMessages& messages);

private:
    void open();

    ReadMessages m_messages;
    QPointer<ReadMessagesDialog> m_dialog; // Not owned; the window's.
};

} // namespace mirabo
