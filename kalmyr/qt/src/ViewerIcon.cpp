#include "ViewerIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

constexpr qreal kSize = 24; // of the square in which the drawings are given

constexpr QRgb kBlue = 0xff3f86cf;
constexpr QRgb kGrey = 0xff6d7f95;
constexpr QRgb kAmber = 0xffd99a2b;
constexpr QRgb kGreen = 0xff3f9d58;
constexpr QRgb kRed = 0xffd9534a;
constexpr QRgb kNone = 0;

constexpr int faint = 40;
constexpr int solid = 255;

/// One outline: M move, L line, C curve, A arc of a circle (radius, clockwise, end), Z close.
struct Stroke {
    const char* path;
    QRgb line;
    qreal width;
    QRgb fill;
    int fillAlpha;
};

const std::vector<Stroke>& strokesOf(ViewerIcon which)
{
    static const std::array<std::vector<Stroke>, static_cast<std::size_t>(ViewerIcon::COUNT)>
        table = {{
            {{"M6 3 L18.5 13.5 L12.5 14.1 L9.3 20 Z", kBlue, 2, kBlue, 64},
             {"M13 14.5 L16 20", kBlue, 2, kNone, 0}},
            {{"M8 12.5 L8 5.8 A1.5 1 11 5.8 L11 11 L11 4.3 A1.5 1 14 4.3 L14 11 L14 5.5 A1.5 1 17 "
              "5.5 "
              "L17 12 "
              "L17 8.3 A1.5 1 20 8.3 L20 15 A6.5 1 13.5 21.5 L12.8 21.5 C10.8 21.5 8.9 20.5 7.6 "
              "18.9 "
              "L3.8 14.6 "
              "C2.6 13.1 4.8 11.2 6.2 12.5 L8 14.3",
              kBlue, 1.8, kBlue, 64}},
            {{"M5.5 10.5 L5.5 19 A1.5 0 7 20.5 L17 20.5 A1.5 0 18.5 19 L18.5 10.5", kGrey, 2, kGrey,
              faint},
             {"M2.5 12 L12 3.5 L21.5 12", kBlue, 2.2, kNone, 0},
             {"M10 14.5 L14 14.5 L14 20.5 L10 20.5 Z", kNone, 0, kBlue, solid}},
            {{"M5.5 10.5 L12 4.5 L18.5 10.5 L18.5 13 L12.5 19 L12.5 20.5 L7 20.5 L5.5 19 Z", kNone,
              0, kGrey, faint},
             {"M11 20.5 L7 20.5 A1.5 1 5.5 19 L5.5 10.5", kGrey, 2, kNone, 0},
             {"M2.5 12 L12 3.5 L21.5 12", kBlue, 2.2, kNone, 0},
             {"M17.5 14.5 L17.5 21.5 M14 18 L21 18", kGreen, 2.2, kNone, 0}},
            {{"M3 8 L3 3 L8 3 M16 3 L21 3 L21 8 M21 16 L21 21 L16 21 M8 21 L3 21 L3 16", kGrey, 2,
              kNone, 0},
             {"M8 8 L16 8 L16 16 L8 16 Z", kBlue, 2, kBlue, 76}},
            {{"M5.5 12 A6.5 1 18.5 12 A6.5 1 5.5 12 Z", kGrey, 2, kBlue, faint},
             {"M12 2 L12 7 M12 17 L12 22 M2 12 L7 12 M17 12 L22 12", kGrey, 2, kNone, 0},
             {"M9.8 12 A2.2 1 14.2 12 A2.2 1 9.8 12 Z", kNone, 0, kRed, solid}},
            {{"M3 8.5 L16 8.5 L16 21 L3 21 Z", kBlue, 2, kBlue, 51},
             {"M3 8.5 L12.5 3.5 L20.5 3.5 L16 8.5 M20.5 3.5 L20.5 10.5 L16 21", kBlue, 1.6, kNone,
              0}},
            {{"M3 9 L15 9 L15 21 L3 21 Z", kBlue, 2, kBlue, 51},
             {"M3 9 L9 3 L21 3 L15 9 M21 3 L21 15 L15 21", kBlue, 1.6, kNone, 0}},
            {{"M9.5 5 C5.5 5 3 8 3 12 C3 16 5.5 19 9.5 19 C11.3 19 12 16 12 12 C12 8 11.3 5 9.5 5 "
              "Z",
              kGrey, 2, kGrey, faint},
             {"M15.5 7.5 L21 6 M16 12 L21.5 12 M15.5 16.5 L21 18", kAmber, 2.2, kNone, 0}},
            {{"M3 8 L3 3 L8 3 M16 3 L21 3 L21 8 M21 16 L21 21 L16 21 M8 21 L3 21 L3 16", kGrey, 2,
              kNone, 0},
             {"M7.5 12 A4.5 1 16.5 12 A4.5 1 7.5 12 Z", kAmber, 2, kAmber, 102}},
            {{"M4 8 L12 4 L20 8 L20 16.5 L12 21 L4 16.5 Z", kGrey, 1.8, kGrey, faint},
             {"M4 8 L12 12.2 L20 8 M12 12.2 L12 21", kGrey, 1.6, kNone, 0},
             {"M4 8 L12 12.2 L12 21 L4 16.5 Z", kNone, 0, kBlue, 153}},
            {{"M3 12 A9 1 21 12 A9 1 3 12 Z", kBlue, 1.8, kNone, 0},
             {"M12 3 A9 0 12 21 Z", kNone, 0, kBlue, 128},
             {"M12 3 L12 21 M12.5 8 L20 8 M12.5 16 L20 16 M16.5 4.5 L16.5 19.5", kBlue, 1.4, kNone,
              0}},
        }};
    return table[static_cast<std::size_t>(which)];
}

/// A circle's arc of at most half a turn to `end`, as arcTo() wants it.
void addArc(QPainterPath& path, qreal radius, bool clockwise, const QPointF& end)
{
    const QPointF start = path.currentPosition();
    const QPointF half = (end - start) / 2;
    const qreal reach = std::hypot(half.x(), half.y());
    const qreal height = std::sqrt(std::max(radius * radius - reach * reach, 0.0));
    const QPointF square(-half.y() / reach, half.x() / reach);
    const QPointF center = start + half + square * (clockwise ? height : -height);
    const auto angle = [&](const QPointF& p) {
        return std::atan2(center.y() - p.y(), p.x() - center.x()) * 180 / M_PI;
    };
    const qreal from = angle(start);
    qreal sweep = angle(end) - from;
    if (clockwise && sweep >= 0)
        sweep -= 360;
    if (!clockwise && sweep <= 0)
        sweep += 360;
    path.arcTo(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius, from, sweep);
}

QPainterPath toPath(const char* text)
{
    QPainterPath path;
    char* at = const_cast<char*>(text);
    const auto number = [&at] {
        double value = 0;
        int digits = 0;
        while (*at == ' ')
            ++at;
        for (bool point = false; (*at >= '0' && *at <= '9') || *at == '.'; ++at) {
            if (*at == '.') {
                point = true;
                continue;
            }
            value = value * 10 + (*at - '0');
            if (point)
                ++digits;
        }
        return value / std::pow(10.0, digits);
    };
    const auto point = [&number] {
        const qreal x = number();
        return QPointF(x, number());
    };
    while (*at) {
        const char command = *at++;
        if (command == 'M')
            path.moveTo(point());
        if (command == 'L')
            path.lineTo(point());
        if (command == 'Z')
            path.closeSubpath();
        if (command == 'C') {
            const QPointF first = point();
            const QPointF second = point();
            path.cubicTo(first, second, point());
        }
        if (command == 'A') {
            const qreal radius = number();
            const bool clockwise = number() != 0;
            addArc(path, radius, clockwise, point());
        }
    }
    return path;
}

class Engine final : public QIconEngine {
public:
    explicit Engine(ViewerIcon which) : m_which(which) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / kSize, rect.height() / kSize);
        if (mode == QIcon::Disabled)
            painter->setOpacity(0.4);
        for (const Stroke& stroke : strokesOf(m_which)) {
            QColor fill = QColor::fromRgba(stroke.fill);
            fill.setAlpha(stroke.fillAlpha);
            painter->setBrush(stroke.fill == kNone ? QBrush(Qt::NoBrush) : QBrush(fill));
            painter->setPen(stroke.line == kNone
                                ? QPen(Qt::NoPen)
                                : QPen(QColor::fromRgba(stroke.line), stroke.width, Qt::SolidLine,
                                       Qt::RoundCap, Qt::RoundJoin));
            painter->drawPath(toPath(stroke.path));
        }
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return picture;
    }

    QIconEngine* clone() const override { return new Engine(m_which); }

private:
    ViewerIcon m_which;
};

} // namespace

QIcon viewerIcon(ViewerIcon which)
{
    return QIcon(new Engine(which));
}
