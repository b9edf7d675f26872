#include "mirabo/preferences/TextStyle.h"

#include <QFontMetrics>
#include <QPalette>

#include <algorithm>

namespace mirabo {

namespace {

constexpr int kDarkLightness = 128;     ///< of 255
constexpr int kReadableLightness = 190; ///< of text on a dark background
constexpr int kMinimumContrast = 90;
constexpr int kRowMargin = 1; ///< pixels above and below a text

} // namespace

QColor readableOn(const QColor& background, const QColor& color)
{
    const int contrast = qAbs(qGray(background.rgb()) - qGray(color.rgb()));
    if (background.lightness() >= kDarkLightness || contrast >= kMinimumContrast)
        return color;
    if (color.hslSaturation() == 0)
        return QColor(220, 220, 220);
    return QColor::fromHsl(color.hslHue(), color.hslSaturation(), kReadableLightness);
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
