#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Sky and ground colours and panorama pictures behind the scene. The values are kept for viewers.
class KALMYR_API SoVRMLBackground : public SoNode {
    SO_NODE_HEADER(SoVRMLBackground)

public:
    SoVRMLBackground();
    static void initClass();

    SoSFBool set_bind; ///< event in
    SoMFFloat groundAngle;
    SoMFColor groundColor;
    SoMFString backUrl;
    SoMFString bottomUrl;
    SoMFString frontUrl;
    SoMFString leftUrl;
    SoMFString rightUrl;
    SoMFString topUrl;
    SoMFFloat skyAngle;
    SoMFColor skyColor;
    SoSFBool isBound; ///< event out

protected:
    ~SoVRMLBackground() override;
};
