#include "TextBlock.h"

#include <QKeyEvent>
#include <QSignalBlocker>

#include <algorithm>

TextBlock::TextBlock(QWidget* parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
}

QString TextBlock::exactText() const
{
    return document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

void TextBlock::showText(const QString& text)
{
    if (exactText() == text)
        return;
    const QSignalBlocker blocker(this);
    const int at = textCursor().position();
    setPlainText(text);
    QTextCursor cursor = textCursor();
    cursor.setPosition(std::min(at, document()->characterCount() - 1));
    setTextCursor(cursor);
}

bool TextBlock::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->matches(QKeySequence::Undo) && !document()->isUndoAvailable())
            || (key->matches(QKeySequence::Redo) && !document()->isRedoAvailable())) {
            event->ignore();
            return false;
        }
    }
    return QPlainTextEdit::event(event);
}
