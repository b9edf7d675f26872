#include "PlanView.h"

#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <mirabo/launch/SoMirabo.h>

#include <QMouseEvent>
#include <QPainter>

PlanView::PlanView(SoNode* scene, QWidget* parent) : QWidget(parent)
{
    auto* camera = new SoOrthographicCamera;
    camera->position = SbVec3f(0, 30, 0);
    camera->orientation = SbRotation(SbVec3f(0, 0, -1), SbVec3f(0, -1, 0));
    camera->farDistance = 60;
    camera->height = 26;
    auto* light = new SoDirectionalLight;
    light->direction = SbVec3f(0.3f, -1, 0.2f);
    m_root->addChild(camera);
    m_root->addChild(light);
    m_root->addChild(scene);
    m_renderer.setBackgroundColor(SbColor(0.1f, 0.12f, 0.15f));
    m_renderer.setNumSamples(4);

    SoMirabo::addView(
        &m_action, [](void* view) { static_cast<PlanView*>(view)->update(); }, this);
}

SbViewportRegion PlanView::region() const
{
    const qreal ratio = devicePixelRatioF();
    SbViewportRegion region(static_cast<short>(width() * ratio),
                            static_cast<short>(height() * ratio));
    region.setPixelsPerInch(static_cast<float>(ratio) * SbViewportRegion::kDefaultPixelsPerInch);
    return region;
}

void PlanView::paintEvent(QPaintEvent*)
{
    m_renderer.setViewportRegion(region());
    if (!m_renderer.render(m_root.get()))
        return;
    const SbVec2s size = region().getWindowSize();
    const QImage picture(m_renderer.getBuffer(), size[0], size[1], 3 * size[0],
                         QImage::Format_RGB888);
    QPainter(this).drawImage(rect(), picture.mirrored()); // rows come from bottom to top
}

void PlanView::mousePressEvent(QMouseEvent* event)
{
    const qreal ratio = devicePixelRatioF();
    const SbVec2s position(static_cast<short>(event->x() * ratio),
                           static_cast<short>((height() - 1 - event->y()) * ratio));
    SoMirabo::setPickAction(region(), position);
}
