#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <memory>
#include <optional>

class SoCamera;
class SoNode;

namespace kalmyr::detail {
class NearestDepth;
}

/// Finds near and far planes that fit what a camera sees of a scene.
///
/// The far plane stands behind the scene. The near plane stands before the scene or, where the eye
/// is within its bounds, before the nearest thing that is in view. An object that is used again
/// remembers the geometries that it met.
class KALMYR_API SoClippingPlanes {
public:
    struct Planes {
        float nearDistance;
        float farDistance;
    };
    struct View {
        SbViewportRegion region;
        /// From the space that the camera stands in to that of the scene.
        SbMatrix cameraSpace = SbMatrix::identity();
        /// Nothing is seen that is nearer than this share of the far distance, but for what is
        /// looked at.
        float nearShare = 1e-5f;
        bool showsBoxes = false; ///< shapes are drawn as their bounding boxes
    };

    SoClippingPlanes();
    ~SoClippingPlanes();
    SoClippingPlanes(const SoClippingPlanes&) = delete;
    SoClippingPlanes& operator=(const SoClippingPlanes&) = delete;

    /// Nothing for a scene that is empty, or, under perspective, behind the eye.
    std::optional<Planes> fit(SoNode* scene, const SoCamera& camera, const View& view);

private:
    std::unique_ptr<kalmyr::detail::NearestDepth> m_nearestDepth;
};
