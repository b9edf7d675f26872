#include <kalmyr/cameras/SoOrthographicCamera.h>

#include <algorithm>

SO_NODE_SOURCE(SoOrthographicCamera)

SoOrthographicCamera::SoOrthographicCamera()
{
    SO_NODE_CONSTRUCTOR(SoCamera);
    SO_ADD_FIELD(height, (2.0f));
}

SoOrthographicCamera::~SoOrthographicCamera() = default;

void SoOrthographicCamera::initClass()
{
    SO_NODE_INIT_CLASS(SoOrthographicCamera, SoCamera, "OrthographicCamera");
}

SbViewVolume SoOrthographicCamera::getViewVolume(float aspect) const
{
    if (aspect <= 0)
        aspect = aspectRatio.getValue() > 0 ? aspectRatio.getValue() : 1.0f;
    const float half = std::max(height.getValue(), 1e-6f) / 2;
    const float near = nearDistance.getValue();
    const float far = std::max(farDistance.getValue(), near + 1e-6f);
    SbViewVolume volume;
    volume.ortho(-half * aspect, half * aspect, -half, half, near, far);
    place(volume);
    return volume;
}

void SoOrthographicCamera::scaleHeight(float factor)
{
    if (factor > 0)
        height.setValue(height.getValue() * factor);
}

void SoOrthographicCamera::viewSphere(const SbVec3f& center, float radius, float aspect)
{
    height.setValue(2 * radius / std::min(aspect, 1.0f));
    const SbVec3f direction = orientation.getValue().rotated(SbVec3f(0, 0, -1));
    position.setValue(center - direction * (2 * radius));
}
