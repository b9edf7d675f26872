#pragma once

#include "mirabo/core/ReadMessages.h"

#include <QDialog>

class QAction;
class QLabel;
class QTreeView;

namespace mirabo {

class ReadMessagesModel;

/// Lists the messages of a read beside the window. What is selected, or everything, is copied as
/// lines "FILE:LINE:COLUMN: TEXT".
class ReadMessagesDialog final : public QDialog {
    Q_OBJECT

public:
    explicit ReadMessagesDialog(QWidget* parent);
    ~ReadMessagesDialog() override;

    /// Replaces what is listed.
    void setMessages(const ReadMessages& messages);
    /// Shows the dialog, in front and with the keyboard in the list.
    void present();

private:
    QWidget* createButtons();
    void showMenu(const QPoint& position);
    void updateCopy();
    void copySelected() const;
    void copyAll() const;

    ReadMessagesModel* m_model; // Owned, as all below.
    QTreeView* m_view;
    QLabel* m_summary;
    QAction* m_copy;
    QAction* m_copyAll;
};

} // namespace mirabo
