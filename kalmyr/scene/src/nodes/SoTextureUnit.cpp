#include <kalmyr/nodes/SoTextureUnit.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>

#include <algorithm>

namespace {

constexpr SoEnumEntry kModes[] = {
    {"MODEL", SoTextureStage::AS_MODEL},
    {"MODULATE", SoTextureStage::MODULATE},
    {"REPLACE", SoTextureStage::REPLACE},
    {"MODULATE2X", SoTextureStage::MODULATE2X},
    {"MODULATE4X", SoTextureStage::MODULATE4X},
    {"ADD", SoTextureStage::ADD},
    {"ADDSIGNED", SoTextureStage::ADDSIGNED},
    {"ADDSIGNED2X", SoTextureStage::ADDSIGNED2X},
    {"SUBTRACT", SoTextureStage::SUBTRACT},
    {"ADDSMOOTH", SoTextureStage::ADDSMOOTH},
    {"BLENDDIFFUSEALPHA", SoTextureStage::BLENDDIFFUSEALPHA},
    {"BLENDTEXTUREALPHA", SoTextureStage::BLENDTEXTUREALPHA},
    {"BLENDFACTORALPHA", SoTextureStage::BLENDFACTORALPHA},
    {"BLENDCURRENTALPHA", SoTextureStage::BLENDCURRENTALPHA},
    {"MODULATEALPHA_ADDCOLOR", SoTextureStage::MODULATEALPHA_ADDCOLOR},
    {"MODULATEINVALPHA_ADDCOLOR", SoTextureStage::MODULATEINVALPHA_ADDCOLOR},
    {"MODULATEINVCOLOR_ADDALPHA", SoTextureStage::MODULATEINVCOLOR_ADDALPHA},
    {"DOTPRODUCT3", SoTextureStage::DOTPRODUCT3},
    {"SELECTARG1", SoTextureStage::SELECTARG1},
    {"SELECTARG2", SoTextureStage::SELECTARG2},
    {"OFF", SoTextureStage::OFF},
};
constexpr SoEnumEntry kSources[] = {
    {"CURRENT", SoTextureUnit::CURRENT},
    {"DIFFUSE", SoTextureUnit::DIFFUSE},
    {"SPECULAR", SoTextureUnit::SPECULAR},
    {"FACTOR", SoTextureUnit::FACTOR},
};
constexpr SoEnumEntry kFunctions[] = {
    {"NONE", SoTextureUnit::NONE},
    {"COMPLEMENT", SoTextureUnit::COMPLEMENT},
    {"ALPHAREPLICATE", SoTextureUnit::ALPHAREPLICATE},
};

} // namespace

SO_NODE_SOURCE(SoTextureUnit)

SoTextureUnit::SoTextureUnit()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(unit, (0));
    SO_ADD_FIELD(mode, (MODEL));
    mode.setEnums(kModes);
    SO_ADD_FIELD(alphaMode, (MODEL));
    alphaMode.setEnums(kModes);
    SO_ADD_FIELD(source, (CURRENT));
    source.setEnums(kSources);
    SO_ADD_FIELD(function, (NONE));
    function.setEnums(kFunctions);
    SO_ADD_FIELD(factor, (1.0f, 1.0f, 1.0f, 1.0f));
}

SoTextureUnit::~SoTextureUnit() = default;

void SoTextureUnit::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureUnit, SoNode, "TextureUnit");
}

void SoTextureUnit::doAction(SoAction* action)
{
    SoState* state = action->getState();
    const int number = std::clamp(unit.getValue(), 0, SoTextureUnitElement::kMaxUnits - 1);
    auto& element = state->write<SoTextureUnitElement>();
    element.set(this, number);
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::TEXTURE))
        return;
    SoTextureStage& stage = SoLookExtrasElement::editStage(state, this, number);
    stage.mode = static_cast<SoTextureStage::Mode>(mode.getValue());
    stage.alphaMode = static_cast<SoTextureStage::Mode>(alphaMode.getValue());
    stage.source = static_cast<SoTextureStage::Source>(source.getValue());
    stage.function = static_cast<SoTextureStage::Function>(function.getValue());
    stage.factor = factor.getValue();
}
