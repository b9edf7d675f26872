#include "NumberSteps.h"

#include "NumberText.h"

#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Rounds away what the sum of decimal fractions leaves in binary; far below the step.
double roundBelow(FieldNumbers::Kind kind, double number, double step)
{
    if (isWhole(kind))
        return std::round(number);
    const double digits = kind == FieldNumbers::Kind::Float ? 1e6 : 1e12;
    // Powers of ten are exact above one only.
    const double unit = step / digits;
    const double rounded = unit < 1
                               ? std::round(number * std::round(1 / unit)) / std::round(1 / unit)
                               : std::round(number / unit) * unit;
    return std::isfinite(rounded) ? rounded : number;
}

} // namespace

double asShown(FieldNumbers::Kind kind, double number)
{
    double shown = number;
    SbNumber::toDouble(numberText(kind, number).toStdString(), shown);
    return shown;
}

double stepOf(FieldNumbers::Kind kind, double number)
{
    constexpr double kOfZero = 0.1;
    const double magnitude = std::fabs(number);
    double step = kOfZero;
    if (magnitude > 0 && std::isfinite(magnitude))
        step = std::pow(10, std::floor(std::log10(magnitude)) - 1);
    return std::max(step, isWhole(kind) ? 1. : std::numeric_limits<double>::min());
}

double afterSteps(FieldNumbers::Kind kind, double number, double step, double count)
{
    double there = roundBelow(kind, number + count * step, step);
    there = std::clamp(there, lowest(kind), highest(kind));
    fitNumber(kind, there);
    return there;
}

double stepFactor(Qt::KeyboardModifiers modifiers)
{
    constexpr double kFaster = 10;
    return modifiers & Qt::ShiftModifier ? kFaster : modifiers & Qt::ControlModifier ? 0.1 : 1;
}
