#include "mirabo/overview/RowEditor.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"

#include <kalmyr/core/SoField.h>

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMimeData>

#include <memory>

namespace mirabo {

namespace {

/// The name of the type that the text of the clipboard is a value of.
constexpr char kTypeFormat[] = "application/x-mirabo-field-type";

/// Single and multiple values of one type have the same text.
bool isSameKind(const QString& type, const QString& other)
{
    return type.mid(2) == other.mid(2) && type.left(2).endsWith('F') && other.left(2).endsWith('F');
}

/// Null while the row's field is dead or another thread edits.
std::unique_ptr<MrbFieldEdit> editOf(const SoFieldItem& row, QObject* parent = nullptr)
{
    const SoFieldItem::Look look(row);
    auto edit = std::make_unique<MrbFieldEdit>(look.field(), parent);
    return edit->getFieldCount() > 0 ? std::move(edit) : nullptr;
}

/// Empty when the value can be changed.
QString obstacle(const MrbFieldEdit& edit)
{
    const MrbFieldState state = edit.getState();
    if (state.isConnected)
        return RowEditor::tr("%1 is driven by %2; disconnect it first.")
            .arg(state.fieldName, state.source);
    return state.isReadOnly ? RowEditor::tr("%1 is an output.").arg(state.fieldName) : QString();
}

} // namespace

RowEditor::RowEditor(SoMiraboList* list) : QObject(list), m_list(list)
{
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focusMoved(now); });
}

RowEditor::~RowEditor() = default;

void RowEditor::open(SoFieldItem* row)
{
    close();
    std::unique_ptr<MrbFieldEdit> edit = editOf(*row);
    const QString problem = edit ? obstacle(*edit) : QString();
    if (!edit || !problem.isEmpty()) {
        Q_EMIT message(problem);
        return;
    }
    MrbFieldWidget* widget = MrbFieldEditors::getInstance()->create(
        edit.get(), MrbFieldWidget::Form::Compact, m_list->viewport());
    if (!widget) {
        Q_EMIT message(tr("Values of this type are edited in the field editor."));
        return;
    }
    edit.release()->setParent(widget);
    m_widget = widget;
    m_cell = m_list->model()->index(m_list->indexOfTopLevelItem(row), SoMiraboList::FieldValue);
    widget->setAutoFillBackground(true);
    widget->installEventFilter(this);
    connect(widget, &MrbFieldWidget::finished, this, &RowEditor::close);
    m_list->setIndexWidget(m_cell, widget);
    widget->setFocus(Qt::OtherFocusReason);
}

void RowEditor::close()
{
    if (!m_widget)
        return;
    const QPointer<RowEditor> self(this);
    const QPointer<MrbFieldWidget> widget = m_widget;
    widget->commit(); // a sensor of the host may end the tool
    if (self && widget && widget == m_widget)
        remove();
}

void RowEditor::remove()
{
    const bool hadFocus = m_widget->isAncestorOf(QApplication::focusWidget());
    MrbFieldWidget* widget = m_widget;
    m_widget = nullptr;
    widget->removeEventFilter(this);
    if (m_cell.isValid())
        m_list->setIndexWidget(m_cell, nullptr); // deletes it later
    if (hadFocus)
        m_list->setFocus(Qt::OtherFocusReason);
}

void RowEditor::focusMoved(const QWidget* now)
{
    // A dialog or a menu of its own, or another window, leaves it open.
    if (m_widget && now && now->window() == m_widget->window() && now != m_widget
        && !m_widget->isAncestorOf(now))
        close();
}

bool RowEditor::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Escape && key != Qt::Key_Return && key != Qt::Key_Enter)
        return false;
    close(); // no control of the widget wanted it
    return true;
}

QMimeData* RowEditor::copiedValue(const SoFieldItem& row)
{
    auto* data = new QMimeData;
    data->setText(row.copiedValue());
    data->setData(kTypeFormat, row.text(SoMiraboList::FieldTypeColumn).toUtf8());
    return data;
}

bool RowEditor::canPaste()
{
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText();
}

void RowEditor::paste(SoFieldItem* row)
{
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    const std::unique_ptr<MrbFieldEdit> edit = data ? editOf(*row) : nullptr;
    if (!edit)
        return;
    const QString type = QString::fromUtf8(data->data(kTypeFormat));
    const QString own = row->text(SoMiraboList::FieldTypeColumn);
    QString problem = obstacle(*edit);
    if (problem.isEmpty() && !type.isEmpty() && !isSameKind(type, own))
        problem = tr("The clipboard holds a value of type %1; this field takes %2.").arg(type, own);
    if (problem.isEmpty()) {
        const QPointer<RowEditor> self(this);
        edit->setText(data->text(), &problem);
        if (!self)
            return;
        if (!problem.isEmpty())
            problem = tr("The clipboard holds no %1: %2").arg(own, problem);
    }
    if (!problem.isEmpty())
        Q_EMIT message(problem);
}

void RowEditor::resetToDefault(SoFieldItem* row)
{
    const std::unique_ptr<MrbFieldEdit> edit = editOf(*row);
    const QString problem = edit ? obstacle(*edit) : QString();
    if (!problem.isEmpty())
        Q_EMIT message(problem);
    else if (edit)
        edit->resetToDefault();
}

} // namespace mirabo
