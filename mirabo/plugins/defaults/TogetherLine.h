#pragma once

#include <mirabo/extender/MrbFieldEdit.h>

#include <QPointer>
#include <QWidget>

class QHBoxLayout;
class QToolButton;
class QVBoxLayout;
class SoField;

/// The fields that are edited together: each can be let go, and the selected one added.
class TogetherLine final : public QWidget {
    Q_OBJECT

public:
    explicit TogetherLine(QWidget* parent);

    /// Null: none. Not owned.
    void setEdit(MrbFieldEdit* edit);
    /// Whether the selected field is offered.
    void setOffering(bool on);
    /// Another field was selected, which may be added.
    void showCandidate();

Q_SIGNALS:
    void addRequested();

private:
    void showFields();

    QPointer<MrbFieldEdit> m_edit;
    QVBoxLayout* m_layout;
    QWidget* m_list = nullptr;
    QToolButton* m_add;
    bool m_isOffering = false;
};
