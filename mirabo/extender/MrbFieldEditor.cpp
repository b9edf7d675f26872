#include "mirabo/extender/MrbFieldEditor.h"

#include <kalmyr/core/SoType.h>

#include <algorithm>

MrbFieldWidget::MrbFieldWidget(MrbFieldEdit* edit, QWidget* parent) : QWidget(parent), m_edit(edit)
{
    connect(edit, &MrbFieldEdit::changed, this, &MrbFieldWidget::takeChange);
}

MrbFieldWidget::~MrbFieldWidget() = default;

void MrbFieldWidget::setReadOnly(bool on)
{
    setEnabled(!on);
}

void MrbFieldWidget::takeChange()
{
    const bool isReadOnly = !m_edit->isEditable();
    if (isReadOnly != m_isReadOnly) {
        m_isReadOnly = isReadOnly;
        setReadOnly(isReadOnly);
    }
    if (isTyping()) {
        setOutdated(true);
        return;
    }
    setOutdated(false);
    showValue();
}

void MrbFieldWidget::typingEnded()
{
    takeChange();
}

void MrbFieldWidget::setOutdated(bool on)
{
    if (m_isOutdated == on)
        return;
    m_isOutdated = on;
    Q_EMIT outdatedChanged(on);
}

MrbFieldEditor::MrbFieldEditor() = default;

MrbFieldEditor::~MrbFieldEditor()
{
    MrbFieldEditors::getInstance()->remove(this);
}

bool MrbFieldEditor::activate()
{
    m_types = getFieldTypes(); // which the types are found by later, outside of its guard
    MrbFieldEditors::getInstance()->add(this);
    return true;
}

void MrbFieldEditor::deactivate()
{
    MrbFieldEditors::getInstance()->remove(this);
    // Not at once: the host may end the extension from within a change that a widget makes.
    for (const QPointer<MrbFieldWidget>& widget : m_widgets) {
        if (!widget)
            continue;
        widget->edit()->disconnect(widget);
        widget->hide();
        widget->deleteLater();
    }
    m_widgets.clear();
}

MrbFieldEditors::MrbFieldEditors() = default;

MrbFieldEditors::~MrbFieldEditors() = default;

MrbFieldEditors* MrbFieldEditors::getInstance()
{
    static MrbFieldEditors editors;
    return &editors;
}

void MrbFieldEditors::add(MrbFieldEditor* editor)
{
    m_editors.push_back(editor);
    Q_EMIT editorsChanged();
}

void MrbFieldEditors::remove(MrbFieldEditor* editor)
{
    if (std::erase(m_editors, editor) > 0)
        Q_EMIT editorsChanged();
}

MrbFieldEditor* MrbFieldEditors::find(SoType fieldType) const
{
    for (SoType type = fieldType; !type.isBad(); type = type.getParent()) {
        const QString name = QString::fromUtf8(type.getName().getString());
        const auto editor = std::find_if(
            m_editors.rbegin(), m_editors.rend(),
            [&name](const MrbFieldEditor* candidate) { return candidate->m_types.contains(name); });
        if (editor != m_editors.rend())
            return *editor;
    }
    return nullptr;
}

MrbFieldWidget* MrbFieldEditors::create(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                        QWidget* parent) const
{
    MrbFieldEditor* editor = find(edit->getFieldType());
    MrbFieldWidget* widget = nullptr;
    if (!editor)
        return nullptr;
    editor->runGuarded("createWidget()", [&] {
        widget = editor->createWidget(edit, form, parent);
        if (widget)
            widget->takeChange();
    });
    if (!widget)
        return nullptr;
    std::erase_if(editor->m_widgets, [](const auto& other) { return !other; });
    editor->m_widgets.emplace_back(widget);
    return widget;
}
