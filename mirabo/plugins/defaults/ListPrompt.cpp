#include "ListPrompt.h"

#include "Looks.h"
#include "MarkedLineEdit.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

ListPrompt::ListPrompt(QWidget* parent)
    : QWidget(parent),
      m_question(looks::makeLabel({}, this)),
      m_line(new MarkedLineEdit(this)),
      m_problem(looks::makeLabel({}, this))
{
    QToolButton* apply = looks::makeButton("Apply", "Apply (Return)", this);
    QToolButton* cancel = looks::makeButton("Cancel", "Change nothing (Escape)", this);
    m_question->setBuddy(m_line);
    m_problem->setWordWrap(true);
    m_problem->hide();
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(looks::kSpacing);
    grid->addWidget(m_question, 0, 0);
    grid->addWidget(m_line, 0, 1);
    grid->addWidget(apply, 0, 2);
    grid->addWidget(cancel, 0, 3);
    grid->addWidget(m_problem, 1, 0, 1, 4);
    grid->setColumnStretch(1, 1);
    connect(m_line, &QLineEdit::textEdited, this, [this] {
        m_line->setProblem({});
        m_problem->hide();
    });
    connect(apply, &QToolButton::clicked, this, &ListPrompt::give);
    connect(cancel, &QToolButton::clicked, this, &ListPrompt::close);
    hide();
}

void ListPrompt::ask(const QString& question, const QString& text, const QString& hint,
                     Answer answer)
{
    m_question->setText(question);
    m_line->setAccessibleName(question);
    m_line->setText(text);
    m_line->setHint(hint);
    m_line->setProblem({});
    m_problem->hide();
    m_answer = std::move(answer);
    show();
    m_line->selectAll();
    m_line->setFocus();
}

void ListPrompt::close()
{
    if (isHidden())
        return;
    hide();
    m_answer = nullptr;
    Q_EMIT closed();
}

void ListPrompt::give()
{
    if (!m_answer)
        return;
    const Answer answer = m_answer;
    const QString problem = answer(m_line->text());
    if (problem.isEmpty()) {
        close();
        return;
    }
    m_line->setProblem(problem);
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, looks::warningColor(palette()));
    m_problem->setPalette(warning);
    m_problem->setText(problem);
    m_problem->show();
    m_line->setFocus();
}

bool ListPrompt::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void ListPrompt::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        close();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        give();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}
