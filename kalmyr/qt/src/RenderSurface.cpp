#include "RenderSurface.h"

#include "GLSurface.h"
#include "ImageSurface.h"

#include <kalmyr/base/SoPreferences.h>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QWidget>

void RenderSurface::schedule()
{
    m_stale = true;
    widget()->update();
}

bool RenderSurface::hasWindowGL()
{
    static const bool available = [] {
        // Platforms without a screen may hand out contexts but do not show what they draw.
        const QString platform = QGuiApplication::platformName();
        if (platform == QLatin1String("offscreen") || platform.startsWith(QLatin1String("minimal"))
            || platform == QLatin1String("vnc"))
            return false;
        if (SoPreferences::getBool("KMR_QT_DRAW_IMAGES", false))
            return false;
        QOffscreenSurface surface;
        surface.setFormat(GLSurface::format());
        surface.create();
        QOpenGLContext context;
        context.setFormat(GLSurface::format());
        if (!context.create() || !context.makeCurrent(&surface))
            return false;
        const bool enough = !context.isOpenGLES() && context.format().version() >= qMakePair(3, 3);
        context.doneCurrent();
        return enough;
    }();
    return available;
}

RenderSurface* RenderSurface::create(SoGuiRenderArea* area, QWidget* parent)
{
    if (hasWindowGL())
        return new GLSurface(area, parent);
    return new ImageSurface(area, parent);
}
