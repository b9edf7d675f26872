#pragma once

#include "FieldNumbers.h"

#include <QString>

/// Reads a number of a kind as it is typed into a cell: a number or an expression. `present` is the
/// number in the cell. False, with `problem` told, for a text that is none, and for a number that
/// the kind cannot hold.
bool readNumber(FieldNumbers::Kind kind, const QString& text, double present, double& number,
                QString& problem);
