#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <cstddef>
#include <vector>

namespace support {

/// A shape of a frame.
struct DrawnItem {
    const SoNode* node = nullptr;
    SoRef<SoGeometry> geometry;
    SoRef<const SoRenderAppearance> appearance;
    SbMatrix toWorld;
    std::vector<SoEyeLight> lights;
    std::size_t numClipPlanes = 0;
};

/// The shapes of a frame of `action`, without those out of view.
inline std::vector<DrawnItem> drawnItems(SoGLRenderAction& action, SoNode* scene)
{
    const SoSceneView view = kalmyr::viewScene(action, scene);
    std::vector<DrawnItem> items;
    for (const SoSceneView::Item& item : view.items) {
        const SoSceneView::Surroundings& around = view.surroundings[item.surroundings];
        items.push_back({item.node, item.geometry, item.appearance,
                         item.toEye * view.cameras[item.camera].view.viewing.inverse(),
                         around.lights, around.clipPlanes.size()});
    }
    return items;
}

/// A camera that sees everything near the origin.
inline SoOrthographicCamera* wideCamera()
{
    auto* camera = new SoOrthographicCamera;
    camera->position = SbVec3f(0, 0, 1000);
    camera->nearDistance = 1;
    camera->farDistance = 2000;
    camera->height = 2000;
    return camera;
}

} // namespace support
