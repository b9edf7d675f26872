#pragma once

#include <QColor>
#include <QString>

/// Colours as red, green, blue and, where there is one, alpha; of any size.
namespace colors {

/// Hue 0 to 360, saturation and value; values beyond 0 to 1 are kept. Grey has hue and saturation
/// 0.
void toHsv(const double* rgb, double* hsv);
void fromHsv(const double* hsv, double* rgb);

/// The nearest one that can be seen.
QColor toColor(const double* numbers, int count);
/// `#rrggbb`, or `#rrggbbaa` for four numbers.
QString hexText(const double* numbers, int count);
/// Reads `#rgb` and `#rrggbb` (`#rgba`, `#rrggbbaa` for four numbers, else alpha stays) with or
/// without the `#`, and the names of colours. False, with nothing changed, for another text.
bool readHex(const QString& text, double* numbers, int count);
bool isBeyondLimits(const double* numbers, int count);

} // namespace colors
