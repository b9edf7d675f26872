#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

/// How a viewer is meant to move. The values are kept for viewers.
class KALMYR_API SoVRMLNavigationInfo : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLNavigationInfo)

public:
    SoVRMLNavigationInfo();
    static void initClass();

    SoMFFloat avatarSize;
    SoSFBool headlight;
    SoSFFloat speed;
    SoMFString type;
    SoSFFloat visibilityLimit;

protected:
    ~SoVRMLNavigationInfo() override;
};
