// Where the camera of a viewer stands.

#include <kalmyr/gui/SoGuiViewer.h>

#include "CameraTools.h"
#include "SoGuiViewerView.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLParent.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

SoCamera* firstCamera(SoNode* scene)
{
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setSearchingKits(true);
    search.apply(scene);
    return search.isFound() ? static_cast<SoCamera*>(search.getPath()->getTail()) : nullptr;
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
    SoNode* bound = boundNode(SoVRMLViewpoint::getClassTypeId(), m_scene.get());
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
    const SoNode* tail = m_viewpoint->getTail();
    if (!tail || !tail->isOfType(SoVRMLViewpoint::getClassTypeId())) {
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
    const SbBox3f box = sceneBox(m_scene.get(), getSceneManager()->getViewportRegion());
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
    const bool isViewpoint = node->isOfType(SoVRMLViewpoint::getClassTypeId());
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
