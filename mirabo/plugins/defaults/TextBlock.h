#pragma once

#include <QPlainTextEdit>

/// Lines of text in an editor: Tab goes on to the next control, and with nothing to undo in the
/// text Ctrl+Z is the window's.
class TextBlock final : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit TextBlock(QWidget* parent = nullptr);

    /// The text with all its blanks, some of which toPlainText() evens out.
    QString exactText() const;
    /// Shows another text, silently, and keeps the cursor where it can be.
    void showText(const QString& text);

protected:
    bool event(QEvent* event) override;
};
