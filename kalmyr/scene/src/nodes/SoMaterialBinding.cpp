#include <kalmyr/nodes/SoMaterialBinding.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

namespace {

constexpr SoEnumEntry kBindings[] = {
    {"DEFAULT", SoMaterialBinding::DEFAULT},
    {"OVERALL", SoMaterialBinding::OVERALL},
    {"PER_PART", SoMaterialBinding::PER_PART},
    {"PER_PART_INDEXED", SoMaterialBinding::PER_PART_INDEXED},
    {"PER_FACE", SoMaterialBinding::PER_FACE},
    {"PER_FACE_INDEXED", SoMaterialBinding::PER_FACE_INDEXED},
    {"PER_VERTEX", SoMaterialBinding::PER_VERTEX},
    {"PER_VERTEX_INDEXED", SoMaterialBinding::PER_VERTEX_INDEXED},
};

} // namespace

SO_NODE_SOURCE(SoMaterialBinding)

SoMaterialBinding::SoMaterialBinding()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(value, (OVERALL));
    value.setEnums(kBindings);
}

SoMaterialBinding::~SoMaterialBinding() = default;

void SoMaterialBinding::initClass()
{
    SO_NODE_INIT_CLASS(SoMaterialBinding, SoNode, "MaterialBinding");
}

void SoMaterialBinding::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (value.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL_BINDING))
        return;
    const int binding = value.getValue() == DEFAULT ? OVERALL : value.getValue();
    state->write<SoMaterialBindingElement>().set(this, binding);
}
