#pragma once

#include "RenderSurface.h"

#include <QOpenGLWidget>

/// Draws in the context of an OpenGL widget.
class GLSurface final : public QOpenGLWidget, public RenderSurface {
public:
    GLSurface(SoGuiRenderArea* area, QWidget* parent, int samples);
    ~GLSurface() override;

    static QSurfaceFormat format(int samples = 1);

    QWidget* widget() override { return this; }
    bool redraw() override;
    QImage grab() override;
    bool setSamples(int samples) override { return samples == m_samples; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void release();

    const int m_samples;
};
