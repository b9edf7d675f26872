#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

/// A box for each named bit or group of bits, and the whole mask as text.
MrbFieldWidget* makeBitMaskWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
