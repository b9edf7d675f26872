#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/vrml/SoVRMLParent.h>

/// Children in a space of their own: scaled, turned about `center`, then moved.
class KALMYR_API SoVRMLTransform : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLTransform)

public:
    SoVRMLTransform();
    static void initClass();

    SoSFVec3f center;
    SoSFRotation rotation;
    SoSFVec3f scale;
    SoSFRotation scaleOrientation;
    SoSFVec3f translation;

    /// From the space of the children to that of the node.
    SbMatrix getLocalMatrix() const;

protected:
    ~SoVRMLTransform() override;

    void setState(SoState* state) override;
};
