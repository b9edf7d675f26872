#include <kalmyr/cameras/SoPerspectiveCamera.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr float kMinAngle = 1e-4f;
constexpr float kMaxAngle = 3.1f;

} // namespace

SO_NODE_SOURCE(SoPerspectiveCamera)

SoPerspectiveCamera::SoPerspectiveCamera()
{
    SO_NODE_CONSTRUCTOR(SoCamera);
    SO_ADD_FIELD(heightAngle, (0.785398f));
}

SoPerspectiveCamera::~SoPerspectiveCamera() = default;

void SoPerspectiveCamera::initClass()
{
    SO_NODE_INIT_CLASS(SoPerspectiveCamera, SoCamera, "PerspectiveCamera");
}

SbViewVolume SoPerspectiveCamera::getViewVolume(float aspect) const
{
    if (aspect <= 0)
        aspect = aspectRatio.getValue() > 0 ? aspectRatio.getValue() : 1.0f;
    // A frustum needs 0 < near < far, whatever the fields hold.
    const float far = std::max(farDistance.getValue(), 1e-6f);
    const float near = std::clamp(nearDistance.getValue(), far * 1e-5f, far * 0.9999f);
    SbViewVolume volume;
    volume.perspective(std::clamp(heightAngle.getValue(), kMinAngle, kMaxAngle), aspect, near, far);
    place(volume);
    return volume;
}

void SoPerspectiveCamera::scaleHeight(float factor)
{
    if (factor <= 0)
        return;
    const float angle = 2 * std::atan(std::tan(heightAngle.getValue() / 2) * factor);
    heightAngle.setValue(std::clamp(angle, kMinAngle, kMaxAngle));
}

void SoPerspectiveCamera::viewSphere(const SbVec3f& center, float radius, float aspect)
{
    float half = std::clamp(heightAngle.getValue(), kMinAngle, kMaxAngle) / 2;
    if (aspect < 1)
        half = std::atan(std::tan(half) * aspect);
    const SbVec3f direction = orientation.getValue().rotated(SbVec3f(0, 0, -1));
    position.setValue(center - direction * (radius / std::sin(half)));
}
