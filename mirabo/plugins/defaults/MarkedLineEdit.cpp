#include "MarkedLineEdit.h"

#include "Looks.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

MarkedLineEdit::MarkedLineEdit(QWidget* parent) : QLineEdit(parent) {}

void MarkedLineEdit::setHint(const QString& hint)
{
    m_hint = hint;
    updateToolTip();
}

void MarkedLineEdit::setProblem(const QString& problem)
{
    if (m_problem == problem)
        return;
    m_problem = problem;
    setAccessibleDescription(problem);
    updateToolTip();
    update();
}

void MarkedLineEdit::updateToolTip()
{
    setToolTip(m_problem.isEmpty() ? m_hint
               : m_hint.isEmpty()  ? m_problem
                                   : m_problem + "\n\n" + m_hint);
}

void MarkedLineEdit::pasteText()
{
    const QString text = QGuiApplication::clipboard()->text();
    if (!isReadOnly() && m_pasteReader && m_pasteReader(text))
        return;
    paste();
}

QMenu* MarkedLineEdit::makeMenu()
{
    QMenu* menu = createStandardContextMenu();
    if (auto* action = menu->findChild<QAction*>("edit-paste")) {
        action->disconnect(SIGNAL(triggered(bool)));
        connect(action, &QAction::triggered, this, &MarkedLineEdit::pasteText);
    }
    return menu;
}

void MarkedLineEdit::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    if (!isIllegal())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal width = looks::lineWidth(this);
    painter.setPen(QPen(looks::warningColor(palette()), width));
    const qreal inset = width / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), width, width);
}

void MarkedLineEdit::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Paste)) {
        pasteText();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}
