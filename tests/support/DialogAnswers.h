#pragma once

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QPointer>

#include <functional>
#include <utility>
#include <vector>

namespace support {

/// Answers dialogs one after the other, each once it runs its loop, as a user would. Those for
/// which there is no answer are counted and closed.
class DialogAnswers final : public QObject {
public:
    using Answer = std::function<void(QDialog* dialog)>;

    explicit DialogAnswers(std::vector<Answer> answers) : m_answers(std::move(answers))
    {
        qApp->installEventFilter(this);
    }

    /// How many dialogs there were.
    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (dialog && event->type() == QEvent::Show && dialog->isModal())
            QMetaObject::invokeMethod(
                this, [this, shown = QPointer<QDialog>(dialog)] { answer(shown); },
                Qt::QueuedConnection);
        return false;
    }

private:
    void answer(const QPointer<QDialog>& dialog)
    {
        const auto number = static_cast<std::size_t>(m_count++);
        if (number < m_answers.size() && dialog)
            m_answers[number](dialog);
        else if (dialog)
            dialog->reject();
    }

    std::vector<Answer> m_answers;
    int m_count = 0;
};

} // namespace support
