#pragma once

#include <QLineEdit>

#include <functional>

/// A line of text that can be marked: its text is illegal, and the tool tip says why. A text that
/// is cut off without the focus ends in an ellipsis, and the tool tip has it in full.
class MarkedLineEdit final : public QLineEdit {
    Q_OBJECT
    Q_PROPERTY(bool illegal READ isIllegal)

public:
    /// Takes a text from the clipboard; false to have it pasted as usual.
    using PasteReader = std::function<bool(const QString& text)>;

    explicit MarkedLineEdit(QWidget* parent = nullptr);

    /// Sets the tool tip for legal input.
    void setHint(const QString& hint);
    /// Marks the text; an empty one takes the mark away.
    void setProblem(const QString& problem);
    const QString& problem() const { return m_problem; }
    bool isIllegal() const { return !m_problem.isEmpty(); }
    void setPasteReader(PasteReader reader) { m_pasteReader = std::move(reader); }

    /// As Ctrl+V.
    void pasteText();
    /// The usual menu; a caller adds to it and shows it. The caller owns it.
    QMenu* makeMenu();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRect textRoom() const;
    bool isCut() const;
    void paintEllipsis();
    void updateToolTip();

    QString m_hint;
    QString m_problem;
    PasteReader m_pasteReader;
};
