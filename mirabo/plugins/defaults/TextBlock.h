#pragma once

#include <QPlainTextEdit>

/// Lines of text in an editor: Tab goes on to the next control, and with nothing to undo in the
/// text Ctrl+Z is the window's.
class TextBlock final : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit TextBlock(QWidget* parent = nullptr);

    /// Shows another text, silently, and keeps the cursor where it can be.
    void showText(const QString& text);

protected:
    bool event(QEvent* event) override;
};
