#pragma once

#include <QString>

namespace mirabo {

/// Order of two cells of a column: numbers by their values, one after the other for texts of
/// several numbers, and before everything else; other texts alphabetically.
bool valueLess(const QString& a, const QString& b);

} // namespace mirabo
