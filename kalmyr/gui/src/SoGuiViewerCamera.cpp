// Where the camera of a viewer stands.

#include <kalmyr/gui/SoGuiViewer.h>

#include "CameraTools.h"
#include "SoGuiViewerView.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoSceneCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLParent.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool hasCamera(SoNode* scene)
{
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setSearchingKits(true);
    search.apply(scene);
    return search.isFound();
}

bool stands(SoNode* node, SoNode* scene)
{
    SoSearchAction search;
    search.setNode(node);
    search.setSearchingAll(true);
    search.apply(scene);
    return search.isFound();
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
SoNode* boundNode(SoType type, const SoNode* scene)
{
    return type.isBad() ? nullptr : SoVRMLBindable::getBound(scene, type);
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
    showThrough(SoSceneCamera::find(m_scene.get()));
    m_structureChanged = false;
    m_placedProvisionally = 0;
    if (m_ownCamera && m_scene && !m_viewpoint) {
        viewAll();
        m_placedProvisionally = m_camera->getChangeId();
    }
    saveHomePosition();
}

/// Takes the camera that was found, or one of its own that shows the same. False, and a camera of
/// its own in no place, when nothing was found.
bool SoGuiViewer::showThrough(const SoSceneCamera& found)
{
    const SoRef<SoCamera> made = found.getCameraInForce() ? nullptr : found.makeCamera(1);
    const bool isParallel = made && made->isOfType(SoOrthographicCamera::getClassTypeId());
    const CameraType type =
        !made || found.isViewpoint() ? getCameraType() : (isParallel ? ORTHOGRAPHIC : PERSPECTIVE);
    m_viewpoint = nullptr;
    useCamera(found.getCameraInForce(), type);
    return !m_ownCamera || (made && placeLike(*made, found));
}

/// Moves the own camera to where a camera that was made for what was found stands.
bool SoGuiViewer::placeLike(const SoCamera& made, const SoSceneCamera& found)
{
    m_viewpoint = found.getPath();
    if (!getViewpointPose(*m_viewpointPose))
        return false;
    m_camera->position = made.position.getValue();
    m_camera->orientation = made.orientation.getValue();
    float distance = made.focalDistance.getValue();
    const SbBox3f box = sceneBox(m_scene.get(), getSceneManager()->getViewportRegion());
    if (found.isViewpoint())
        distance = box.isEmpty() ? m_camera->focalDistance.getValue()
                                 : (box.getCenter() - made.position.getValue()).length();
    m_camera->focalDistance = clampedSize(distance);
    float height = 0;
    if (made.isOfType(SoPerspectiveCamera::getClassTypeId())) {
        m_heightAngle = static_cast<const SoPerspectiveCamera&>(made).heightAngle.getValue();
        height = m_camera->focalDistance.getValue() * 2 * std::tan(m_heightAngle / 2);
    } else {
        height = static_cast<const SoOrthographicCamera&>(made).height.getValue();
    }
    if (getCameraType() == PERSPECTIVE)
        static_cast<SoPerspectiveCamera*>(m_camera.get())->heightAngle = m_heightAngle;
    else
        static_cast<SoOrthographicCamera*>(m_camera.get())->height = height;
    m_camera->viewportMapping = made.viewportMapping.getValue();
    m_camera->aspectRatio = made.aspectRatio.getValue();
    return true;
}

bool SoGuiViewer::getViewpointPose(Pose& pose) const
{
    return SoSceneCamera::getPose(m_viewpoint.get(), pose.position, pose.orientation);
}

/// Who looks from a viewpoint that moves is carried along.
void SoGuiViewer::followViewpoint()
{
    if (!m_viewpoint || !m_ownCamera)
        return;
    Pose now;
    if (!getViewpointPose(now)) {
        m_viewpoint = nullptr; // it was taken out of the scene
        return;
    }
    const Pose before = std::exchange(*m_viewpointPose, now);
    if (now.position == before.position && now.orientation == before.orientation)
        return;
    const SbRotation turn = before.orientation.inverse() * now.orientation;
    const SbVec3f aside = m_camera->position.getValue() - before.position;
    m_camera->position = now.position + turn.rotated(aside);
    m_camera->orientation = m_camera->orientation.getValue() * turn;
}

void SoGuiViewer::nodeBound(void* data, SoVRMLBindable* node)
{
    auto* self = static_cast<SoGuiViewer*>(data);
    if (!self->m_scene || !node->isAtOrBelow(self->m_scene.get()))
        return;
    if (!SoSceneCamera::isCamera(node)) {
        self->followNavigationInfo();
        return;
    }
    if (!self->m_ownCamera)
        return;
    const SoSceneCamera bound = SoSceneCamera::find(self->m_scene.get(), node);
    const SoRef<SoCamera> made = bound.makeCamera(1);
    if (!made)
        return;
    if (valueOf<SoSFBool>(*node, "jump", true)) {
        self->stopAnimation();
        self->placeLike(*made, bound);
    } else {
        self->m_viewpoint = bound.getPath();
        self->getViewpointPose(*self->m_viewpointPose);
    }
}

void SoGuiViewer::followNavigationInfo()
{
    const SoNode* info = boundNode(SoVRMLNavigationInfo::getClassTypeId(), m_scene.get());
    const bool wanted = !info || valueOf<SoSFBool>(*info, "headlight", true);
    // The user's choice stays between scenes that want the same.
    if (wanted != std::exchange(m_sceneWantsHeadlight, wanted))
        setHeadlight(wanted);
}

void SoGuiViewer::followSceneCamera()
{
    if (!m_structureChanged)
        return;
    m_structureChanged = false;
    SoNode* used = m_camera.get();
    if (m_ownCamera)
        used = m_viewpoint ? m_viewpoint->getTail() : nullptr;
    if (used && used->isOfType(SoCamera::getClassTypeId()) && stands(used, m_scene.get()))
        return;
    if (m_ownCamera && !hasCamera(m_scene.get()))
        return;
    const SoSceneCamera found = SoSceneCamera::find(m_scene.get());
    if (m_ownCamera && found.isViewpoint() && found.getPath()->getTail() == used)
        return;
    stopAnimation();
    const View view = currentView();
    if (!showThrough(found))
        applyView(view);
    saveHomePosition();
    stateChanged();
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

void SoGuiViewer::sceneExtent(SbVec3f& center, float& size) const
{
    SbBox3f box = sceneBox(m_scene.get(), getSceneManager()->getViewportRegion());
    box.transform(cameraSpace().inverse());
    center = box.isEmpty() ? SbVec3f(0, 0, 0) : box.getCenter();
    size = box.isEmpty() ? 0 : box.getSize().length();
}

SbVec3f SoGuiViewer::upForCamera() const
{
    SbVec3f up = cameraSpace().inverse().direction(m_up);
    return up.normalize() > 0 ? up : SbVec3f(0, 1, 0);
}

bool SoGuiViewer::namesUpDirection() const
{
    if (!m_namesUp) {
        SoSearchAction search;
        search.setType(SoVRMLParent::getClassTypeId());
        search.setInterest(SoSearchAction::FIRST);
        search.setSearchingAll(true);
        if (m_scene && !SoVRMLParent::getClassTypeId().isBad())
            search.apply(m_scene.get());
        m_namesUp = search.isFound();
    }
    return *m_namesUp;
}

void SoGuiViewer::aimHeadlight()
{
    SbVec3f direction = cameraSpace().direction(ahead(m_camera->orientation.getValue(), 1));
    if (direction.normalize() > 0)
        setIfDifferent(m_headlight->direction, direction);
}

void SoGuiViewer::placeEyes()
{
    const float distance = clampedSize(m_camera->focalDistance.getValue());
    getSceneManager()->setStereo(
        m_stereo ? SoGLRenderAction::Stereo{true, distance * m_eyeSeparation, distance}
                 : SoGLRenderAction::Stereo{});
}

void SoGuiViewer::prepareFrame()
{
    followSceneCamera();
    followViewpoint();
    if (m_placedProvisionally && m_placedProvisionally == m_camera->getChangeId()) {
        viewAll();
        saveHomePosition();
        const bool empty =
            sceneBox(m_scene.get(), getSceneManager()->getViewportRegion()).isEmpty();
        m_placedProvisionally = empty ? m_camera->getChangeId() : 0;
    }
    aimHeadlight();
    placeEyes();
    if (m_autoClipping)
        adjustClippingPlanes();
}
