#include "StringWidget.h"

#include "FieldText.h"
#include "MarkedLineEdit.h"
#include "TextBlock.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QEvent>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace {

QString textOf(const SoField& field)
{
    return field.isOfType(SoSFName::getClassTypeId())
               ? toText(static_cast<const SoSFName&>(field).getValue())
               : toText(static_cast<const SoSFString&>(field).getValue());
}

void setText(SoField& field, const QString& text)
{
    if (field.isOfType(SoSFName::getClassTypeId()))
        static_cast<SoSFName&>(field).setValue(SbName(text.toUtf8().constData()));
    else
        static_cast<SoSFString&>(field).setValue(fromText(text));
}

/// A burst of typing is one gesture, until Return or the focus goes; Escape takes it back.
class StringWidgetBase : public MrbFieldWidget {
public:
    StringWidgetBase(MrbFieldEdit* edit, QWidget* input, QWidget* parent)
        : MrbFieldWidget(edit, parent)
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(input);
        input->setAccessibleName(tr("Value"));
        input->installEventFilter(this);
        setFocusProxy(input);
    }

    /// Returns whether the typed text differs from the field, which others may have changed since.
    bool isTyping() const override
    {
        bool isOther = false;
        if (edit()->isInGesture())
            edit()->read([&](const SoField& field) { isOther = textOf(field) != input(); });
        return isOther;
    }
    void showValue() override
    {
        edit()->read([this](const SoField& field) { setInput(textOf(field)); });
    }

protected:
    virtual QString input() const = 0;
    virtual void setInput(const QString& text) = 0;
    virtual bool takesReturn() const = 0;

    void apply()
    {
        if (!edit()->isInGesture())
            edit()->beginGesture();
        const QString text = input();
        edit()->change([&text](SoField& value) {
            setText(value, text);
            return true;
        });
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::FocusOut && edit()->isInGesture()) {
            edit()->endGesture();
            typingEnded();
        }
        if (event->type() != QEvent::KeyPress)
            return MrbFieldWidget::eventFilter(watched, event);
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape && edit()->isInGesture()) {
            edit()->cancelGesture();
            showValue();
            return true;
        }
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (isReturn && (!takesReturn() || key->modifiers() & Qt::ControlModifier)) {
            edit()->endGesture();
            Q_EMIT finished();
            return true;
        }
        return false;
    }
};

class BlockString final : public StringWidgetBase {
public:
    BlockString(MrbFieldEdit* edit, TextBlock* input, QWidget* parent)
        : StringWidgetBase(edit, input, parent), m_input(input)
    {
        m_input->setPlaceholderText(tr("The empty string"));
        connect(m_input, &QPlainTextEdit::textChanged, this, [this] { apply(); });
    }
    void setReadOnly(bool on) override { m_input->setReadOnly(on); }

protected:
    QString input() const override { return m_input->exactText(); }
    void setInput(const QString& text) override { m_input->showText(text); }
    bool takesReturn() const override { return true; }

private:
    TextBlock* m_input;
};

class LineString final : public StringWidgetBase {
public:
    LineString(MrbFieldEdit* edit, Form form, MarkedLineEdit* input, QWidget* parent)
        : StringWidgetBase(edit, input, parent), m_input(input)
    {
        if (form == Form::Full)
            static_cast<QVBoxLayout*>(layout())->addStretch();
        m_input->setPlaceholderText(tr("Empty"));
        connect(m_input, &QLineEdit::textEdited, this, [this] { apply(); });
    }
    void setReadOnly(bool on) override { m_input->setReadOnly(on); }

protected:
    QString input() const override { return m_input->text(); }
    void setInput(const QString& text) override
    {
        if (m_input->text() == text)
            return;
        const int at = m_input->cursorPosition();
        m_input->setText(text);
        m_input->setCursorPosition(at);
    }
    bool takesReturn() const override { return false; }

private:
    MarkedLineEdit* m_input;
};

} // namespace

MrbFieldWidget* makeStringWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    const bool isName = edit->getFieldType() == SoSFName::getClassTypeId();
    if (isName)
        return new LineString(edit, form, new MarkedLineEdit, parent);
    if (form == MrbFieldWidget::Form::Full)
        return new BlockString(edit, new TextBlock, parent);
    bool isLine = true;
    edit->read([&isLine](const SoField& field) { isLine = !textOf(field).contains('\n'); });
    return isLine ? new LineString(edit, form, new MarkedLineEdit, parent) : nullptr;
}
