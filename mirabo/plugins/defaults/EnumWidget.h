#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// A choice among the named values; a value without a name is shown, and can be kept.
MrbFieldWidget* makeEnumWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
