#include <kalmyr/draggers/SoPointLightDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoPointLightDragger)

SoPointLightDragger::SoPointLightDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoPlacedDragger);
    SO_ADD_FIELD(location, (0.0f, 0.0f, 1.0f));
    SO_KIT_MAKE_PARTS();
    const Part ball{"ball", SoDragHandle::MOVE_VIEW, kZ, kSun};
    addKnob(ball, BALL, SbVec3f(), kY, 0.25f);
    std::vector<Polyline> rays;
    for (int i = 0; i < 8; ++i)
        rays.push_back({boxCorner(i) * 0.2f, boxCorner(i) * 0.35f});
    addLines(ball, rays);
    addArrow({"xArrow", SoDragHandle::MOVE_LINE, kX, kRed}, CONE, kX);
    addArrow({"yArrow", SoDragHandle::MOVE_LINE, kY, kGreen}, CONE, kY);
    addArrow({"zArrow", SoDragHandle::MOVE_LINE, kZ, kBlue}, CONE, kZ);
}

SoPointLightDragger::~SoPointLightDragger() = default;

void SoPointLightDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoPointLightDragger, SoPlacedDragger, "PointLightDragger");
}
