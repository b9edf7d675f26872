// How the camera of a viewer moves by itself.

#include <kalmyr/gui/SoGuiViewer.h>

#include "CameraTools.h"
#include "KeptAlive.h"
#include "SoGuiViewerView.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>

namespace {

constexpr float kSeekShare = 0.5f; // of the way to the point remains after a seek
constexpr float kFrameSlack = 1.3f;
constexpr float kLeastFramed = 1e-4f; // of the scene: a point fills no view

/// Smooth start and end of a flight.
float eased(float t)
{
    return t * t * (3 - 2 * t);
}

/// Looks the way of somebody who stands at that side of a scene in which y is up.
SbRotation lookFrom(SoGuiViewer::Side side)
{
    constexpr float quarter = 1.5707963f;
    const SbVec3f right(1, 0, 0), up(0, 1, 0);
    switch (side) {
    case SoGuiViewer::BACK:
        return SbRotation(up, 2 * quarter);
    case SoGuiViewer::LEFT:
        return SbRotation(up, -quarter);
    case SoGuiViewer::RIGHT:
        return SbRotation(up, quarter);
    case SoGuiViewer::TOP:
        return SbRotation(right, -quarter);
    case SoGuiViewer::BOTTOM:
        return SbRotation(right, quarter);
    default:
        return SbRotation();
    }
}

SoSelection* findSelection(SoNode* scene)
{
    SoSearchAction search;
    search.setType(SoSelection::getClassTypeId());
    search.setInterest(SoSearchAction::FIRST);
    search.apply(scene);
    return search.isFound() ? static_cast<SoSelection*>(search.getPath()->getTail()) : nullptr;
}

} // namespace

void SoGuiViewer::viewAll()
{
    stopAnimation();
    if (m_scene)
        m_camera->viewAll(m_scene.get(), getSceneManager()->getViewportRegion());
}

void SoGuiViewer::saveHomePosition()
{
    m_home = std::make_unique<View>(currentView());
}

void SoGuiViewer::resetToHomePosition()
{
    flyTo(*m_home);
}

/// Flies to where `place` puts the camera.
template <class Place>
void SoGuiViewer::flyAfter(Place place)
{
    stopAnimation();
    const View from = currentView();
    place();
    const View to = currentView();
    applyView(from);
    flyTo(to);
}

void SoGuiViewer::flyToAll()
{
    flyAfter([this] { viewAll(); });
}

void SoGuiViewer::flyTo(const SbRotation& orientation)
{
    View view = currentView();
    view.orientation = orientation;
    flyTo(view);
}

void SoGuiViewer::flyToSide(Side side)
{
    flyTo(lookFrom(side) * SbRotation(SbVec3f(0, 1, 0), upForCamera()));
}

/// The box, in the world, of the end of a path that begins in the scene at its node number `from`;
/// empty for others.
SbBox3f SoGuiViewer::boundsOf(const SoPath* path, int from) const
{
    if (!m_scene || !path || from >= path->getLength())
        return {};
    SoSearchAction search;
    search.setNode(path->getNode(from));
    search.setSearchingAll(true);
    search.apply(m_scene.get());
    if (!search.isFound())
        return {};
    const SoRef<SoPath> whole(search.getPath()->copy());
    for (int i = from + 1; i < path->getLength(); ++i)
        whole->append(path->getNode(i), path->getIndex(i));
    SoGetBoundingBoxAction action(getSceneManager()->getViewportRegion());
    action.apply(whole.get());
    return action.getBoundingBox();
}

bool SoGuiViewer::flyToBox(const SbBox3f& world)
{
    if (world.isEmpty())
        return false;
    SbBox3f box = world;
    box.transform(cameraSpace().inverse());
    SbVec3f center;
    float size = 0;
    sceneExtent(center, size);
    const float least = std::max(size * kLeastFramed, kMinSize);
    if (box.getSize().length() < least) {
        const SbVec3f half(least, least, least);
        box = SbBox3f(box.getCenter() - half, box.getCenter() + half);
    }
    const SbViewportRegion region = getSceneManager()->getViewportRegion();
    flyAfter([&] {
        m_camera->viewBox(box, m_camera->getViewport(region).getViewportAspectRatio(), kFrameSlack);
    });
    return true;
}

bool SoGuiViewer::flyTo(const SoPath* path, int from)
{
    return flyToBox(boundsOf(path, from));
}

void SoGuiViewer::flyToChosen()
{
    int from = 0;
    const SoPath* outlined = SoInspectorViews::getOutlined(from);
    SbBox3f box = boundsOf(outlined, from);
    if (const SoSelection* selection = m_scene ? findSelection(m_scene.get()) : nullptr;
        selection && box.isEmpty()) {
        for (int i = 0; i < selection->getNumSelected(); ++i)
            box.extendBy(boundsOf(selection->getPath(i), 0));
    }
    if (!flyToBox(box))
        flyToAll();
}

std::optional<SbVec3f> SoGuiViewer::pointUnder(const SbVec2f& position)
{
    // Shapes in front of the near plane of the latest frame may have come nearer since.
    prepareFrame();
    SoRayPickAction pick(getSceneManager()->getViewportRegion());
    pick.setNormalizedPoint(position);
    const SoRef<SoNode> root(m_root.get()); // a callback in the scene may replace it
    pick.apply(root.get());
    const SoPickedPoint* hit = pick.getPickedPoint();
    if (!hit)
        return std::nullopt;
    return cameraSpace().inverse().point(hit->getPoint());
}

bool SoGuiViewer::seekToPoint(const SbVec2s& position)
{
    SoRayPickAction pick(getSceneManager()->getViewportRegion());
    pick.setPoint(position);
    const SoRef<SoNode> root(m_root.get());
    pick.apply(root.get());
    const SoPickedPoint* hit = pick.getPickedPoint();
    if (!hit)
        return false;
    View view = currentView();
    view.center = cameraSpace().inverse().point(hit->getPoint());
    if (getCameraType() == PERSPECTIVE) {
        const SbVec3f way = view.center - m_camera->position.getValue();
        view.orientation *= SbRotation(ahead(view.orientation, 1), way);
        view.height = way.length() * heightScale(*m_camera);
    }
    view.height *= kSeekShare;
    flyTo(view);
    return true;
}

void SoGuiViewer::flyTo(const View& view)
{
    stopAnimation();
    if (!(m_seekTime > 0)) {
        applyView(view);
        return;
    }
    m_from = std::make_unique<View>(currentView());
    m_to = std::make_unique<View>(view);
    m_flightStart = SbTime::monotonic();
    m_flight.schedule();
}

void SoGuiViewer::flightStep(void* data, SoSensor*)
{
    auto* self = static_cast<SoGuiViewer*>(data);
    const KeptAlive kept(self); // whoever watches the camera may let go of the viewer
    const View from = *self->m_from;
    const View to = *self->m_to;
    const double elapsed = (SbTime::monotonic() - self->m_flightStart).getValue();
    const float t = std::min(static_cast<float>(elapsed / self->m_seekTime), 1.0f);
    if (t >= 1)
        self->m_flight.unschedule();
    const float e = eased(t);
    View view;
    view.center = from.center + (to.center - from.center) * e;
    view.orientation = SbRotation::slerp(from.orientation, to.orientation, e);
    view.height =
        clampedSize(from.height) * std::pow(clampedSize(to.height) / clampedSize(from.height), e);
    self->applyView(t >= 1 ? to : view);
}

void SoGuiViewer::stopAnimation()
{
    m_flight.unschedule();
}
