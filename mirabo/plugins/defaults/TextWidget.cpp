#include "TextWidget.h"

#include "FieldText.h"
#include "InputMark.h"
#include "MarkedLineEdit.h"
#include "TextBlock.h"

#include <kalmyr/core/SoField.h>
#include <mirabo/extender/MrbFieldPresentation.h>

#include <QEvent>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include <functional>

namespace {

/// Longer texts are shown cut, and cannot be edited here.
constexpr int kMaxLength = 1'000'000;

/// Base of both forms.
class TextWidgetBase : public MrbFieldWidget {
public:
    TextWidgetBase(MrbFieldEdit* edit, QWidget* parent) : MrbFieldWidget(edit, parent)
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(4);
    }

    bool isTyping() const override { return input() != m_shown; }
    void showValue() override
    {
        edit()->read([this](const SoField& field) {
            SbString text;
            field.get(text);
            m_shown = toText(text);
        });
        if (m_shown.size() > kMaxLength) {
            m_shown.truncate(kMaxLength);
            setReadOnly(true);
        }
        setInput(m_shown);
        check();
    }
    void commit() override
    {
        const QString text = input();
        if (text == m_shown || !problemOf(text).isEmpty())
            return;
        edit()->beginGesture();
        edit()->setText(text);
        edit()->endGesture();
        m_shown = text;
        typingEnded();
    }

protected:
    virtual QString input() const = 0;
    virtual void setInput(const QString& text) = 0;
    virtual void showProblem(const QString& problem) = 0;

    void check() { showProblem(isTyping() ? problemOf(input()) : QString()); }
    void revert()
    {
        setInput(m_shown);
        check();
        typingEnded();
    }
    QString problemOf(const QString& text) const
    {
        SbString problem;
        const std::unique_ptr<SoField> scratch = edit()->makeValue();
        if (scratch)
            scratch->set(fromText(text), problem);
        return toText(problem);
    }

private:
    QString m_shown; ///< as showValue() set it
};

class BlockText final : public TextWidgetBase {
public:
    BlockText(MrbFieldEdit* edit, QWidget* parent)
        : TextWidgetBase(edit, parent), m_input(new TextBlock(this)), m_problem(new QLabel(this))
    {
        m_input->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        m_input->setAccessibleName(tr("Value as text"));
        m_input->installEventFilter(this);
        m_problem->setWordWrap(true);
        m_problem->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout()->addWidget(m_input);
        layout()->addWidget(m_problem);
        setFocusProxy(m_input);
        connect(m_input, &QPlainTextEdit::textChanged, this, [this] { check(); });
    }

    void setReadOnly(bool on) override { m_input->setReadOnly(on); }

protected:
    QString input() const override { return m_input->toPlainText(); }
    void setInput(const QString& text) override { m_input->showText(text); }
    void showProblem(const QString& problem) override
    {
        markInput(m_input, problem, tr("Ctrl+Return applies, Escape takes back"));
        const QString hint = isTyping() ? tr("Ctrl+Return applies the text.") : QString();
        m_problem->setText(problem.isEmpty() ? hint : problem);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::FocusOut
            && static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
            commit();
        if (event->type() != QEvent::KeyPress)
            return MrbFieldWidget::eventFilter(watched, event);
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (isReturn && key->modifiers() & Qt::ControlModifier) {
            commit();
            return true;
        }
        if (key->key() == Qt::Key_Escape && isTyping()) {
            revert();
            return true;
        }
        return false;
    }

private:
    TextBlock* m_input;
    QLabel* m_problem;
};

class LineText final : public TextWidgetBase {
public:
    LineText(MrbFieldEdit* edit, QWidget* parent)
        : TextWidgetBase(edit, parent), m_input(new MarkedLineEdit(this))
    {
        m_input->setAccessibleName(tr("Value as text"));
        m_input->installEventFilter(this);
        layout()->addWidget(m_input);
        setFocusProxy(m_input);
        connect(m_input, &QLineEdit::textChanged, this, [this] { check(); });
        connect(m_input, &QLineEdit::editingFinished, this, [this] { commit(); });
        connect(m_input, &QLineEdit::returnPressed, this, [this] {
            if (!isTyping())
                Q_EMIT finished();
        });
    }

    void setReadOnly(bool on) override { m_input->setReadOnly(on); }

protected:
    QString input() const override { return m_input->text(); }
    void setInput(const QString& text) override
    {
        const QSignalBlocker blocker(m_input);
        if (m_input->text() != text)
            m_input->setText(text);
    }
    void showProblem(const QString& problem) override { m_input->setProblem(problem); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress
            && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && isTyping()) {
            revert();
            return true;
        }
        return MrbFieldWidget::eventFilter(watched, event);
    }

private:
    MarkedLineEdit* m_input;
};

} // namespace

MrbFieldWidget* makeTextWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    if (form == MrbFieldWidget::Form::Full)
        return new BlockText(edit, parent);
    bool fits = false;
    edit->read([&fits](const SoField& field) {
        fits = !MrbFieldPresentations::of(field)->shown(field).text.contains('\n');
    });
    return fits ? new LineText(edit, parent) : nullptr;
}
