#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// A string, of any number of lines, or a name, applied as it is typed.
MrbFieldWidget* makeStringWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
