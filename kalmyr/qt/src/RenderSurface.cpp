#include "RenderSurface.h"

#include "GLSurface.h"
#include "ImageSurface.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/io/SoReadLock.h>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace {

constexpr double kPatience = 0.02;     // seconds
constexpr int kRetryMilliseconds = 20; // until the next try when another thread is editing

} // namespace

void RenderSurface::schedule()
{
    m_stale = true;
    widget()->update();
}

bool RenderSurface::drawWith(const std::function<bool(SoGuiRenderArea&)>& draw)
{
    if (!m_area || m_drawing)
        return false;
    // Not waiting for long: the editor may be waiting for the user interface.
    const SoReadLock graph{SbTime(kPatience)};
    if (!graph) {
        QTimer::singleShot(kRetryMilliseconds, widget(), qOverload<>(&QWidget::update));
        return false;
    }
    const SoRef<SoGuiRenderArea> area(m_area); // a callback in the scene may let go of it
    const QPointer<QWidget> alive(widget());   // and may delete its window
    m_drawing = true;
    const bool isDrawn = draw(*area);
    if (!alive)
        return false;
    m_drawing = false;
    return isDrawn && m_area;
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

RenderSurface* RenderSurface::create(SoGuiRenderArea* area, QWidget* parent, int samples)
{
    if (hasWindowGL())
        return new GLSurface(area, parent, samples);
    auto* surface = new ImageSurface(area, parent);
    surface->setSamples(samples);
    return surface;
}
