#include "View.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <cmath>

namespace {

/// A viewpoint of a VRML97 scene, the first one unless told otherwise, as a camera with a light;
/// null when there is none.
SoRef<SoNode> throughViewpoint(const Scene& scene, float aspect, SoNode* wanted)
{
    SoVRMLBindable::bindFirst(scene.root.get());
    SoSearchAction search;
    SoNode* bound =
        wanted ? wanted
               : SoVRMLBindable::getBound(scene.root.get(), SoVRMLViewpoint::getClassTypeId());
    if (bound)
        search.setNode(bound);
    else
        search.setType(SoVRMLViewpoint::getClassTypeId());
    search.setSearchingAll(true);
    search.apply(scene.root.get());
    if (!search.isFound())
        return nullptr;
    const auto* viewpoint = static_cast<SoVRMLViewpoint*>(search.getPath()->getTail());
    SoGetMatrixAction matrix{SbViewportRegion()};
    matrix.apply(search.getPath());
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position = viewpoint->getPosition(matrix.getMatrix());
    camera->orientation = viewpoint->getOrientation(matrix.getMatrix());
    camera->heightAngle = viewpoint->getHeightAngle(aspect);
    camera->nearDistance = 0.1f;
    camera->farDistance = 10000.0f;
    auto* light = new SoDirectionalLight;
    const auto* info = static_cast<const SoVRMLNavigationInfo*>(
        SoVRMLBindable::getBound(scene.root.get(), SoVRMLNavigationInfo::getClassTypeId()));
    light->on = !info || info->headlight.getValue();
    SbVec3f direction;
    camera->orientation.getValue().multVec(SbVec3f(0, 0, -1), direction);
    light->direction = direction;
    root->addChild(camera);
    root->addChild(light);
    root->addChild(scene.root.get());
    return root;
}

template <class Node>
SoRef<SoPath> pathToFirst(SoNode* root)
{
    SoSearchAction search;
    search.setType(Node::getClassTypeId());
    search.setInterest(SoSearchAction::FIRST);
    search.apply(root);
    return SoRef<SoPath>(search.getPath());
}

/// The distances in front of the camera between which there is something to see.
void setPlanes(SoCamera& camera, const SbMatrix& toWorld, const SbBox3f& box)
{
    SbMatrix toCamera, turn;
    toCamera.setTranslate(-camera.position.getValue());
    turn.setRotate(camera.orientation.getValue().inverse());
    SbBox3f seen = box;
    seen.transform(toWorld.inverse());
    seen.transform(toCamera);
    seen.transform(turn);
    const float slack = 0.01f * (seen.getMax()[2] - seen.getMin()[2]) + 1e-6f;
    const float farthest = slack - seen.getMin()[2], nearest = -seen.getMax()[2] - slack;
    if (seen.isEmpty() || !(farthest > 0) || !std::isfinite(farthest))
        return;
    constexpr float kNearestShare = 0.001f; // of the farthest: depth buffers have no more to give
    const bool isPerspective = camera.isOfType(SoPerspectiveCamera::getClassTypeId());
    camera.farDistance = farthest;
    camera.nearDistance = isPerspective ? std::max(nearest, farthest * kNearestShare) : nearest;
}

/// VRML 1.0 has no clipping planes, and its viewers light what they see. Null without a camera.
SoRef<SoNode> throughOwnCamera(const Scene& scene, const SbViewportRegion& region)
{
    const SoRef<SoPath> path = pathToFirst<SoCamera>(scene.root.get());
    if (!path)
        return nullptr;
    auto& camera = *static_cast<SoCamera*>(path->getTail());
    SoGetMatrixAction matrix(region);
    matrix.apply(path.get());
    if (camera.nearDistance.isDefault() && camera.farDistance.isDefault()) {
        SoGetBoundingBoxAction bounds(region);
        bounds.apply(scene.root.get());
        setPlanes(camera, matrix.getMatrix(), bounds.getBoundingBox());
    }
    const SoRef<SoSeparator> root(new SoSeparator);
    if (scene.format == SoInput::VRML1 || !pathToFirst<SoLight>(scene.root.get())) {
        auto* light = new SoDirectionalLight;
        const SbVec3f ahead = camera.orientation.getValue().rotated(SbVec3f(0, 0, -1));
        SbVec3f direction;
        matrix.getMatrix().multDirMatrix(ahead, direction);
        light->direction = direction;
        root->addChild(light);
    }
    root->addChild(scene.root.get());
    return root;
}

/// Takes all cameras out of the scene, so that one in front of it shows everything.
void removeCameras(SoNode* root)
{
    while (const SoRef<SoPath> path = pathToFirst<SoCamera>(root)) {
        SoNode* above = path->getLength() > 1 ? path->getNode(path->getLength() - 2) : nullptr;
        if (!above || !above->isOfType(SoGroup::getClassTypeId()))
            return; // a part of a node kit stays
        static_cast<SoGroup*>(above)->removeChild(path->getTail());
    }
}

/// Returns a copy of the path's camera that stands in world coordinates.
SoRef<SoCamera> inWorld(const SoPath& path)
{
    SoRef<SoCamera> camera(static_cast<SoCamera*>(path.getTail()->copy()));
    SoGetMatrixAction action{SbViewportRegion()};
    action.apply(const_cast<SoPath*>(&path));
    SbVec3f place, scale;
    SbRotation turn, scaleTurn;
    action.getMatrix().getTransform(place, turn, scale, scaleTurn);
    camera->position = action.getMatrix().point(camera->position.getValue());
    camera->orientation = camera->orientation.getValue() * turn;
    if (camera->isOfType(SoOrthographicCamera::getClassTypeId())) {
        auto& height = static_cast<SoOrthographicCamera*>(camera.get())->height;
        height = height.getValue() * std::cbrt(std::abs(scale[0] * scale[1] * scale[2]));
    }
    return camera;
}

SoRef<SoNode> throughNamed(const Scene& scene, const std::string& name,
                           const SbViewportRegion& region)
{
    SoSearchAction search;
    search.setName(SbName(name.c_str()));
    search.setSearchingAll(true);
    search.setInterest(SoSearchAction::ALL);
    search.apply(scene.root.get());
    for (const SoRef<SoPath>& found : search.getPaths()) {
        const SoPath& path = *found;
        if (path.getTail()->isOfType(SoVRMLViewpoint::getClassTypeId()))
            return throughViewpoint(scene, region.getViewportAspectRatio(), path.getTail());
        if (!path.getTail()->isOfType(SoCamera::getClassTypeId()))
            continue;
        const SoRef<SoCamera> camera = inWorld(path);
        removeCameras(scene.root.get());
        const SoRef<SoSeparator> root(new SoSeparator);
        root->addChild(camera.get());
        root->addChild(scene.root.get());
        Scene named = scene;
        named.root = root;
        return throughOwnCamera(named, region);
    }
    return nullptr;
}

/// Moves the first camera until all is in view.
void showAll(SoNode* seen, const SbViewportRegion& region)
{
    if (const SoRef<SoPath> path = pathToFirst<SoCamera>(seen))
        static_cast<SoCamera*>(path->getTail())->viewAll(path->getHead(), region);
}

} // namespace

SoRef<SoNode> seenByCamera(const Scene& scene, const std::string& cameraName, bool showsAll,
                           const SbViewportRegion& region)
{
    SoRef<SoNode> seen;
    if (!cameraName.empty()) {
        seen = throughNamed(scene, cameraName, region);
    } else {
        seen = throughViewpoint(scene, region.getViewportAspectRatio(), nullptr);
        if (!seen)
            seen = throughOwnCamera(scene, region);
        if (!seen)
            return scene.root; // the renderer's camera shows all
    }
    if (seen && showsAll)
        showAll(seen.get(), region);
    return seen;
}
