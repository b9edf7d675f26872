#include "HexInput.h"

#include "MarkedLineEdit.h"

#include <QKeyEvent>

#include <utility>

HexInput::HexInput(QWidget* parent) : QObject(parent), m_edit(new MarkedLineEdit(parent))
{
    m_edit->setAccessibleName("Hexadecimal colour");
    constexpr int kCharacters = 11;
    m_edit->setMinimumWidth(m_edit->fontMetrics().horizontalAdvance('0') * kCharacters);
    m_edit->installEventFilter(this);
    connect(m_edit, &QLineEdit::textEdited, this, &HexInput::take);
}

void HexInput::showText(const QString& text)
{
    if (!m_isTyping && m_edit->text() != text)
        m_edit->setText(text);
}

void HexInput::setProblem(const QString& problem)
{
    m_edit->setProblem(problem);
}

bool HexInput::isIllegal() const
{
    return m_edit->isIllegal();
}

void HexInput::take(const QString& text)
{
    m_isTyping = true;
    if (!std::exchange(m_isInGesture, true))
        Q_EMIT begun();
    Q_EMIT edited(text);
}

void HexInput::commit()
{
    if (!m_isTyping)
        return;
    m_isTyping = isIllegal(); // such a text stays
    if (std::exchange(m_isInGesture, false))
        Q_EMIT ended();
    Q_EMIT settled();
}

void HexInput::cancel()
{
    if (!std::exchange(m_isTyping, false)) {
        Q_EMIT finished();
        return;
    }
    m_edit->setProblem({});
    m_isInGesture = false;
    Q_EMIT cancelled();
    Q_EMIT settled();
    m_edit->selectAll();
}

bool HexInput::eventFilter(QObject*, QEvent* event)
{
    const bool isKey = event->type() == QEvent::KeyPress;
    const int key = isKey || event->type() == QEvent::ShortcutOverride
                        ? static_cast<QKeyEvent*>(event)->key()
                        : 0;
    if (isKey && key == Qt::Key_Escape) {
        cancel();
        return true;
    }
    if (isKey && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        commit();
        if (!isIllegal())
            Q_EMIT finished();
        return true;
    }
    if (key == Qt::Key_Escape && m_isTyping)
        event->accept(); // its own while there is something to give back
    if (event->type() == QEvent::FocusIn
        && static_cast<QFocusEvent*>(event)->reason() == Qt::OtherFocusReason)
        m_edit->selectAll();
    if (event->type() == QEvent::FocusOut
        && static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
        commit();
    return false;
}
