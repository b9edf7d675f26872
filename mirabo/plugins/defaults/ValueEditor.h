#pragma once

#include "EditorTable.h"

/// The editor of one field type, as an extension of its own.
class ValueEditor final : public MrbFieldEditor {
    Q_OBJECT

public:
    explicit ValueEditor(const EditorEntry& entry);

    MrbExtensionInfo getInfo() const override;
    QStringList getFieldTypes() const override;
    MrbFieldWidget* createWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                 QWidget* parent) override;

private:
    EditorEntry m_entry;
};
