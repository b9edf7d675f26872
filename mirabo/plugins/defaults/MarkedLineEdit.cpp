#include "MarkedLineEdit.h"

#include "Looks.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QToolTip>

namespace {

constexpr int kInnerMargin = 2; // of the base class, beside the frame

} // namespace

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

QRect MarkedLineEdit::textRoom() const
{
    QStyleOptionFrame option;
    initStyleOption(&option);
    return style()
        ->subElementRect(QStyle::SE_LineEditContents, &option, this)
        .adjusted(kInnerMargin, 0, -kInnerMargin, 0);
}

bool MarkedLineEdit::isCut() const
{
    return fontMetrics().horizontalAdvance(text()) > textRoom().width();
}

bool MarkedLineEdit::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        // With nothing to undo in the text, Ctrl+Z is the window's.
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if ((key.matches(QKeySequence::Undo) && !isUndoAvailable())
            || (key.matches(QKeySequence::Redo) && !isRedoAvailable())) {
            event->ignore();
            return false;
        }
    }
    if (event->type() == QEvent::ToolTip && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text() + '\n' + toolTip(),
                           this);
        return true;
    }
    return QLineEdit::event(event);
}

void MarkedLineEdit::paintEllipsis()
{
    const QString ellipsis = QChar(0x2026);
    QRect room = textRoom();
    // Behind the last whole character that leaves room for it.
    int shown = text().size();
    while (shown > 0
           && fontMetrics().horizontalAdvance(text().left(shown) + ellipsis) > room.width())
        --shown;
    room.setLeft(room.left() + fontMetrics().horizontalAdvance(text().left(shown)));
    QPainter painter(this);
    painter.fillRect(room.adjusted(0, 0, kInnerMargin, 0), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, ellipsis);
}

void MarkedLineEdit::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    if (!hasFocus() && cursorPosition() == 0 && isCut())
        paintEllipsis();
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
