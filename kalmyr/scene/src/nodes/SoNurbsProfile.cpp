#include <kalmyr/nodes/SoNurbsProfile.h>

#include "shapes/NurbsBuilder.h"

SO_NODE_SOURCE(SoNurbsProfile)

SoNurbsProfile::SoNurbsProfile()
{
    SO_NODE_CONSTRUCTOR(SoProfile);
    SO_ADD_EMPTY_FIELD(knotVector);
}

SoNurbsProfile::~SoNurbsProfile() = default;

void SoNurbsProfile::initClass()
{
    SO_NODE_INIT_CLASS(SoNurbsProfile, SoProfile, "NurbsProfile");
}

std::string SoNurbsProfile::makeLine(const std::vector<SbVec3d>& points, float complexity,
                                     std::vector<SbVec2d>& line) const
{
    kalmyr::detail::NurbsCurve curve;
    for (const SbVec3d& p : points)
        curve.points.emplace_back(p[0], p[1], 0.0, p[2]);
    return kalmyr::detail::makeProfileLine(std::move(curve), knotVector.values(), complexity, line);
}
