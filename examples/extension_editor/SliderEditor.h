#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// Edits single numbers with a slider, in the place of the tool's own editor.
class SliderEditor final : public MrbFieldEditor {
    Q_OBJECT

public:
    MrbExtensionInfo getInfo() const override;
    QStringList getFieldTypes() const override;
    MrbFieldWidget* createWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                 QWidget* parent) override;
};
