#include <kalmyr/nodes/SoTextureCoordinateBinding.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>

namespace {

constexpr SoEnumEntry kBindings[] = {
    {"DEFAULT", SoTextureCoordinateBinding::DEFAULT},
    {"PER_VERTEX", SoTextureCoordinateBinding::PER_VERTEX},
    {"PER_VERTEX_INDEXED", SoTextureCoordinateBinding::PER_VERTEX_INDEXED},
};

} // namespace

SO_NODE_SOURCE(SoTextureCoordinateBinding)

SoTextureCoordinateBinding::SoTextureCoordinateBinding()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(value, (PER_VERTEX_INDEXED));
    value.setEnums(kBindings);
}

SoTextureCoordinateBinding::~SoTextureCoordinateBinding() = default;

void SoTextureCoordinateBinding::initClass()
{
    SO_NODE_INIT_CLASS(SoTextureCoordinateBinding, SoNode, "TextureCoordinateBinding");
}

void SoTextureCoordinateBinding::doAction(SoAction* action)
{
    if (value.isIgnored())
        return;
    const int binding = value.getValue() == DEFAULT ? PER_VERTEX_INDEXED : value.getValue();
    action->getState()->write<SoTextureCoordinateBindingElement>().set(this, binding);
}
