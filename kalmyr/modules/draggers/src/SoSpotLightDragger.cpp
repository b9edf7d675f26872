#include <kalmyr/draggers/SoSpotLightDragger.h>

#include "HandleOutlines.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr const char* kRim = "rim";
constexpr float kWidest = std::numbers::pi_v<float> / 2;

} // namespace

SO_KIT_SOURCE(SoSpotLightDragger)

SoSpotLightDragger::SoSpotLightDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoPlacedDragger);
    SO_ADD_FIELD(location, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(direction, (0.0f, 0.0f, -1.0f));
    SO_ADD_FIELD(cutOffAngle, (std::numbers::pi_v<float> / 4));
    SO_KIT_MAKE_PARTS();
    addKnob({"ball", SoDragHandle::MOVE_VIEW, kZ, kSun}, BALL, SbVec3f(), kY, 0.2f);
    const Part arrow{"arrow", SoDragHandle::TURN_BALL, kZ, kSun};
    addLines(arrow, {{-kZ * 0.3f, -kZ * 1.2f}});
    addKnob(arrow, CONE, -kZ * 1.2f, -kZ, 0.12f);
    // The rim of the widest cone, made narrower by its space.
    const Part rim{kRim, SoDragHandle::OTHER, kZ, kBlue};
    addLines(rim, {circle(2, 1, -1)});
    std::vector<Polyline> sides;
    for (const SbVec3f& side : {kX, kY, -kX, -kY}) {
        sides.push_back({SbVec3f(), side - kZ});
        addKnob(rim, BALL, side - kZ, kY, 0.07f);
    }
    addLines({"sides", SoDragHandle::NONE, kZ, kBlue}, sides);
}

SoSpotLightDragger::~SoSpotLightDragger() = default;

void SoSpotLightDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoSpotLightDragger, SoPlacedDragger, "SpotLightDragger");
}

SbMatrix SoSpotLightDragger::getHandleSpace(const SoDragHandle& handle) const
{
    SbMatrix matrix;
    if (handle.part.getValue() == kRim || handle.part.getValue() == "sides") {
        const float angle = std::clamp(cutOffAngle.getValue(), 0.0f, kWidest);
        matrix.setScale({std::sin(angle), std::sin(angle), std::cos(angle)});
    }
    return matrix;
}

void SoSpotLightDragger::begin(const SoDragHandle& handle, const SoDragPointer& pointer)
{
    SoPlacedDragger::begin(handle, pointer);
    m_angle = cutOffAngle.getValue();
}

/// The rim follows on a ball about the light.
void SoSpotLightDragger::followOther(const SoDragHandle&, const SoDragPointer& pointer)
{
    constexpr float kNarrowest = 0.01f;
    constexpr float kStep = std::numbers::pi_v<float> / 36;
    SbVec3f to;
    if (!pointer.turnBall(placeBefore(), to))
        return;
    const SbVec3f axis = directionBefore();
    const auto angleTo = [&axis](const SbVec3f& arm) {
        return std::atan2(axis.cross(arm).length(), axis.dot(arm));
    };
    float angle = m_angle + angleTo(to - placeBefore()) - angleTo(pointer.hit - placeBefore());
    if (pointer.shift)
        angle = std::round(angle / kStep) * kStep;
    put(cutOffAngle, std::clamp(angle, kNarrowest, kWidest));
}
