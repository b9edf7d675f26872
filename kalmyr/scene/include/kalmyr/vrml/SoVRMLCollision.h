#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/vrml/SoVRMLParent.h>

/// Children that a walking viewer bumps against. `proxy` stands for them there and is not shown.
class KALMYR_API SoVRMLCollision : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLCollision)

public:
    SoVRMLCollision();
    static void initClass();

    SoSFBool collide;
    SoSFNode proxy;
    SoSFTime collideTime; ///< event out

protected:
    ~SoVRMLCollision() override;
};
