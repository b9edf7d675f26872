// Near and far planes.

#include <kalmyr/gui/SoGuiViewer.h>

#include "CameraTools.h"
#include "NearestDepth.h"

#include <kalmyr/nodes/SoSeparator.h>

#include <limits>

namespace {

/// A near plane at this share of the far distance costs no precision that could be seen: what is
/// nearer is looked for.
constexpr float kEasyShare = 0.001f;
constexpr float kNearestToFocal = 0.1f; // of the distance of what is looked at
constexpr float kNearSlack = 0.05f;     // of the distance of the nearest thing
constexpr float kPlaneSlack = 0.01f;    // of the scene's depth

} // namespace

void SoGuiViewer::setPlanes(float nearDistance, float farDistance)
{
    setIfDifferent(m_camera->nearDistance, nearDistance);
    setIfDifferent(m_camera->farDistance, farDistance);
}

bool SoGuiViewer::arePlanesAdjusted()
{
    return m_adjusted == Adjusted{m_root->getChangeId(), getSize()};
}

/// Returns the distance at which something is seen, or, where nothing is, `enough`.
float SoGuiViewer::nearestSeen(const SbMatrix& toEye, float enough)
{
    const SbViewVolume volume = m_camera->getViewVolume(cameraViewport());
    const float distance = volume.getNearDist();
    NearestDepth::View view;
    view.region = getSceneManager()->getViewportRegion();
    view.worldToEye = toEye;
    view.tangents = SbVec2f(volume.getWidth() / distance / 2, volume.getHeight() / distance / 2);
    view.enough = enough;
    view.asBoxes = getDrawStyle() == SoGLRenderAction::BOUNDING_BOX;
    const SoRef<SoNode> root(m_root.get()); // a callback in the scene may replace it
    const float nearest = m_nearestDepth->measure(root.get(), view);
    return nearest < std::numeric_limits<float>::max() ? nearest * (1 - kNearSlack) : enough;
}

void SoGuiViewer::adjustClippingPlanes()
{
    if (arePlanesAdjusted())
        return;
    SbBox3f box = sceneBox(m_scene.get(), getSceneManager()->getViewportRegion());
    if (box.isEmpty())
        return;
    // Into camera space, where distances count along -z.
    SbMatrix toWorld;
    toWorld.setTransform(m_camera->position.getValue(), m_camera->orientation.getValue(),
                         SbVec3f(1, 1, 1));
    const SbMatrix toEye = (toWorld * cameraSpace()).inverse();
    box.transform(toEye);
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
        if (nearDistance < farDistance * kEasyShare)
            nearDistance = nearestSeen(toEye, farDistance * kEasyShare);
        // The point of interest stays in view, even when the bounds are far too large.
        const float focal = clampedSize(m_camera->focalDistance.getValue());
        nearDistance =
            std::max(nearDistance, std::min(farDistance * m_nearShare, focal * kNearestToFocal));
    }
    const bool enclosed = m_camera->nearDistance.getValue() <= nearDistance
                          && m_camera->farDistance.getValue() >= farDistance;
    // A scene's own camera is changed only when it would cut something off.
    if (m_ownCamera || !enclosed)
        setPlanes(nearDistance, farDistance);
    m_adjusted = {m_root->getChangeId(), getSize()};
}
