#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

/// The editor of rotations: as axis and angle, Euler angles or a quaternion, angles in degrees or
/// radians, and a ball to turn by mouse and keys. Compact: axis and angle.
///
/// The numbers stay as they were typed (an axis of any length, an angle beyond a turn) while they
/// stand for the rotation that the field holds.
MrbFieldWidget* makeRotationWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
