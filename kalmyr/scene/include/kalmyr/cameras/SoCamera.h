#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

class SoPath;

/// Base of cameras. The camera looks along -z with y up, turned by `orientation`, in the space in
/// which it stands. What follows it is seen through it, up to the next camera; behind one with its
/// override flag set other cameras have no effect.
class KALMYR_API SoCamera : public SoNode {
    SO_NODE_HEADER(SoCamera)

public:
    enum ViewportMapping {
        CROP_VIEWPORT_FILL_FRAME =
            0, ///< smaller viewport of the camera's aspect ratio, frame filled
        CROP_VIEWPORT_LINE_FRAME = 1, ///< the same, frame as a line
        CROP_VIEWPORT_NO_FRAME = 2,   ///< the same, no frame
        ADJUST_CAMERA = 3,            ///< the camera takes the viewport's aspect ratio
        LEAVE_ALONE = 4               ///< the picture is stretched
    };

    static void initClass();

    SoSFEnum viewportMapping;
    SoSFVec3f position;
    SoSFRotation orientation;
    SoSFFloat aspectRatio; ///< width by height; used unless the mapping is ADJUST_CAMERA
    SoSFFloat nearDistance;
    SoSFFloat farDistance;
    SoSFFloat focalDistance; ///< to the point of interest

    /// Turns the camera to look at a point of the space it stands in; up stays as near to y as it
    /// can, or to `up`.
    void pointAt(const SbVec3f& target);
    void pointAt(const SbVec3f& target, const SbVec3f& up);

    /// Moves the camera along its direction so that everything below `root` (or the path's tail)
    /// is in view and sets the distances around it. `slack` 1 fits tightly, 2 leaves as much again.
    /// An empty scene changes nothing. The camera should be among the first nodes of the root.
    void viewAll(SoNode* root, const SbViewportRegion& region, float slack = 1.0f);
    void viewAll(SoPath* path, const SbViewportRegion& region, float slack = 1.0f);
    /// The same for a box in the camera's space.
    void viewBox(const SbBox3f& box, float aspect, float slack = 1.0f);

    /// In the space the camera stands in. `aspect` 0 takes the field's.
    virtual SbViewVolume getViewVolume(float aspect = 0.0f) const = 0;
    /// Returns the view volume of a viewport, with its aspect ratio under ADJUST_CAMERA.
    SbViewVolume getViewVolume(const SbViewportRegion& region) const;
    /// The part of the region that the mapping leaves to the camera.
    SbViewportRegion getViewport(const SbViewportRegion& region) const;
    /// Multiplies the height of what is seen.
    virtual void scaleHeight(float factor) = 0;

    /// Sets the view of the state.
    void doAction(SoAction* action) override;

protected:
    SoCamera();
    ~SoCamera() override;

    /// Moves the camera to see a ball of the radius about the centre; distances are set after it.
    virtual void viewSphere(const SbVec3f& center, float radius, float aspect) = 0;
    /// Direction of view and place, as the concrete camera's untransformed volume needs them.
    void place(SbViewVolume& volume) const;
};
