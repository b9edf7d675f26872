#include <kalmyr/vrml/SoVRMLBillboard.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include <cmath>

namespace {

constexpr float kTiny = 1e-12f;

/// The rotation about a unit axis that turns z as far towards the eye as it can.
SbRotation aboutAxis(const SbVec3f& axis, const SbVec3f& eye)
{
    const SbVec3f front = SbVec3f(0, 0, 1) - axis * axis[2];
    const SbVec3f wanted = eye - axis * axis.dot(eye);
    if (front.sqrLength() < kTiny || wanted.sqrLength() < kTiny)
        return SbRotation();
    return SbRotation(axis, std::atan2(front.cross(wanted).dot(axis), front.dot(wanted)));
}

/// Faces the eye, and stands upright in the picture.
SbRotation towardsEye(const SbVec3f& eye, const SbVec3f& up)
{
    SbVec3f z = eye;
    SbVec3f x = up.cross(z);
    if (z.normalize() == 0 || x.normalize() == 0)
        return SbRotation();
    const SbVec3f y = z.cross(x);
    SbMatrix axes;
    for (int i = 0; i < 3; ++i) {
        axes[0][i] = x[i];
        axes[1][i] = y[i];
        axes[2][i] = z[i];
    }
    return SbRotation(axes);
}

} // namespace

SO_NODE_SOURCE(SoVRMLBillboard)

SoVRMLBillboard::SoVRMLBillboard()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED(axisOfRotation, (0.0f, 1.0f, 0.0f));
}

SoVRMLBillboard::~SoVRMLBillboard() = default;

void SoVRMLBillboard::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLBillboard, SoVRMLParent, "VRMLBillboard");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* measuring = static_cast<SoGetBoundingBoxAction*>(action);
        measuring->doNotCache();
        static_cast<SoVRMLParent*>(node)->measure(measuring);
    });
}

void SoVRMLBillboard::setState(SoState* state)
{
    const SoView& view = SoViewElement::get(state);
    if (!view.valid)
        return;
    bool invertible = false;
    const SbMatrix toLocal = SoModelMatrixElement::get(state).inverse(&invertible);
    if (!invertible)
        return;
    const SbVec3f eye = toLocal.point(view.volume.getProjectionPoint());
    SbVec3f axis = axisOfRotation.getValue();
    const SbVec3f up = toLocal.direction(view.volume.getViewUp());
    const SbRotation turn = axis.normalize() == 0 ? towardsEye(eye, up) : aboutAxis(axis, eye);
    SbMatrix matrix;
    matrix.setRotate(turn);
    SoModelMatrixElement::mult(state, this, matrix);
}
