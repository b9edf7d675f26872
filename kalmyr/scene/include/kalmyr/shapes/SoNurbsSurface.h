#pragma once

#include <kalmyr/shapes/SoNurbsSurfaceShape.h>

/// A NURBS surface whose control points are the first coordinates of the state.
class KALMYR_API SoNurbsSurface : public SoNurbsSurfaceShape {
    SO_NODE_HEADER(SoNurbsSurface)

public:
    SoNurbsSurface();
    static void initClass();

protected:
    ~SoNurbsSurface() override;
};
