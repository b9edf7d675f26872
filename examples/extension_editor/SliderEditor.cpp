#include "SliderEditor.h"

#include "SliderWidget.h"

MrbExtensionInfo SliderEditor::getInfo() const
{
    return {"Slider", "Edits numbers with a slider", "The Mirabo examples", "1.0"};
}

QStringList SliderEditor::getFieldTypes() const
{
    return {"SFFloat"};
}

MrbFieldWidget* SliderEditor::createWidget(MrbFieldEdit* edit, MrbFieldWidget::Form,
                                           QWidget* parent)
{
    return new SliderWidget(edit, parent); // the same in the dock and in a row
}
