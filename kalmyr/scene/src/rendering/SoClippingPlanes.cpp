#include <kalmyr/rendering/SoClippingPlanes.h>

#include "rendering/NearestDepth.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>

#include <algorithm>
#include <cmath>
#include <limits>

using kalmyr::detail::NearestDepth;

namespace {

/// A near plane at this share of the far distance costs no precision that could be seen: what is
/// nearer is looked for.
constexpr float kEasyShare = 0.001f;
constexpr float kNearestToFocal = 0.1f; // of the distance of what is looked at
constexpr float kNearSlack = 0.05f;     // of the distance of the nearest thing
constexpr float kPlaneSlack = 0.01f;    // of the scene's depth

SbBox3f boxOf(SoNode* scene, const SbViewportRegion& region)
{
    SoGetBoundingBoxAction action(region);
    action.apply(scene);
    return action.getBoundingBox();
}

/// Returns the distance at which something is seen, or, where nothing is, `enough`.
float nearestSeen(NearestDepth& measure, SoNode* scene, const SoCamera& camera,
                  const SoClippingPlanes::View& view, const SbMatrix& toEye, float enough)
{
    const SbViewVolume volume = camera.getViewVolume(camera.getViewport(view.region));
    const float distance = volume.getNearDist();
    NearestDepth::View asked;
    asked.region = view.region;
    asked.worldToEye = toEye;
    asked.tangents = SbVec2f(volume.getWidth() / distance / 2, volume.getHeight() / distance / 2);
    asked.enough = enough;
    asked.asBoxes = view.showsBoxes;
    const float nearest = measure.measure(scene, asked);
    return nearest < std::numeric_limits<float>::max() ? nearest * (1 - kNearSlack) : enough;
}

} // namespace

SoClippingPlanes::SoClippingPlanes() : m_nearestDepth(std::make_unique<NearestDepth>()) {}
SoClippingPlanes::~SoClippingPlanes() = default;

std::optional<SoClippingPlanes::Planes> SoClippingPlanes::fit(SoNode* scene, const SoCamera& camera,
                                                              const View& view)
{
    const SoRef<SoNode> held(scene); // callbacks in the scene may let go of it
    SbBox3f box = scene ? boxOf(scene, view.region) : SbBox3f();
    if (box.isEmpty())
        return std::nullopt;
    // Into camera space, where distances count along -z.
    SbMatrix toWorld;
    toWorld.setTransform(camera.position.getValue(), camera.orientation.getValue(),
                         SbVec3f(1, 1, 1));
    const SbMatrix toEye = (toWorld * view.cameraSpace).inverse();
    box.transform(toEye);
    float nearDistance = -box.getMax()[2];
    float farDistance = -box.getMin()[2];
    const float slack = std::max(
        {(farDistance - nearDistance) * kPlaneSlack, std::abs(farDistance) * 1e-4f, 1e-6f});
    nearDistance -= slack;
    farDistance += slack;
    if (!std::isfinite(nearDistance) || !std::isfinite(farDistance))
        return std::nullopt;
    if (!camera.isOfType(SoPerspectiveCamera::getClassTypeId()))
        return Planes{nearDistance, farDistance};
    if (farDistance <= 0)
        return std::nullopt;
    if (nearDistance < farDistance * kEasyShare)
        nearDistance =
            nearestSeen(*m_nearestDepth, scene, camera, view, toEye, farDistance * kEasyShare);
    // What is looked at stays in view, even when the bounds are far too large.
    const float focal = std::abs(camera.focalDistance.getValue());
    nearDistance =
        std::max(nearDistance, std::min(farDistance * view.nearShare,
                                        std::isfinite(focal) && focal > 0 ? focal * kNearestToFocal
                                                                          : farDistance));
    return Planes{nearDistance, farDistance};
}
