#include <kalmyr/nodes/SoLightModel.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

constexpr SoEnumEntry kModels[] = {
    {"BASE_COLOR", SoLightModel::BASE_COLOR},
    {"PHONG", SoLightModel::PHONG},
};

} // namespace

SO_NODE_SOURCE(SoLightModel)

SoLightModel::SoLightModel()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(model, (PHONG));
    model.setEnums(kModels);
}

SoLightModel::~SoLightModel() = default;

void SoLightModel::initClass()
{
    SO_NODE_INIT_CLASS(SoLightModel, SoNode, "LightModel");
}

void SoLightModel::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (model.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::LIGHT_MODEL))
        return;
    const auto v =
        model.getValue() == BASE_COLOR ? SoLightModelValue::BASE_COLOR : SoLightModelValue::PHONG;
    state->write<SoLightModelElement>().set(this, {v});
}
