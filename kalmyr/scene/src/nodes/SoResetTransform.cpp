#include <kalmyr/nodes/SoResetTransform.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoMatrixElements.h>

namespace {

constexpr SoEnumEntry kParts[] = {
    {"TRANSFORM", SoResetTransform::TRANSFORM},
    {"BBOX", SoResetTransform::BBOX},
};

} // namespace

SO_NODE_SOURCE(SoResetTransform)

SoResetTransform::SoResetTransform()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(whatToReset, (TRANSFORM));
    whatToReset.setEnums(kParts);
}

SoResetTransform::~SoResetTransform() = default;

void SoResetTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoResetTransform, SoTransformation, "ResetTransform");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
}

void SoResetTransform::doAction(SoAction* action)
{
    if (whatToReset.isIgnored())
        return;
    // While measuring, matrices are relative to the separator around: the action knows to what.
    SoGetBoundingBoxAction* measure = action->isOfType(SoGetBoundingBoxAction::getClassTypeId())
                                          ? static_cast<SoGetBoundingBoxAction*>(action)
                                          : nullptr;
    if (whatToReset.getValue() & TRANSFORM) {
        if (measure)
            measure->resetTransform(this);
        else
            SoModelMatrixElement::makeIdentity(action->getState(), this);
    }
    if ((whatToReset.getValue() & BBOX) && measure)
        measure->resetBox();
}
