#include <kalmyr/nodes/SoVertexAttribute.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoTextureUnits.h>

#include <algorithm>

SO_NODE_SOURCE(SoVertexAttribute)

SoVertexAttribute::SoVertexAttribute()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, (""));
    SO_ADD_FIELD(components, (1));
    SO_ADD_EMPTY_FIELD(value);
}

SoVertexAttribute::~SoVertexAttribute() = default;

void SoVertexAttribute::initClass()
{
    SO_NODE_INIT_CLASS(SoVertexAttribute, SoNode, "VertexAttribute");
}

void SoVertexAttribute::doAction(SoAction* action)
{
    const std::string word = name.getValue().getString();
    if (!word.empty() && !value.isIgnored())
        SoVertexAttributeElement::add(
            action->getState(), this,
            {word, std::clamp(components.getValue(), 1, 4), value.values()});
}
