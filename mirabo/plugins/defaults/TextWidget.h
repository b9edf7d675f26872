#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// Any value as the text that scene files have for it, checked as it is typed, and applied by
/// Ctrl+Return (in one line by Return) or when the keyboard focus goes.
MrbFieldWidget* makeTextWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
