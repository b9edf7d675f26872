// Near and far planes.

#include <kalmyr/gui/SoGuiViewer.h>

#include "CameraTools.h"

#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoClippingPlanes.h>

void SoGuiViewer::setPlanes(float nearDistance, float farDistance)
{
    setIfDifferent(m_camera->nearDistance, nearDistance);
    setIfDifferent(m_camera->farDistance, farDistance);
}

bool SoGuiViewer::arePlanesAdjusted()
{
    return m_adjusted == Adjusted{m_root->getChangeId(), getSize()};
}

void SoGuiViewer::adjustClippingPlanes()
{
    if (arePlanesAdjusted())
        return;
    SoClippingPlanes::View view;
    view.region = getSceneManager()->getViewportRegion();
    view.cameraSpace = cameraSpace();
    view.nearShare = m_nearShare;
    view.showsBoxes = getDrawStyle() == SoGLRenderAction::BOUNDING_BOX;
    const SoRef<SoCamera> camera = m_camera; // a callback in the scene may replace it
    const auto planes = m_planes->fit(m_scene.get(), *camera, view);
    if (!planes)
        return;
    const bool enclosed = m_camera->nearDistance.getValue() <= planes->nearDistance
                          && m_camera->farDistance.getValue() >= planes->farDistance;
    // A scene's own camera is changed only when it would cut something off.
    if (m_ownCamera || !enclosed)
        setPlanes(planes->nearDistance, planes->farDistance);
    m_adjusted = {m_root->getChangeId(), getSize()};
}
