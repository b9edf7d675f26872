#include "ColorParts.h"

#include <algorithm>
#include <cmath>

namespace colors {

namespace {

constexpr double kByte = 255;

double clamped(double number)
{
    return number > 0 ? std::min(number, 1.0) : 0; // not-a-number is 0, too
}

int toByte(double number)
{
    return static_cast<int>(std::lround(clamped(number) * kByte));
}

} // namespace

void toHsv(const double* rgb, double* hsv)
{
    const double most = std::max({rgb[0], rgb[1], rgb[2]});
    const double range = most - std::min({rgb[0], rgb[1], rgb[2]});
    hsv[0] = hsv[1] = 0;
    hsv[2] = most;
    if (!(range > 0) || !std::isfinite(range))
        return;
    hsv[1] = most != 0 ? range / most : 0;
    constexpr double kSector = 60;
    if (most == rgb[0])
        hsv[0] = kSector * (rgb[1] - rgb[2]) / range;
    else if (most == rgb[1])
        hsv[0] = kSector * (2 + (rgb[2] - rgb[0]) / range);
    else
        hsv[0] = kSector * (4 + (rgb[0] - rgb[1]) / range);
    if (hsv[0] < 0)
        hsv[0] += 6 * kSector;
}

void fromHsv(const double* hsv, double* rgb)
{
    // How far each component falls below the value, by the distance of the hue from its own.
    for (int i = 0; i < 3; ++i) {
        constexpr int kSectors[] = {5, 3, 1};
        const double sector = std::fmod(std::fmod(kSectors[i] + hsv[0] / 60, 6) + 6, 6);
        const double part = std::clamp(std::min(sector, 4 - sector), 0.0, 1.0);
        rgb[i] = hsv[2] - hsv[2] * hsv[1] * part;
    }
}

QColor toColor(const double* numbers, int count)
{
    return QColor::fromRgbF(clamped(numbers[0]), clamped(numbers[1]), clamped(numbers[2]),
                            count > 3 ? clamped(numbers[3]) : 1);
}

QString hexText(const double* numbers, int count)
{
    QString text = "#";
    for (int i = 0; i < count; ++i)
        text += QString("%1").arg(toByte(numbers[i]), 2, 16, QChar('0'));
    return text;
}

bool readHex(const QString& text, double* numbers, int count)
{
    QString digits = text.trimmed();
    if (!digits.startsWith('#') && QColor::isValidColor(digits)) {
        const QColor color(digits);
        const double rgb[] = {color.redF(), color.greenF(), color.blueF()};
        std::copy_n(rgb, 3, numbers);
        return true;
    }
    if (digits.startsWith('#'))
        digits.remove(0, 1);
    const bool isShort = digits.size() == 3 || (digits.size() == 4 && count > 3);
    const bool isLong = digits.size() == 6 || (digits.size() == 8 && count > 3);
    const bool isHex = std::all_of(digits.begin(), digits.end(), [](QChar c) {
        return QString("0123456789abcdef").contains(c.toLower());
    });
    if ((!isShort && !isLong) || !isHex)
        return false;
    const int width = isShort ? 1 : 2;
    for (int i = 0; i * width < digits.size(); ++i) {
        const int byte = digits.mid(i * width, width).toInt(nullptr, 16);
        constexpr int kRepeat = 17; // #rgb is #rrggbb
        numbers[i] = (isShort ? byte * kRepeat : byte) / kByte;
    }
    return true;
}

bool isBeyondLimits(const double* numbers, int count)
{
    return std::any_of(numbers, numbers + count,
                       [](double number) { return !(number >= 0 && number <= 1); });
}

} // namespace colors
