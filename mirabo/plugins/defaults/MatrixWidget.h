#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

/// The editor of matrices: their sixteen numbers, or the same matrix as translation, rotation,
/// scale and shear where it can be written so. Null for the compact form.
MrbFieldWidget* makeMatrixWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
