#include <kalmyr/nodes/SoNormalBinding.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

constexpr SoEnumEntry kBindings[] = {
    {"DEFAULT", SoNormalBinding::DEFAULT},
    {"OVERALL", SoNormalBinding::OVERALL},
    {"PER_PART", SoNormalBinding::PER_PART},
    {"PER_PART_INDEXED", SoNormalBinding::PER_PART_INDEXED},
    {"PER_FACE", SoNormalBinding::PER_FACE},
    {"PER_FACE_INDEXED", SoNormalBinding::PER_FACE_INDEXED},
    {"PER_VERTEX", SoNormalBinding::PER_VERTEX},
    {"PER_VERTEX_INDEXED", SoNormalBinding::PER_VERTEX_INDEXED},
};

} // namespace

SO_NODE_SOURCE(SoNormalBinding)

SoNormalBinding::SoNormalBinding()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(value, (PER_VERTEX_INDEXED));
    value.setEnums(kBindings);
}

SoNormalBinding::~SoNormalBinding() = default;

void SoNormalBinding::initClass()
{
    SO_NODE_INIT_CLASS(SoNormalBinding, SoNode, "NormalBinding");
}

void SoNormalBinding::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (value.isIgnored())
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::NORMAL_BINDING))
        return;
    const int binding = value.getValue() == DEFAULT ? PER_VERTEX_INDEXED : value.getValue();
    state->write<SoNormalBindingElement>().set(this, binding);
}
