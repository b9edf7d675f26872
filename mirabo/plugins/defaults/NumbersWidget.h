#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

/// The editor of plain numbers, times, vectors, planes and boxes: a line of boxes, two for a box's
/// corners. A change of one number changes it in all fields and leaves their others alone. The
/// components of a vector can be linked: they are then scaled together.
///
/// Null for a type whose values are no numbers.
MrbFieldWidget* makeNumbersWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
