#pragma once

#include <mirabo/extender/MrbFieldEdit.h>

#include <QPointer>
#include <QWidget>

class QCheckBox;
class QLabel;
class QToolButton;

/// The state of the edited fields beside their value: default, ignored, connected.
class FieldStateLine final : public QWidget {
    Q_OBJECT

public:
    explicit FieldStateLine(QWidget* parent);

    /// Null: none. Not owned.
    void setEdit(MrbFieldEdit* edit);

private:
    void showState();
    void chooseSource();
    void goToSource();

    QPointer<MrbFieldEdit> m_edit;
    QToolButton* m_reset;
    QCheckBox* m_ignored;
    QToolButton* m_connect;
    QToolButton* m_disconnect;
    QLabel* m_source;
};
