#pragma once

#include "RenderSurface.h"

#include <QOpenGLWidget>

/// Draws in the context of an OpenGL widget.
class GLSurface final : public QOpenGLWidget, public RenderSurface {
public:
    GLSurface(SoGuiRenderArea* area, QWidget* parent);
    ~GLSurface() override;

    static QSurfaceFormat format();

    QWidget* widget() override { return this; }
    bool redraw() override;
    QImage grab() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void release();
};
