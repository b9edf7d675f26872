#include "mirabo/preferences/TextStyle.h"

#include <QFontMetrics>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace mirabo {

namespace {

constexpr int kDarkLightness = 128;       ///< of 255
constexpr double kReadableContrast = 4.5; ///< of texts; WCAG 2.1, 1.4.3
constexpr int kLightnessStep = 5;
constexpr int kRowMargin = 1; ///< pixels above and below a text

/// Relative luminance as WCAG 2.1 defines it, from 0 to 1.
double luminanceOf(const QColor& color)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
           + 0.0722 * linear(color.blueF());
}

} // namespace

double contrastOf(const QColor& a, const QColor& b)
{
    const double first = luminanceOf(a) + 0.05, second = luminanceOf(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

QColor readableOn(const QColor& background, const QColor& color)
{
    QColor shown = color;
    while (background.lightness() < kDarkLightness && shown.lightness() < 255
           && contrastOf(background, shown) < kReadableContrast) {
        const int lightness = std::min(255, shown.lightness() + kLightnessStep);
        shown = QColor::fromHsl(color.hslHue(), color.hslSaturation(), lightness, color.alpha());
    }
    return shown;
}

QColor shownColor(const QColor& color, const QPalette& palette)
{
    if (color == Qt::black)
        return palette.color(QPalette::Active, QPalette::Text);
    return readableOn(palette.color(QPalette::Active, QPalette::Base), color);
}

int rowHeightFor(const StyleTable& styles, int least)
{
    int height = least;
    for (const auto& [element, style] : styles.entries())
        if (style.show)
            height = std::max(height, QFontMetrics(style.font).height() + 2 * kRowMargin);
    return height;
}

} // namespace mirabo
