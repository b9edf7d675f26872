#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

/// A place to look from. It sets no camera by itself: a viewer takes the one that is bound,
/// and sets up a camera of its own from these values.
class KALMYR_API SoVRMLViewpoint : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLViewpoint)

public:
    SoVRMLViewpoint();
    static void initClass();

    SoSFFloat fieldOfView; ///< radians, of the smaller side of the view
    SoSFBool jump;
    SoSFRotation orientation;
    SoSFVec3f position;
    SoSFString description;
    SoSFTime bindTime; ///< event out

    /// Place and direction in the world, for a viewpoint that stands below `toWorld`.
    SbVec3f getPosition(const SbMatrix& toWorld) const;
    SbRotation getOrientation(const SbMatrix& toWorld) const;
    /// Angle of the height of a view of that aspect ratio (width by height), radians.
    float getHeightAngle(float aspect) const;

protected:
    ~SoVRMLViewpoint() override;
    void boundChanged(SbTime now) override;
};
