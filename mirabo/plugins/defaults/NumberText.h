#pragma once

#include "FieldNumbers.h"

#include <QString>

/// The numbers of a kind as people read them. The host's locale has no part in it.

/// The shortest text that reads back as the same number of that kind; hexadecimal where asked for
/// and the kind is unsigned.
QString numberText(FieldNumbers::Kind kind, double number, bool asHex = false);

bool isWhole(FieldNumbers::Kind kind);
bool isUnsigned(FieldNumbers::Kind kind);
/// The least and the greatest finite number of a kind.
double lowest(FieldNumbers::Kind kind);
double highest(FieldNumbers::Kind kind);

/// Rounds to a number of the kind. False, with `problem` told, for one that it cannot hold: a
/// fraction or not-a-number in a whole kind, a number beyond the limits.
bool fitNumber(FieldNumbers::Kind kind, double& number, QString* problem = nullptr);

/// Such as "32-bit whole number, -2147483648 to 2147483647".
QString kindText(FieldNumbers::Kind kind);
