#include "ImageSurface.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <QCoreApplication>
#include <QPainter>

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("SoQtRenderArea", text);
}

/// From rows bottom to top, three bytes a pixel.
QImage toImage(const unsigned char* rgb, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = height - 1; y >= 0; --y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x, rgb += 3)
            line[x] = qRgb(rgb[0], rgb[1], rgb[2]);
    }
    return image;
}

} // namespace

ImageSurface::ImageSurface(SoGuiRenderArea* area, QWidget* parent)
    : QWidget(parent), RenderSurface(area)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    const SoOffscreenContext& context = SoOffscreenContext::shared();
    if (!context.isValid())
        m_failure = QString::fromUtf8(context.getError());
    m_renderer = std::make_shared<SoOffscreenRenderer>(SbViewportRegion());
}

ImageSurface::~ImageSurface() = default;

bool ImageSurface::redraw()
{
    if (!m_failure.isEmpty() || !drawWith([renderer = m_renderer](SoGuiRenderArea& area) {
            return area.renderOffscreen(*renderer);
        }))
        return false;
    const SbVec2s& size = m_renderer->getViewportRegion().getWindowSize();
    m_image = toImage(m_renderer->getBuffer(), size[0], size[1]);
    m_image.setDevicePixelRatio(devicePixelRatioF());
    drawn();
    update();
    return true;
}

QImage ImageSurface::grab()
{
    if (!redraw())
        return QImage();
    QImage image = m_image;
    image.setDevicePixelRatio(1);
    return image;
}

bool ImageSurface::setSamples(int samples)
{
    m_renderer->setNumSamples(samples);
    schedule();
    return true;
}

bool ImageSurface::isUpToDate() const
{
    if (isStale() || !m_area)
        return !m_area;
    const SbVec2i32 size = m_area->getSize();
    return m_image.width() == size[0] && m_image.height() == size[1];
}

void ImageSurface::paintEvent(QPaintEvent*)
{
    // While another thread edits the last picture stays.
    if (!isUpToDate() && !redraw() && m_image.isNull()) {
        paintFailure();
        return;
    }
    QPainter painter(this);
    if (m_image.isNull())
        painter.fillRect(rect(), palette().window());
    else
        painter.drawImage(QRectF(rect()), m_image);
}

void ImageSurface::paintFailure()
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
    const QString reason = m_failure.isEmpty() ? translated("OpenGL failed.") : m_failure;
    const QString text = translated("The scene cannot be drawn here.") + QLatin1Char('\n') + reason;
    painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, text);
}
