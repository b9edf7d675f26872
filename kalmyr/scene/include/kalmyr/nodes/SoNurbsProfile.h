#pragma once

#include <kalmyr/nodes/SoProfile.h>

/// A profile along a NURBS curve; its order is the number of knots less the number of points.
class KALMYR_API SoNurbsProfile : public SoProfile {
    SO_NODE_HEADER(SoNurbsProfile)

public:
    SoNurbsProfile();
    static void initClass();

    SoMFFloat knotVector;

protected:
    ~SoNurbsProfile() override;

    std::string makeLine(const std::vector<SbVec3d>& points, float complexity,
                         std::vector<SbVec2d>& line) const override;
};
