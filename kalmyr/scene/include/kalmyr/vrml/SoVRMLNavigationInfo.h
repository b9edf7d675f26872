#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// How a viewer is meant to move. The values are kept for viewers.
class KALMYR_API SoVRMLNavigationInfo : public SoNode {
    SO_NODE_HEADER(SoVRMLNavigationInfo)

public:
    SoVRMLNavigationInfo();
    static void initClass();

    SoSFBool set_bind; ///< event in
    SoMFFloat avatarSize;
    SoSFBool headlight;
    SoSFFloat speed;
    SoMFString type;
    SoSFFloat visibilityLimit;
    SoSFBool isBound; ///< event out

protected:
    ~SoVRMLNavigationInfo() override;
};
