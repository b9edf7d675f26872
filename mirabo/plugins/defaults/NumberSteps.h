#pragma once

#include "FieldNumbers.h"

#include <Qt>

/// Steps of a number by keys, wheel and drags.

/// The number that its text says: the doubles next to floats have long tails.
double asShown(FieldNumbers::Kind kind, double number);
/// A step that changes the second digit of a number, a power of ten; at least 1 for whole numbers.
double stepOf(FieldNumbers::Kind kind, double number);
/// The number so many steps from a finite one, rounded far below the step and held within the
/// limits of the kind.
double afterSteps(FieldNumbers::Kind kind, double number, double step, double count);
/// How much further a step goes: ten times with Shift, a tenth with Ctrl.
double stepFactor(Qt::KeyboardModifiers modifiers);
