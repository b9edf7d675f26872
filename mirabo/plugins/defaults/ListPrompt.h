#pragma once

#include <QWidget>

#include <functional>

class MarkedLineEdit;
class QLabel;
class QToolButton;

/// A line that asks for a text, between the tools and the table; hidden until it asks.
class ListPrompt final : public QWidget {
    Q_OBJECT

public:
    /// Does what was asked for; returns what is wrong with the text, or an empty one.
    using Answer = std::function<QString(const QString& text)>;

    explicit ListPrompt(QWidget* parent = nullptr);

    /// Shows a question with a text to begin with. Return and the button give the answer, which is
    /// asked for again as long as something is wrong with it; Escape gives none.
    void ask(const QString& question, const QString& text, const QString& hint, Answer answer);
    /// Gives the question up.
    void close();

Q_SIGNALS:
    /// The question is answered or given up.
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    void give();

    QLabel* m_question;
    MarkedLineEdit* m_line;
    QLabel* m_problem;
    Answer m_answer;
};
