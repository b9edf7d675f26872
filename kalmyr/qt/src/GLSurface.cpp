#include "GLSurface.h"

#include "ImageSurface.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/gui/SoGuiRenderArea.h>

#include <QOpenGLContext>

QSurfaceFormat GLSurface::format(int samples)
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    format.setStencilBufferSize(8);
    format.setSamples(samples > 1 ? samples : 0);
    return format;
}

GLSurface::GLSurface(SoGuiRenderArea* area, QWidget* parent, int samples)
    : QOpenGLWidget(parent), RenderSurface(area), m_samples(samples)
{
    setFormat(format(samples));
    setUpdateBehavior(PartialUpdate); // the last frame stays while the scene cannot be drawn
}

GLSurface::~GLSurface()
{
    if (context())
        disconnect(context(), nullptr, this, nullptr);
    release();
}

void GLSurface::initializeGL()
{
    // Moving to another window ends the context; a new one begins with this function.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &GLSurface::release);
}

void GLSurface::release()
{
    if (!context())
        return;
    makeCurrent();
    SoGLRenderAction::releaseContext();
    doneCurrent();
}

void GLSurface::paintGL()
{
    if (drawWith([](SoGuiRenderArea& area) { return area.render(); }))
        drawn();
}

bool GLSurface::redraw()
{
    const std::uint64_t before = frames();
    if (isVisible() && updatesEnabled())
        repaint();
    if (frames() == before)
        grabFramebuffer();
    return frames() != before;
}

QImage GLSurface::grab()
{
    const std::uint64_t before = frames();
    const QImage image = grabFramebuffer();
    return frames() != before ? image : QImage();
}

QSize GLSurface::sizeHint() const
{
    return ImageSurface::preferredSize();
}

QSize GLSurface::minimumSizeHint() const
{
    return ImageSurface::smallestSize();
}
