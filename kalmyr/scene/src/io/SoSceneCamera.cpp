#include <kalmyr/io/SoSceneCamera.h>

#include "io/CameraReach.h"
#include "vrml/PathRank.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <cmath>

namespace {

/// The VRML97 module is optional.
bool isKnownAs(const SoNode* node, SoType type)
{
    return !type.isBad() && node->isOfType(type);
}

bool isViewpointNode(const SoNode* node)
{
    return isKnownAs(node, SoVRMLViewpoint::getClassTypeId())
           || isKnownAs(node, SoVRMLGeoViewpoint::getClassTypeId());
}

/// Whether a place comes before another in the order of the scene.
bool isBefore(const SoPath& a, const SoPath& b)
{
    const auto rankA = kalmyr::detail::rankOf(a), rankB = kalmyr::detail::rankOf(b);
    if (rankA != rankB)
        return rankA < rankB;
    for (int i = 0; i < std::min(a.getLength(), b.getLength()); ++i)
        if (a.getIndex(i) != b.getIndex(i))
            return a.getIndex(i) < b.getIndex(i);
    return false;
}

/// The first, by rank, of the paths found to cameras and viewpoints.
SoRef<SoPath> firstOf(const SoSearchAction& search)
{
    SoRef<SoPath> first;
    for (const SoRef<SoPath>& path : search.getPaths())
        if (SoSceneCamera::isCamera(path->getTail()) && (!first || isBefore(*path, *first)))
            first = path;
    return first;
}

/// Place, turn and size of the space at the end of a path.
void getSpace(SoPath* path, SbMatrix& matrix, SbRotation& turn, float& size)
{
    SoGetMatrixAction action{SbViewportRegion()};
    action.apply(path);
    matrix = action.getMatrix();
    SbVec3f place, scale;
    SbRotation scaleTurn;
    matrix.getTransform(place, turn, scale, scaleTurn);
    size = std::cbrt(std::abs(scale[0] * scale[1] * scale[2]));
}

SoRef<SoCamera> cameraOf(const SoVRMLViewpoint& viewpoint, float aspect)
{
    auto* camera = new SoPerspectiveCamera;
    camera->heightAngle = viewpoint.getHeightAngle(aspect);
    return SoRef<SoCamera>(camera);
}

SoRef<SoCamera> cameraOf(const SoVRMLGeoViewpoint& viewpoint)
{
    auto* camera = new SoPerspectiveCamera;
    camera->heightAngle = viewpoint.fieldOfView.getValue();
    return SoRef<SoCamera>(camera);
}

SoRef<SoCamera> copyOf(const SoCamera& camera, float size)
{
    SoRef<SoCamera> copy(static_cast<SoCamera*>(camera.copy()));
    copy->focalDistance = copy->focalDistance.getValue() * size;
    if (copy->isOfType(SoOrthographicCamera::getClassTypeId())) {
        auto& height = static_cast<SoOrthographicCamera*>(copy.get())->height;
        height = height.getValue() * size;
    }
    return copy;
}

} // namespace

SoSceneCamera::SoSceneCamera() = default;
SoSceneCamera::~SoSceneCamera() = default;
SoSceneCamera::SoSceneCamera(const SoSceneCamera&) = default;
SoSceneCamera& SoSceneCamera::operator=(const SoSceneCamera&) = default;

SoSceneCamera SoSceneCamera::find(SoNode* scene)
{
    SoSceneCamera found;
    if (!scene)
        return found;
    const SoRef<SoNode> held(scene); // whoever is told of what is bound may drop it
    SoVRMLBindable::bindFirst(scene);
    const SoType viewpoint = SoVRMLViewpoint::getClassTypeId();
    if (!viewpoint.isBad())
        found = find(scene, SoVRMLBindable::getBound(scene, viewpoint));
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.setSearchingAll(true);
    search.apply(scene);
    const SoRef<SoPath> first = firstOf(search);
    if (!first || (found.m_path && isBefore(*found.m_path, *first)))
        return found;
    found.m_path = first;
    auto* camera = static_cast<SoCamera*>(first->getTail());
    if (kalmyr::detail::reachesAll(scene, camera))
        found.m_inForce = camera;
    return found;
}

SoSceneCamera SoSceneCamera::find(SoNode* scene, const SbName& name)
{
    SoSceneCamera found;
    if (!scene || name.isEmpty())
        return found;
    SoSearchAction search;
    search.setName(name);
    search.setInterest(SoSearchAction::ALL);
    search.setSearchingAll(true);
    search.apply(scene);
    found.m_path = firstOf(search);
    return found;
}

SoSceneCamera SoSceneCamera::find(SoNode* scene, const SoNode* camera)
{
    SoSceneCamera found;
    if (!scene || !camera || !isCamera(camera))
        return found;
    SoSearchAction action;
    action.setNode(const_cast<SoNode*>(camera));
    action.setSearchingAll(true);
    action.apply(scene);
    found.m_path = action.getPath();
    return found;
}

bool SoSceneCamera::isViewpoint() const
{
    return m_path && isViewpointNode(m_path->getTail());
}

SoRef<SoCamera> SoSceneCamera::makeCamera(float aspect) const
{
    SbVec3f position;
    SbRotation orientation;
    if (!m_path || !getPose(m_path.get(), position, orientation))
        return nullptr;
    SbMatrix matrix;
    SbRotation turn;
    float size = 1;
    getSpace(m_path.get(), matrix, turn, size);
    const SoNode* node = m_path->getTail();
    const SoRef<SoCamera> camera =
        isKnownAs(node, SoVRMLViewpoint::getClassTypeId())
            ? cameraOf(static_cast<const SoVRMLViewpoint&>(*node), aspect)
        : isKnownAs(node, SoVRMLGeoViewpoint::getClassTypeId())
            ? cameraOf(static_cast<const SoVRMLGeoViewpoint&>(*node))
            : copyOf(static_cast<const SoCamera&>(*node), size);
    camera->position = position;
    camera->orientation = orientation;
    camera->setOverride(true);
    return camera;
}

bool SoSceneCamera::isCamera(const SoNode* node)
{
    return node->isOfType(SoCamera::getClassTypeId()) || isViewpointNode(node);
}

bool SoSceneCamera::getPose(SoPath* path, SbVec3f& position, SbRotation& orientation)
{
    const SoNode* node = path && !path->isEmpty() ? path->getTail() : nullptr;
    if (!node || !isCamera(node))
        return false;
    if (isKnownAs(node, SoVRMLViewpoint::getClassTypeId())) {
        const auto* viewpoint = static_cast<const SoVRMLViewpoint*>(node);
        position = viewpoint->position.getValue();
        orientation = viewpoint->orientation.getValue();
    } else if (isKnownAs(node, SoVRMLGeoViewpoint::getClassTypeId())) {
        if (!static_cast<const SoVRMLGeoViewpoint*>(node)->getView(position, orientation))
            return false;
    } else {
        position = static_cast<const SoCamera*>(node)->position.getValue();
        orientation = static_cast<const SoCamera*>(node)->orientation.getValue();
    }
    SbMatrix matrix;
    SbRotation turn;
    float size = 1;
    getSpace(path, matrix, turn, size);
    position = matrix.point(position);
    orientation = orientation * turn;
    return true;
}
