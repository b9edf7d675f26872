#include "ValueEditor.h"

ValueEditor::ValueEditor(const EditorEntry& entry) : m_entry(entry) {}

MrbExtensionInfo ValueEditor::getInfo() const
{
    const QString name = m_entry.name;
    const bool isGeneral = name == "SField" || name == "MField";
    return {name,
            isGeneral ? QString("Edits %1 fields without an editor of their own")
                            .arg(name == "SField" ? "single-value" : "multiple-value")
                      : QString("Edits %1 fields").arg(name),
            "Mirabo", "1.0"};
}

QStringList ValueEditor::getFieldTypes() const
{
    return {m_entry.name};
}

MrbFieldWidget* ValueEditor::createWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                          QWidget* parent)
{
    return m_entry.factory(edit, form, parent);
}
