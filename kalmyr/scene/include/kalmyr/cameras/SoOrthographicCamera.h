#pragma once

#include <kalmyr/cameras/SoCamera.h>

/// A camera with parallel rays: distance does not change size.
class KALMYR_API SoOrthographicCamera : public SoCamera {
    SO_NODE_HEADER(SoOrthographicCamera)

public:
    SoOrthographicCamera();
    static void initClass();

    SoSFFloat height; ///< of what is seen

    SbViewVolume getViewVolume(float aspect = 0.0f) const override;
    using SoCamera::getViewVolume;
    void scaleHeight(float factor) override;

protected:
    ~SoOrthographicCamera() override;
    void viewSphere(const SbVec3f& center, float radius, float aspect) override;
};
