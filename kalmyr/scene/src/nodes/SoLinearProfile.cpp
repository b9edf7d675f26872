#include <kalmyr/nodes/SoLinearProfile.h>

SO_NODE_SOURCE(SoLinearProfile)

SoLinearProfile::SoLinearProfile()
{
    SO_NODE_CONSTRUCTOR(SoProfile);
}

SoLinearProfile::~SoLinearProfile() = default;

void SoLinearProfile::initClass()
{
    SO_NODE_INIT_CLASS(SoLinearProfile, SoProfile, "LinearProfile");
}

std::string SoLinearProfile::makeLine(const std::vector<SbVec3d>& points, float,
                                      std::vector<SbVec2d>& line) const
{
    for (const SbVec3d& p : points)
        line.emplace_back(p[0] / p[2], p[1] / p[2]);
    return {};
}
