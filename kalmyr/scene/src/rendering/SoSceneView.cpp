#include <kalmyr/rendering/SoSceneView.h>

#include "rendering/FaceEdges.h"
#include "rendering/FrameBuilder.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoSceneCamera.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoClippingPlanes.h>
#include <kalmyr/rendering/SoRenderingInit.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>

#include <algorithm>

namespace kalmyr {

namespace {

SoEyeLight toLight(const detail::EyeLight& from)
{
    SoEyeLight light;
    light.kind = static_cast<SoLightRecord::Kind>(static_cast<int>(from.position[3] + 0.5f));
    light.position = SbVec3f(from.position);
    light.color = SbColor(from.color[0], from.color[1], from.color[2]);
    light.ambient = from.color[3];
    light.direction = SbVec3f(from.direction);
    light.reach = light.direction.length();
    if (light.reach > 0)
        light.direction /= light.reach;
    light.cosCutOff = from.direction[3];
    light.falloff = SbVec3f(from.attenuation);
    light.spotExponent = std::max(from.attenuation[3], 0.0f);
    light.beamWidth = from.attenuation[3] < 0 ? -1 - from.attenuation[3] : -1;
    return light;
}

SoSceneView toView(const detail::Frame& frame)
{
    SoSceneView view;
    for (const detail::RenderView& camera : frame.views)
        view.cameras.push_back({camera.view, camera.region});
    for (const detail::EyeSurroundings& around : frame.surroundings) {
        SoSceneView::Surroundings& to = view.surroundings.emplace_back();
        to.clipPlanes = around.clipPlanes;
        for (const detail::EyeLight& light : around.lights)
            to.lights.push_back(toLight(light));
    }
    view.items.reserve(frame.items.size());
    for (const detail::FrameItem& item : frame.items) {
        const detail::RenderList::Entry& entry = *item.entry;
        view.items.push_back({entry.geometry, entry.appearance, SbMatrix(item.toEye.m),
                              item.surroundings, item.view, item.layer, entry.transparent,
                              item.mirrored, entry.node});
    }
    view.fog = frame.fog;
    if (frame.hasBackground) {
        view.zenith = frame.background.up;
        for (const detail::BackgroundStop& stop : frame.background.stops)
            view.background.push_back({stop.color, stop.angle});
    }
    return view;
}

/// Whether the navigation info that counts, the bound or else the first one, asks for no light
/// from the eye.
bool forbidsHeadlight(SoNode* scene)
{
    const SoType type = SoVRMLNavigationInfo::getClassTypeId();
    if (type.isBad())
        return false;
    const SoNode* info = SoVRMLBindable::getBound(scene, type);
    SoSearchAction search;
    if (!info) {
        search.setType(type);
        search.setInterest(SoSearchAction::FIRST);
        search.apply(scene);
        info = search.getPath() ? search.getPath()->getTail() : nullptr;
    }
    return info && !static_cast<const SoVRMLNavigationInfo*>(info)->headlight.getValue();
}

template <class Scene>
SoSceneView viewAny(SoGLRenderAction& action, Scene* scene)
{
    initRendering();
    if (!scene)
        return {};
    action.SoAction::apply(scene);
    const detail::RenderList* list = action.traversal().getList();
    if (!list)
        return {};
    detail::Frame frame;
    detail::buildFrame(*list, action.traversal().getViews(), frame);
    return toView(frame);
}

} // namespace

SoSceneView viewScene(SoGLRenderAction& action, SoNode* root)
{
    return viewAny(action, root);
}

SoSceneView viewScene(SoGLRenderAction& action, SoPath* path)
{
    const SoRef<SoPath> held(path); // a path made for the call dies with it
    return viewAny(action, path);
}

SoRef<SoNode> throughCamera(SoNode* scene, const SoSceneCamera& found,
                            const SbViewportRegion& region, bool hasLight, bool showsAll)
{
    const SoRef<SoNode> held(scene);
    SoRef<SoCamera> camera(found.getCameraInForce());
    SoClippingPlanes::View view;
    view.region = region;
    const SoRef<SoSeparator> root(new SoSeparator);
    if (camera) {
        SoGetMatrixAction space(region);
        space.apply(found.getPath());
        view.cameraSpace = space.getMatrix();
    } else {
        camera = found.makeCamera(region.getViewportAspectRatio());
        showsAll |= !camera;
        if (!camera)
            camera = new SoPerspectiveCamera;
        camera->setOverride(true);
        root->addChild(camera.get());
    }
    if (showsAll)
        camera->viewAll(scene, region);
    if (const auto planes = SoClippingPlanes().fit(scene, *camera, view)) {
        camera->nearDistance = planes->nearDistance;
        camera->farDistance = planes->farDistance;
    }
    if (hasLight && !forbidsHeadlight(scene)) {
        auto* light = new SoDirectionalLight;
        const SbVec3f ahead = camera->orientation.getValue().rotated(SbVec3f(0, 0, -1));
        light->direction = view.cameraSpace.direction(ahead).normalized();
        root->addChild(light);
    }
    root->addChild(scene);
    return root;
}

SoRef<SoNode> withDefaultCamera(SoNode* scene, const SbViewportRegion& region)
{
    SoSearchAction search;
    search.setType(SoCamera::getClassTypeId());
    search.setInterest(SoSearchAction::FIRST);
    search.apply(scene);
    return search.getPath() ? SoRef<SoNode>(scene)
                            : throughCamera(scene, SoSceneCamera::find(scene), region, true);
}

std::vector<std::uint32_t> getFaceEdges(const SoGeometry& geometry, bool asPolylines)
{
    return asPolylines ? detail::chainedEdges(geometry) : detail::faceEdges(geometry);
}

SceneOutline getOutline(const SoGeometry& geometry)
{
    detail::OutlineEdges edges = detail::outlineEdges(geometry);
    return {std::move(edges.sharp), std::move(edges.smooth)};
}

} // namespace kalmyr
