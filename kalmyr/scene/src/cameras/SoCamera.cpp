#include <kalmyr/cameras/SoCamera.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SbSphere.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include <algorithm>

namespace {

constexpr SoEnumEntry kMappings[] = {
    {"CROP_VIEWPORT_FILL_FRAME", SoCamera::CROP_VIEWPORT_FILL_FRAME},
    {"CROP_VIEWPORT_LINE_FRAME", SoCamera::CROP_VIEWPORT_LINE_FRAME},
    {"CROP_VIEWPORT_NO_FRAME", SoCamera::CROP_VIEWPORT_NO_FRAME},
    {"ADJUST_CAMERA", SoCamera::ADJUST_CAMERA},
    {"LEAVE_ALONE", SoCamera::LEAVE_ALONE},
};

/// The space of `camera` seen from that of `root`; the identity when it does not stand below.
SbMatrix rootToCamera(SoNode* root, SoCamera* camera, const SbViewportRegion& region)
{
    SoSearchAction search;
    search.setNode(camera);
    search.apply(root);
    if (!search.isFound())
        return SbMatrix::identity();
    SoGetMatrixAction matrix(region);
    matrix.apply(search.getPath());
    return matrix.getInverse();
}

} // namespace

SO_NODE_SOURCE(SoCamera)

SoCamera::SoCamera()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(viewportMapping, (ADJUST_CAMERA));
    SO_ADD_FIELD(position, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(orientation, (SbRotation()));
    SO_ADD_FIELD(aspectRatio, (1.0f));
    SO_ADD_FIELD(nearDistance, (1.0f));
    SO_ADD_FIELD(farDistance, (10.0f));
    SO_ADD_FIELD(focalDistance, (5.0f));
    viewportMapping.setEnums(kMappings);
}

SoCamera::~SoCamera() = default;

void SoCamera::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoCamera, SoNode, "Camera");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
}

void SoCamera::pointAt(const SbVec3f& target)
{
    pointAt(target, SbVec3f(0, 1, 0));
}

void SoCamera::pointAt(const SbVec3f& target, const SbVec3f& up)
{
    SbVec3f back = position.getValue() - target;
    if (back.normalize() == 0)
        return;
    SbVec3f right = up.cross(back);
    // Looking along the up direction: any direction square to it will do.
    if (right.normalize() < 1e-6f) {
        right = (std::abs(back[0]) < 0.9f ? SbVec3f(1, 0, 0) : SbVec3f(0, 0, 1)).cross(back);
        right.normalize();
    }
    const SbVec3f top = back.cross(right);
    orientation.setValue(SbRotation(SbMatrix(right[0], right[1], right[2], 0, top[0], top[1],
                                             top[2], 0, back[0], back[1], back[2], 0, 0, 0, 0, 1)));
}

void SoCamera::viewAll(SoNode* root, const SbViewportRegion& region, float slack)
{
    if (!root)
        return;
    SoGetBoundingBoxAction measure(region);
    measure.apply(root);
    SbBox3f box = measure.getBoundingBox();
    box.transform(rootToCamera(root, this, region));
    viewBox(box, region.getViewportAspectRatio(), slack);
}

void SoCamera::viewAll(SoPath* path, const SbViewportRegion& region, float slack)
{
    if (!path || path->isEmpty())
        return;
    SoGetBoundingBoxAction measure(region);
    measure.apply(path);
    SbBox3f box = measure.getBoundingBox();
    box.transform(rootToCamera(path->getHead(), this, region));
    viewBox(box, region.getViewportAspectRatio(), slack);
}

void SoCamera::viewBox(const SbBox3f& box, float aspect, float slack)
{
    if (box.isEmpty())
        return;
    SbSphere ball;
    ball.circumscribe(box);
    const float size = ball.getRadius() > 0 ? ball.getRadius() : 1.0f; // a single point has none
    const float radius = size * std::max(slack, 1e-3f);
    if (viewportMapping.getValue() != ADJUST_CAMERA)
        aspect = aspectRatio.getValue();
    viewSphere(ball.getCenter(), radius, aspect > 0 ? aspect : 1.0f);
    const float distance = (ball.getCenter() - position.getValue()).length();
    focalDistance.setValue(distance);
    // The slack must not widen the depth range; a little room keeps the planes off the objects.
    const float reach = size * 1.01f;
    nearDistance.setValue(std::max(distance - reach, distance * 1e-3f));
    farDistance.setValue(distance + reach);
}

void SoCamera::place(SbViewVolume& volume) const
{
    volume.rotateCamera(orientation.getValue());
    volume.translateCamera(position.getValue());
}

SbViewVolume SoCamera::getViewVolume(const SbViewportRegion& region) const
{
    const bool adjust = viewportMapping.getValue() == ADJUST_CAMERA;
    return getViewVolume(adjust ? region.getViewportAspectRatio() : 0.0f);
}

SbViewportRegion SoCamera::getViewport(const SbViewportRegion& region) const
{
    SbViewportRegion cropped = region;
    const int mapping = viewportMapping.getValue();
    const float own = aspectRatio.getValue();
    const float available = region.getViewportAspectRatio();
    if (mapping == ADJUST_CAMERA || mapping == LEAVE_ALONE || own <= 0 || available <= 0)
        return cropped;
    if (own < available)
        cropped.scaleViewport(own / available, 1);
    else
        cropped.scaleViewport(1, available / own);
    return cropped;
}

void SoCamera::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::VIEW))
        return;
    const SbViewportRegion region = SoViewportRegionElement::get(state);
    SoView view;
    view.valid = true;
    view.volume = getViewVolume(region);
    view.volume.transform(SoModelMatrixElement::get(state));
    view.volume.getMatrices(view.viewing, view.projection);
    view.focalDistance = focalDistance.getValue();
    auto& element = state->write<SoViewElement>();
    element.set(this, view);
    element.mixValueId(state->get<SoModelMatrixElement>().getValueId());
    element.mixValueId(state->get<SoViewportRegionElement>().getValueId());
    const SbViewportRegion cropped = getViewport(region);
    if (!(cropped == region))
        state->write<SoViewportRegionElement>().set(this, cropped);
}
