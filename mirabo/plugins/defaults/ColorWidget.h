#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

/// The editor of colours, with alpha or without: a swatch that opens the desktop's colour dialog,
/// hexadecimal text, an eyedropper, and sliders and boxes for red, green, blue, alpha, hue,
/// saturation and value. Values beyond 0 to 1 are kept, and marked. Compact: swatch and text.
MrbFieldWidget* makeColorWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
