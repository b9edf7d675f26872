#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// A box to check.
MrbFieldWidget* makeBoolWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
