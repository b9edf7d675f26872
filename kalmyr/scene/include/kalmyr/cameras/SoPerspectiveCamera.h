#pragma once

#include <kalmyr/cameras/SoCamera.h>

/// A camera with perspective: distant objects look smaller.
class KALMYR_API SoPerspectiveCamera : public SoCamera {
    SO_NODE_HEADER(SoPerspectiveCamera)

public:
    SoPerspectiveCamera();
    static void initClass();

    SoSFFloat heightAngle; ///< whole vertical angle, radians

    SbViewVolume getViewVolume(float aspect = 0.0f) const override;
    using SoCamera::getViewVolume;
    void scaleHeight(float factor) override;

protected:
    ~SoPerspectiveCamera() override;
    void viewSphere(const SbVec3f& center, float radius, float aspect) override;
};
