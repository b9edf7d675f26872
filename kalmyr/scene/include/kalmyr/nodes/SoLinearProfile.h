#pragma once

#include <kalmyr/nodes/SoProfile.h>

/// A profile of straight lines between its points.
class KALMYR_API SoLinearProfile : public SoProfile {
    SO_NODE_HEADER(SoLinearProfile)

public:
    SoLinearProfile();
    static void initClass();

protected:
    ~SoLinearProfile() override;

    std::string makeLine(const std::vector<SbVec3d>& points, float complexity,
                         std::vector<SbVec2d>& line) const override;
};
