#include "NumberText.h"

#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

using Kind = FieldNumbers::Kind;

struct KindRow {
    double lowest, highest;
    const char* name;
    int hexDigits; // 0: signed, or not whole
    bool isWhole;
};

template <class T>
constexpr KindRow row(const char* name)
{
    constexpr bool isWhole = std::numeric_limits<T>::is_integer;
    return {static_cast<double>(std::numeric_limits<T>::lowest()),
            static_cast<double>(std::numeric_limits<T>::max()), name,
            isWhole && !std::numeric_limits<T>::is_signed ? static_cast<int>(2 * sizeof(T)) : 0,
            isWhole};
}

// In the order of the kinds.
constexpr KindRow kKinds[] = {row<float>("32-bit number"),
                              row<double>("64-bit number"),
                              row<std::int32_t>("32-bit whole number"),
                              row<std::uint32_t>("32-bit whole number without a sign"),
                              row<std::int16_t>("16-bit whole number"),
                              row<std::uint16_t>("16-bit whole number without a sign")};

const KindRow& rowOf(Kind kind)
{
    return kKinds[static_cast<int>(kind)];
}

} // namespace

QString numberText(Kind kind, double number, bool asHex)
{
    std::string text;
    const KindRow& row = rowOf(kind);
    if (asHex && row.hexDigits > 0)
        SbNumber::appendHex(text, static_cast<std::uint64_t>(number), row.hexDigits);
    else if (row.isWhole)
        SbNumber::appendInt(text, static_cast<std::int64_t>(number));
    else if (kind == Kind::Float)
        SbNumber::appendFloat(text, static_cast<float>(number));
    else
        SbNumber::appendDouble(text, number);
    return QString::fromLatin1(text.data(), static_cast<int>(text.size()));
}

bool isWhole(Kind kind)
{
    return rowOf(kind).isWhole;
}

bool isUnsigned(Kind kind)
{
    return rowOf(kind).hexDigits > 0;
}

double lowest(Kind kind)
{
    return rowOf(kind).lowest;
}

double highest(Kind kind)
{
    return rowOf(kind).highest;
}

bool fitNumber(Kind kind, double& number, QString* problem)
{
    const KindRow& row = rowOf(kind);
    const auto refuse = [problem](const QString& why) {
        if (problem)
            *problem = why;
        return false;
    };
    if (row.isWhole && std::isnan(number))
        return refuse("not-a-number is no whole number");
    if (row.isWhole && std::isfinite(number) && number != std::trunc(number))
        return refuse(numberText(Kind::Double, number) + " is no whole number");
    if (!row.isWhole && !std::isfinite(number))
        return true;
    // Half a step beyond the greatest float: what is nearer to it is it, as its own text is.
    constexpr double kFloatEnd = 0x1.ffffffp127;
    const double rounded =
        kind == Kind::Float && std::fabs(number) < kFloatEnd
            ? static_cast<double>(static_cast<float>(std::clamp(number, row.lowest, row.highest)))
            : number;
    if (rounded < row.lowest || rounded > row.highest)
        return refuse(numberText(Kind::Double, number) + " is beyond the limits, "
                      + numberText(kind, row.lowest) + " to " + numberText(kind, row.highest));
    number = row.isWhole ? rounded + 0.0 : rounded; // whole numbers have no negative zero
    return true;
}

QString kindText(Kind kind)
{
    const KindRow& row = rowOf(kind);
    return QString("%1, %2 to %3")
        .arg(row.name, numberText(kind, row.lowest), numberText(kind, row.highest));
}
