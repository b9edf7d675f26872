#include <kalmyr/nodes/SoRotationXYZ.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

namespace {

constexpr SoEnumEntry kAxes[] = {
    {"X", SoRotationXYZ::X},
    {"Y", SoRotationXYZ::Y},
    {"Z", SoRotationXYZ::Z},
};

} // namespace

SO_NODE_SOURCE(SoRotationXYZ)

SoRotationXYZ::SoRotationXYZ()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(axis, (X));
    axis.setEnums(kAxes);
    SO_ADD_FIELD(angle, (0.0f));
}

SoRotationXYZ::~SoRotationXYZ() = default;

void SoRotationXYZ::initClass()
{
    SO_NODE_INIT_CLASS(SoRotationXYZ, SoTransformation, "RotationXYZ");
}

void SoRotationXYZ::doAction(SoAction* action)
{
    SoModelMatrixElement::mult(action->getState(), this, getLocalMatrix());
}

SbMatrix SoRotationXYZ::getLocalMatrix() const
{
    SbMatrix matrix;
    if (!angle.isIgnored())
        matrix.setRotate(getRotation());
    return matrix;
}

SbRotation SoRotationXYZ::getRotation() const
{
    SbVec3f direction;
    const int i = axis.getValue();
    direction[i >= X && i <= Z ? i : X] = 1;
    return SbRotation(direction, angle.getValue());
}
