#pragma once

#include "ImagePixels.h"

#include <QAbstractScrollArea>
#include <QPointF>

#include <functional>

class SbImage;

/// Shows a part of an image, at any size, by scrolling.
///
/// Asks for the image when it paints, converts what is in view, and keeps that until the view or
/// the image changes. It keeps no image: whoever edits its pixels would have to copy them.
class ImageView final : public QAbstractScrollArea {
    Q_OBJECT

public:
    /// Gives the present image; one that shares its pixels will do.
    using Source = std::function<SbImage()>;

    /// Screen pixels for one of the image.
    static constexpr double kLeastZoom = 1.0 / 256;
    static constexpr double kMostZoom = 64;

    explicit ImageView(Source source, QWidget* parent = nullptr);

    /// The pixels may be others; `size` is that of the image now.
    void imageChanged(QSize size);
    void setChannels(ImageChannels channels);
    void setSlice(int slice);
    void setHint(const QString& hint);

    bool isFitted() const { return m_isFitted; }
    /// The image fills the view, whatever size that has.
    void fit();
    /// A fixed size; the pixel under `anchor`, in the viewport, stays where it is.
    void setZoom(double zoom, QPointF anchor);
    void setZoom(double zoom);
    /// Screen pixels, not the toolkit's, for one of the image.
    double zoom() const;
    /// By how many steps, and whether in (positive) or out.
    void zoomBy(int steps, QPointF anchor);

    /// The pixel at a place of the viewport, from the top left; (-1, -1) beside the image.
    QPoint pixelAt(QPointF place) const;
    /// Pixels that were converted for the screen since it was made.
    long long convertedPixels() const { return m_convertedPixels; }
    /// Returns the picture in the viewport, without the background.
    QImage shownPart() const { return m_picture; }

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The pixel under the cursor, or (-1, -1).
    void pixelChanged(QPoint pixel);
    void zoomChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    double scale() const;   ///< the toolkit's pixels for one of the image
    QPointF origin() const; ///< of the image, in the viewport
    void updateScrollBars();
    void convert();
    void paintGround(QPainter& painter, const QRectF& place) const;

    Source m_source;
    QSize m_size;
    ImageChannels m_channels = ImageChannels::All;
    int m_slice = 0;
    bool m_isFitted = true;
    double m_zoom = 1;
    QString m_hint;
    QPoint m_pixel{-1, -1};
    QPoint m_pressed; ///< where a drag was last

    // Caches the last conversion and its source.
    QImage m_picture;
    QRect m_part;
    int m_factor = 0;
    bool m_isStale = true;
    long long m_convertedPixels = 0;
};
