#pragma once

#include <kalmyr/shapes/SoShape.h>

/// Base of what may stand in the geometry field of a shape.
class KALMYR_API SoVRMLGeometry : public SoShape {
    SO_NODE_HEADER(SoVRMLGeometry)

public:
    static void initClass();

    /// False for lines and points, which show their colour as it is.
    virtual bool isLit() const { return true; }

protected:
    ~SoVRMLGeometry() override;
    SoVRMLGeometry();
};
