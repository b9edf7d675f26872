#pragma once

#include <kalmyr/vrml/SoVRMLParent.h>

/// Children that turn about an axis to face the viewer. Without a camera they stand as they are.
class KALMYR_API SoVRMLBillboard : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLBillboard)

public:
    SoVRMLBillboard();
    static void initClass();

    SoSFVec3f axisOfRotation; ///< zero: the children face the viewer whole

protected:
    ~SoVRMLBillboard() override;

    void setState(SoState* state) override;
};
