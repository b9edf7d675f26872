#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

/// Sky and ground colours and panorama pictures behind the scene. The values are kept for viewers.
class KALMYR_API SoVRMLBackground : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLBackground)

public:
    SoVRMLBackground();
    static void initClass();

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

protected:
    ~SoVRMLBackground() override;
};
