#include <kalmyr/draggers/SoDirectionalLightDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoDirectionalLightDragger)

SoDirectionalLightDragger::SoDirectionalLightDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoPlacedDragger);
    SO_ADD_FIELD(direction, (0.0f, 0.0f, -1.0f));
    SO_ADD_FIELD(location, (0.0f, 0.0f, 0.0f));
    SO_KIT_MAKE_PARTS();
    addKnob({"ball", SoDragHandle::MOVE_VIEW, kZ, kSun}, BALL, SbVec3f(), kY, 0.2f);
    const Part arrow{"arrow", SoDragHandle::TURN_BALL, kZ, kSun};
    addLines(arrow, {{-kZ * 0.3f, -kZ}});
    std::vector<Polyline> rays;
    for (const SbVec3f& side : {kX, kY, -kX, -kY})
        rays.push_back({side * 0.25f, side * 0.25f - kZ * 0.7f});
    addLines({"rays", SoDragHandle::NONE, kZ, kSun}, rays);
    addKnob(arrow, CONE, -kZ, -kZ, 0.12f);
}

SoDirectionalLightDragger::~SoDirectionalLightDragger() = default;

void SoDirectionalLightDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoDirectionalLightDragger, SoPlacedDragger, "DirectionalLightDragger");
}
