#include <kalmyr/qt/SoQtRenderArea.h>

#include "SoQtRenderAreaImpl.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QImage>
#include <QResizeEvent>
#include <QTimer>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

QWidget* makeWhole(QWidget* parent, const char* name, bool embed)
{
    auto* whole = new QWidget(parent, embed ? Qt::WindowFlags() : Qt::Window);
    const QString text = QString::fromUtf8(name);
    whole->setObjectName(text);
    if (whole->isWindow())
        whole->setWindowTitle(text);
    auto* layout = new QHBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return whole;
}

std::vector<const SoQtRenderArea*>& liveAreas()
{
    static std::vector<const SoQtRenderArea*> s_areas;
    return s_areas;
}

/// A widget that was never shown has not been told its size yet.
void sendPendingResize(QWidget* widget)
{
    if (!widget->testAttribute(Qt::WA_PendingResizeEvent))
        return;
    QResizeEvent event(widget->size(), QSize());
    widget->setAttribute(Qt::WA_PendingResizeEvent, false);
    QCoreApplication::sendEvent(widget, &event);
}

} // namespace

SoQtRenderArea::Impl::Impl(SoGuiRenderArea* guiArea, QWidget* parent, const char* name, bool embed)
    : area(guiArea), whole(makeWhole(parent, name, embed))
{
    makeSurface();
    whole->layout()->addWidget(surfaceWidget);
    area->getSceneManager()->setRenderCallback(
        [](void* data, SoSceneManager*) {
            if (RenderSurface* surface = static_cast<Impl*>(data)->surface())
                surface->schedule();
        },
        this);
}

SoQtRenderArea::Impl::~Impl()
{
    area->getSceneManager()->setRenderCallback(nullptr, nullptr);
    const bool wasBusy = isBusy();
    if (bridge)
        bridge->detach();
    if (surface())
        surface()->detach();
    if (!wasBusy) {
        delete whole;
    } else if (whole) { // a callback in the scene runs inside an event of the widget
        whole->hide();
        whole->deleteLater();
    }
}

bool SoQtRenderArea::Impl::isBusy() const
{
    return (surface() && surface()->isDrawing()) || (bridge && bridge->isSending());
}

void SoQtRenderArea::Impl::makeSurface()
{
    m_surface = RenderSurface::create(area.get(), whole, samples);
    surfaceWidget = m_surface->widget();
    surfaceWidget->setAccessibleName(QCoreApplication::translate("SoQtRenderArea", "Scene"));
    surfaceWidget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    whole->setFocusProxy(surfaceWidget);
    bridge = new EventBridge(area.get(), surfaceWidget);
}

void SoQtRenderArea::Impl::setSamples(int number)
{
    samples = number;
    if (!surface() || surface()->setSamples(number))
        return;
    if (isBusy()) // the widget runs the callback that asks for it
        QTimer::singleShot(0, bridge, [this] { setSamples(samples); });
    else
        renewSurface();
}

/// The number of samples is part of what an OpenGL widget is made with.
void SoQtRenderArea::Impl::renewSurface()
{
    const QPointer<QWidget> before = surfaceWidget;
    RenderSurface* const old = m_surface;
    const bool hadFocus = before->hasFocus();
    const auto onMenuButton = std::move(bridge->onMenuButton);
    bridge->detach();
    makeSurface();
    bridge->onMenuButton = onMenuButton;
    m_surface->takeCount(*old);
    delete whole->layout()->replaceWidget(before, surfaceWidget);
    surfaceWidget->setCursor(before->cursor());
    delete before;
    surfaceWidget->show();
    if (hadFocus)
        surfaceWidget->setFocus();
    if (onNewSurface)
        onNewSurface();
}

void SoQtRenderArea::Impl::layOut()
{
    if (!whole || !surfaceWidget)
        return;
    if (whole->layout())
        whole->layout()->activate();
    sendPendingResize(surfaceWidget);
    bridge->takeSize();
}

SoQtRenderArea::SoQtRenderArea(QWidget* parent, const char* name, bool embed)
    : SoQtRenderArea(new SoGuiRenderArea, parent, name, embed)
{
}

SoQtRenderArea::SoQtRenderArea(SoGuiRenderArea* area, QWidget* parent, const char* name, bool embed)
    : m_impl(std::make_unique<Impl>(area, parent, name, embed))
{
    liveAreas().push_back(this);
}

SoQtRenderArea::~SoQtRenderArea()
{
    std::erase(liveAreas(), this);
}

QWidget* SoQtRenderArea::getWidgetOf(const SoGuiRenderArea* area)
{
    for (const SoQtRenderArea* each : liveAreas())
        if (area && each->getGuiRenderArea() == area)
            return each->getWidget();
    return nullptr;
}

QWidget* SoQtRenderArea::getWidget() const
{
    return m_impl->whole;
}

QWidget* SoQtRenderArea::getRenderWidget() const
{
    return m_impl->surfaceWidget;
}

SoGuiRenderArea* SoQtRenderArea::getGuiRenderArea() const
{
    return m_impl->area.get();
}

SoSceneManager* SoQtRenderArea::getSceneManager() const
{
    return m_impl->area->getSceneManager();
}

void SoQtRenderArea::setSceneGraph(SoNode* root)
{
    m_impl->area->setSceneGraph(root);
}

SoNode* SoQtRenderArea::getSceneGraph() const
{
    return m_impl->area->getSceneGraph();
}

void SoQtRenderArea::setBackgroundColor(const SbColor& color)
{
    m_impl->area->setBackgroundColor(color);
}

SbColor SoQtRenderArea::getBackgroundColor() const
{
    return getSceneManager()->getBackgroundColor();
}

void SoQtRenderArea::scheduleRedraw()
{
    getSceneManager()->scheduleRedraw();
}

bool SoQtRenderArea::redraw()
{
    m_impl->layOut();
    return m_impl->surface() && m_impl->surface()->redraw();
}

std::uint64_t SoQtRenderArea::getFrameCount() const
{
    return m_impl->surface() ? m_impl->surface()->frames() : 0;
}

bool SoQtRenderArea::isRedrawPending() const
{
    return m_impl->surface()
           && (m_impl->surface()->isStale() || getSceneManager()->isRedrawScheduled());
}

QImage SoQtRenderArea::grabImage()
{
    m_impl->layOut();
    return m_impl->surface() ? m_impl->surface()->grab() : QImage();
}

void SoQtRenderArea::setNumSamples(int samples)
{
    constexpr int kMostSamples = 16;
    m_impl->setSamples(std::clamp(samples, 1, kMostSamples));
}

int SoQtRenderArea::getNumSamples() const
{
    return m_impl->samples;
}

SoQtRenderArea::Drawing SoQtRenderArea::getDrawing() const
{
    if (!m_impl->surface() || !getFailure().isEmpty())
        return NONE;
    return RenderSurface::hasWindowGL() ? WINDOW_GL : IMAGE;
}

QString SoQtRenderArea::getFailure() const
{
    return m_impl->surface() ? m_impl->surface()->failure() : QString();
}

void SoQtRenderArea::show()
{
    if (m_impl->whole)
        m_impl->whole->show();
}

void SoQtRenderArea::hide()
{
    if (m_impl->whole)
        m_impl->whole->hide();
}
