// Where the camera of a viewer stands and how it moves by itself.

#include <kalmyr/gui/SoGuiViewer.h>

#include "KeptAlive.h"
#include "SoGuiViewerView.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr float kNearestShare =
    0.001f; // of the far distance: nearer costs too much depth precision
constexpr float kNearestToFocal = 0.1f; // of the distance of what is looked at
constexpr float kSeekShare = 0.5f;      // of the way to the point remains after a seek
constexpr float kMinSize = 1e-9f;       // of a view or distance
constexpr float kMaxSize = 1e15f;
constexpr float kPlaneSlack = 0.01f; // of the scene's depth

SbBox3f boundsOf(const SoRef<SoNode>& node, const SbViewportRegion& region)
{
    if (!node)
        return SbBox3f();
    SoGetBoundingBoxAction action(region);
    action.apply(node.get());
    return action.getBoundingBox();
}

SoCamera* firstCamera(SoNode* scene)
{
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setSearchingKits(true);
    search.apply(scene);
    return search.isFound() ? static_cast<SoCamera*>(search.getPath()->getTail()) : nullptr;
}

float clampedSize(float size)
{
    return std::isfinite(size) ? std::clamp(size, kMinSize, kMaxSize) : 1.0f;
}

/// Height seen at distance 1.
float heightScale(const SoCamera& camera)
{
    return 2 * std::tan(static_cast<const SoPerspectiveCamera&>(camera).heightAngle.getValue() / 2);
}

SbVec3f ahead(const SbRotation& orientation, float distance)
{
    return orientation.rotated(SbVec3f(0, 0, -distance));
}

/// Smooth start and end of a flight.
float eased(float t)
{
    return t * t * (3 - 2 * t);
}

template <class Field, class Value>
void setIfDifferent(Field& field, const Value& value)
{
    if (!(field.getValue() == value))
        field.setValue(value);
}

/// Value of a field that a node of an optional module has, or `fallback`.
template <class Field, class Value>
Value valueOf(const SoNode& node, const char* name, Value fallback)
{
    const SoField* field = node.getField(SbName(name));
    return field && field->isOfType(Field::getClassTypeId())
               ? static_cast<const Field*>(field)->getValue()
               : fallback;
}

/// The node of a type of the VRML97 module, which is optional, that counts in a scene.
SoNode* boundNode(const char* type, const SoNode* scene)
{
    const SoType known = SoType::fromName(SbName(type));
    return known.isBad() ? nullptr : SoVRMLBindable::getBound(scene, known);
}

} // namespace

SbViewportRegion SoGuiViewer::cameraViewport() const
{
    return m_camera->getViewport(getSceneManager()->getViewportRegion());
}

SoGuiViewer::View SoGuiViewer::currentView() const
{
    const float distance = clampedSize(m_camera->focalDistance.getValue());
    View view;
    view.orientation = m_camera->orientation.getValue();
    view.center = m_camera->position.getValue() + ahead(view.orientation, distance);
    view.height = getCameraType() == ORTHOGRAPHIC
                      ? static_cast<SoOrthographicCamera*>(m_camera.get())->height.getValue()
                      : distance * heightScale(*m_camera);
    return view;
}

void SoGuiViewer::applyView(const View& view)
{
    const float height = clampedSize(view.height);
    float distance = clampedSize(m_camera->focalDistance.getValue());
    if (getCameraType() == ORTHOGRAPHIC)
        static_cast<SoOrthographicCamera*>(m_camera.get())->height = height;
    else
        distance = height / heightScale(*m_camera);
    m_camera->orientation = view.orientation;
    m_camera->focalDistance = distance;
    m_camera->position = view.center - ahead(view.orientation, distance);
}

void SoGuiViewer::placeCamera()
{
    useCamera(m_scene ? firstCamera(m_scene.get()) : nullptr, getCameraType());
    m_structureChanged = false;
    m_placedProvisionally = 0;
    if (m_ownCamera && m_scene && !placeByViewpoint()) {
        viewAll();
        m_placedProvisionally = m_camera->getChangeId();
    }
    saveHomePosition();
}

bool SoGuiViewer::findViewpoint()
{
    SoNode* bound = boundNode("VRMLViewpoint", m_scene.get());
    SoSearchAction search;
    search.setNode(bound);
    search.setSearchingAll(true);
    if (bound)
        search.apply(m_scene.get());
    m_viewpoint = search.getPath();
    if (m_viewpoint)
        *m_viewpointPose = viewpointPose();
    return m_viewpoint.get() != nullptr;
}

SoGuiViewer::Pose SoGuiViewer::viewpointPose() const
{
    SoGetMatrixAction matrix(getSceneManager()->getViewportRegion());
    matrix.apply(m_viewpoint.get());
    const SbMatrix& toWorld = matrix.getMatrix();
    const SoNode& viewpoint = *m_viewpoint->getTail();
    return {toWorld.point(valueOf<SoSFVec3f>(viewpoint, "position", SbVec3f(0, 0, 10))),
            valueOf<SoSFRotation>(viewpoint, "orientation", SbRotation()) * SbRotation(toWorld)};
}

/// Who looks from a viewpoint that moves is carried along.
void SoGuiViewer::followViewpoint()
{
    if (!m_viewpoint || !m_ownCamera)
        return;
    const SoType type = SoType::fromName(SbName("VRMLViewpoint"));
    if (!m_viewpoint->getTail() || m_viewpoint->getTail()->getTypeId() != type) {
        m_viewpoint = nullptr; // it was taken out of the scene
        return;
    }
    const Pose now = viewpointPose();
    const Pose before = std::exchange(*m_viewpointPose, now);
    if (now.position == before.position && now.orientation == before.orientation)
        return;
    const SbRotation turn = before.orientation.inverse() * now.orientation;
    const SbVec3f aside = m_camera->position.getValue() - before.position;
    m_camera->position = now.position + turn.rotated(aside);
    m_camera->orientation = m_camera->orientation.getValue() * turn;
}

bool SoGuiViewer::placeByViewpoint()
{
    if (!findViewpoint())
        return false;
    const SbVec3f position = m_viewpointPose->position;
    const SoNode& viewpoint = *m_viewpoint->getTail();
    m_camera->position = position;
    m_camera->orientation = m_viewpointPose->orientation;
    const SbBox3f box = boundsOf(m_scene.get(), getSceneManager()->getViewportRegion());
    if (!box.isEmpty())
        m_camera->focalDistance = clampedSize((box.getCenter() - position).length());
    m_heightAngle = valueOf<SoSFFloat>(viewpoint, "fieldOfView", m_heightAngle);
    if (getCameraType() == PERSPECTIVE)
        static_cast<SoPerspectiveCamera*>(m_camera.get())->heightAngle = m_heightAngle;
    else
        static_cast<SoOrthographicCamera*>(m_camera.get())->height =
            m_camera->focalDistance.getValue() * 2 * std::tan(m_heightAngle / 2);
    return true;
}

void SoGuiViewer::nodeBound(void* data, SoVRMLBindable* node)
{
    auto* self = static_cast<SoGuiViewer*>(data);
    if (!self->m_scene || !node->isAtOrBelow(self->m_scene.get()))
        return;
    const bool isViewpoint = node->getTypeId() == SoType::fromName(SbName("VRMLViewpoint"));
    if (!isViewpoint) {
        self->followNavigationInfo();
    } else if (self->m_ownCamera && valueOf<SoSFBool>(*node, "jump", true)) {
        self->stopAnimation();
        self->placeByViewpoint();
    } else {
        self->findViewpoint();
    }
}

void SoGuiViewer::followNavigationInfo()
{
    const SoNode* info = boundNode("VRMLNavigationInfo", m_scene.get());
    const bool wanted = !info || valueOf<SoSFBool>(*info, "headlight", true);
    // What the user switched stays between scenes that want the same.
    if (wanted != std::exchange(m_sceneWantsHeadlight, wanted))
        setHeadlight(wanted);
}

void SoGuiViewer::followSceneCamera()
{
    if (!m_structureChanged)
        return;
    m_structureChanged = false;
    if (!m_ownCamera) {
        SoSearchAction search;
        search.setNode(m_camera.get());
        search.setSearchingKits(true);
        search.apply(m_scene.get());
        if (search.isFound())
            return;
    }
    SoCamera* found = firstCamera(m_scene.get());
    if (!found && m_ownCamera)
        return;
    stopAnimation();
    const View view = currentView();
    useCamera(found, getCameraType());
    if (!found)
        applyView(view);
    saveHomePosition();
    stateChanged();
}

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

SbMatrix SoGuiViewer::cameraSpace() const
{
    if (m_ownCamera || !m_scene)
        return SbMatrix::identity();
    SoSearchAction search;
    search.setNode(m_camera.get());
    search.setSearchingKits(true);
    search.apply(m_scene.get());
    if (!search.isFound())
        return SbMatrix::identity();
    SoGetMatrixAction matrix(getSceneManager()->getViewportRegion());
    matrix.apply(search.getPath());
    return matrix.getMatrix();
}

bool SoGuiViewer::seekToPoint(const SbVec2s& position)
{
    SoRayPickAction pick(getSceneManager()->getViewportRegion());
    pick.setPoint(position);
    pick.apply(m_root.get());
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

void SoGuiViewer::setPlanes(float nearDistance, float farDistance)
{
    setIfDifferent(m_camera->nearDistance, nearDistance);
    setIfDifferent(m_camera->farDistance, farDistance);
}

void SoGuiViewer::adjustClippingPlanes()
{
    SbBox3f box = boundsOf(m_scene.get(), getSceneManager()->getViewportRegion());
    if (box.isEmpty())
        return;
    // Into camera space, where distances count along -z.
    SbMatrix toWorld;
    toWorld.setTransform(m_camera->position.getValue(), m_camera->orientation.getValue(),
                         SbVec3f(1, 1, 1));
    box.transform((toWorld * cameraSpace()).inverse());
    float nearDistance = -box.getMax()[2];
    float farDistance = -box.getMin()[2];
    const float slack = std::max(
        {(farDistance - nearDistance) * kPlaneSlack, std::abs(farDistance) * 1e-4f, 1e-6f});
    nearDistance -= slack;
    farDistance += slack;
    if (!std::isfinite(nearDistance) || !std::isfinite(farDistance))
        return;
    if (getCameraType() == PERSPECTIVE) {
        if (farDistance <= 0)
            return; // everything is behind the eye
        // What is looked at stays in view, even when the bounds are far too large.
        const float focal = clampedSize(m_camera->focalDistance.getValue());
        nearDistance =
            std::max(nearDistance, std::min(farDistance * kNearestShare, focal * kNearestToFocal));
    }
    const bool enclosed = m_camera->nearDistance.getValue() <= nearDistance
                          && m_camera->farDistance.getValue() >= farDistance;
    // A scene's own camera is changed only when it would cut something off.
    if (m_ownCamera || !enclosed)
        setPlanes(nearDistance, farDistance);
}

void SoGuiViewer::aimHeadlight()
{
    SbVec3f direction = cameraSpace().direction(ahead(m_camera->orientation.getValue(), 1));
    if (direction.normalize() > 0)
        setIfDifferent(m_headlight->direction, direction);
}

void SoGuiViewer::prepareFrame()
{
    followSceneCamera();
    followViewpoint();
    if (m_placedProvisionally && m_placedProvisionally == m_camera->getChangeId()) {
        viewAll();
        saveHomePosition();
        const bool empty =
            boundsOf(m_scene.get(), getSceneManager()->getViewportRegion()).isEmpty();
        m_placedProvisionally = empty ? m_camera->getChangeId() : 0;
    }
    if (m_autoClipping)
        adjustClippingPlanes();
    aimHeadlight();
}
