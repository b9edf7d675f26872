#include "ImageView.h"

#include <kalmyr/base/SbImage.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

ImageView::ImageView(Source source, QWidget* parent)
    : QAbstractScrollArea(parent), m_source(std::move(source))
{
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName("Image");
    viewport()->setMouseTracking(true);
}

void ImageView::imageChanged(QSize size)
{
    m_isStale = true;
    if (size != m_size) {
        m_size = size;
        updateScrollBars();
        Q_EMIT zoomChanged();
    }
    viewport()->update();
}

void ImageView::setChannels(ImageChannels channels)
{
    m_channels = channels;
    m_isStale = true;
    viewport()->update();
}

void ImageView::setSlice(int slice)
{
    m_slice = slice;
    m_isStale = true;
    viewport()->update();
}

void ImageView::setHint(const QString& hint)
{
    m_hint = hint;
    viewport()->update();
}

double ImageView::zoom() const
{
    return scale() * devicePixelRatioF();
}

double ImageView::scale() const
{
    if (!m_isFitted)
        return m_zoom / devicePixelRatioF();
    if (m_size.isEmpty())
        return 1;
    const double fitted = std::min(static_cast<double>(viewport()->width()) / m_size.width(),
                                   static_cast<double>(viewport()->height()) / m_size.height());
    return std::clamp(fitted, kLeastZoom / 16, kMostZoom);
}

QPointF ImageView::origin() const
{
    const QSizeF shown = QSizeF(m_size) * scale();
    const auto place = [](double shownLength, int room, const QScrollBar* bar) {
        return shownLength <= room ? (room - shownLength) / 2 : -static_cast<double>(bar->value());
    };
    return {std::round(place(shown.width(), viewport()->width(), horizontalScrollBar())),
            std::round(place(shown.height(), viewport()->height(), verticalScrollBar()))};
}

void ImageView::fit()
{
    m_isFitted = true;
    updateScrollBars();
    Q_EMIT zoomChanged();
}

void ImageView::setZoom(double zoom)
{
    setZoom(zoom, QPointF(viewport()->rect().center()));
}

void ImageView::setZoom(double zoom, QPointF anchor)
{
    const QPointF pixel = (anchor - origin()) / scale();
    m_isFitted = false;
    m_zoom = std::clamp(zoom, kLeastZoom, kMostZoom);
    updateScrollBars();
    const QPointF place = pixel * scale() - anchor;
    horizontalScrollBar()->setValue(static_cast<int>(std::lround(place.x())));
    verticalScrollBar()->setValue(static_cast<int>(std::lround(place.y())));
    Q_EMIT zoomChanged();
}

void ImageView::zoomBy(int steps, QPointF anchor)
{
    setZoom(zoom() * std::pow(std::sqrt(2.0), steps), anchor);
}

void ImageView::updateScrollBars()
{
    const auto update = [](QScrollBar& bar, double length, int room) {
        bar.setPageStep(room);
        bar.setSingleStep(std::max(room / 20, 1));
        bar.setRange(0, std::max(static_cast<int>(std::ceil(length)) - room, 0));
    };
    const Qt::ScrollBarPolicy policy = m_isFitted ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded;
    setHorizontalScrollBarPolicy(policy);
    setVerticalScrollBarPolicy(policy);
    const QSizeF shown = m_isFitted ? QSizeF() : QSizeF(m_size) * scale();
    update(*horizontalScrollBar(), shown.width(), viewport()->width());
    update(*verticalScrollBar(), shown.height(), viewport()->height());
    viewport()->update();
}

QPoint ImageView::pixelAt(QPointF place) const
{
    const QPointF at = (place - origin()) / scale();
    const QPoint pixel(static_cast<int>(std::floor(at.x())), static_cast<int>(std::floor(at.y())));
    return QRect(QPoint(), m_size).contains(pixel) ? pixel : QPoint(-1, -1);
}

void ImageView::convert()
{
    const QPointF at = -origin() / scale();
    const QSizeF seen = QSizeF(viewport()->size()) / scale();
    const double perScreenPixel = 1 / zoom();
    const int factor = std::max(1, static_cast<int>(perScreenPixel));
    // Averaged blocks begin at multiples of their size, wherever the view is.
    const auto down = [factor](double x) {
        return static_cast<int>(std::floor(x / factor)) * factor;
    };
    const auto up = [factor](double x) { return static_cast<int>(std::ceil(x / factor)) * factor; };
    QRect part(QPoint(down(at.x()), down(at.y())),
               QPoint(up(at.x() + seen.width()), up(at.y() + seen.height())));
    part &= QRect(QPoint(), m_size);
    if (!m_isStale && factor == m_factor && part == m_part)
        return;
    m_part = part;
    m_factor = factor;
    m_isStale = false;
    const SbImage image = m_source();
    m_picture = image_pixels::toQImage(image, m_slice, m_channels, part, factor);
    m_convertedPixels += static_cast<long long>(part.width()) * part.height();
}

void ImageView::paintGround(QPainter& painter, const QRectF& place) const
{
    // Grey on any desktop: pictures are made for it.
    constexpr int kLight = 204;
    constexpr int kDark = 153;
    const int side = std::max(fontMetrics().height() / 2, 4);
    QPixmap tile(2 * side, 2 * side);
    tile.fill(QColor(kLight, kLight, kLight));
    QPainter tiles(&tile);
    tiles.fillRect(0, 0, side, side, QColor(kDark, kDark, kDark));
    tiles.fillRect(side, side, side, side, QColor(kDark, kDark, kDark));
    tiles.end();
    painter.drawTiledPixmap(place, tile);
}

void ImageView::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    if (m_size.isEmpty()) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_hint);
        return;
    }
    convert();
    if (m_picture.isNull())
        return;
    const QRectF place(origin() + QPointF(m_part.topLeft()) * scale(),
                       QSizeF(m_part.size()) * scale());
    painter.setClipRect(viewport()->rect());
    if (m_picture.hasAlphaChannel())
        paintGround(painter, place & QRectF(viewport()->rect()));
    painter.setRenderHint(QPainter::SmoothPixmapTransform, zoom() < 1);
    // The last block of an averaged row may be cut short.
    const QSizeF pixels(static_cast<double>(m_part.width()) / m_factor,
                        static_cast<double>(m_part.height()) / m_factor);
    painter.drawImage(place, m_picture, QRectF(QPointF(), pixels));
    // Where the image ends, whatever colours it and the desktop have.
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(QRectF(origin(), QSizeF(m_size) * scale()).adjusted(-1, -1, 0, 0));
}

void ImageView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
    if (m_isFitted)
        Q_EMIT zoomChanged();
}

void ImageView::scrollContentsBy(int, int)
{
    viewport()->update();
}

void ImageView::wheelEvent(QWheelEvent* event)
{
    const int turn = event->angleDelta().y();
    if (turn != 0)
        zoomBy(turn > 0 ? 1 : -1, event->position());
    event->accept();
}

void ImageView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = event->pos();
}

void ImageView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton) {
        const QPoint by = event->pos() - m_pressed;
        m_pressed = event->pos();
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - by.x());
        verticalScrollBar()->setValue(verticalScrollBar()->value() - by.y());
    }
    const QPoint pixel = pixelAt(event->localPos());
    if (pixel == m_pixel)
        return;
    m_pixel = pixel;
    Q_EMIT pixelChanged(pixel);
}

bool ImageView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Leave && m_pixel != QPoint(-1, -1)) {
        m_pixel = {-1, -1};
        Q_EMIT pixelChanged(m_pixel);
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void ImageView::keyPressEvent(QKeyEvent* event)
{
    const QPointF center = QPointF(viewport()->rect().center());
    switch (event->key()) {
    case Qt::Key_Plus:
        return zoomBy(1, center);
    case Qt::Key_Minus:
        return zoomBy(-1, center);
    case Qt::Key_0:
        return fit();
    case Qt::Key_1:
        return setZoom(1);
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

QSize ImageView::sizeHint() const
{
    const int side = fontMetrics().height() * 12;
    return {side, side};
}
