#pragma once

#include "RenderSurface.h"

#include <QWidget>

#include <memory>

class SoOffscreenRenderer;

/// Draws with the toolkit's own context into a picture and paints that; without any OpenGL, a text
/// that says so.
class ImageSurface final : public QWidget, public RenderSurface {
public:
    ImageSurface(SoGuiRenderArea* area, QWidget* parent);
    ~ImageSurface() override;

    QWidget* widget() override { return this; }
    bool redraw() override;
    QImage grab() override;
    bool setSamples(int samples) override;
    QString failure() const override { return m_failure; }

    QSize sizeHint() const override { return preferredSize(); }
    QSize minimumSizeHint() const override { return smallestSize(); }
    static QSize preferredSize() { return QSize(640, 480); }
    static QSize smallestSize() { return QSize(80, 60); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isUpToDate() const;
    void paintFailure();

    std::shared_ptr<SoOffscreenRenderer> m_renderer; // drawing outlives the surface
    QImage m_image;
    QString m_failure;
};
