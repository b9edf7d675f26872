#include <kalmyr/shapes/SoVertexProperty.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

#include "core/CacheLock.h"

namespace {

constexpr SoEnumEntry kBindings[] = {
    {"OVERALL", SoVertexProperty::OVERALL},
    {"PER_PART", SoVertexProperty::PER_PART},
    {"PER_PART_INDEXED", SoVertexProperty::PER_PART_INDEXED},
    {"PER_FACE", SoVertexProperty::PER_FACE},
    {"PER_FACE_INDEXED", SoVertexProperty::PER_FACE_INDEXED},
    {"PER_VERTEX", SoVertexProperty::PER_VERTEX},
    {"PER_VERTEX_INDEXED", SoVertexProperty::PER_VERTEX_INDEXED},
};

} // namespace

SO_NODE_SOURCE(SoVertexProperty)

SoVertexProperty::SoVertexProperty()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(vertex);
    SO_ADD_EMPTY_FIELD(normal);
    SO_ADD_EMPTY_FIELD(texCoord);
    SO_ADD_EMPTY_FIELD(orderedRGBA);
    SO_ADD_FIELD(normalBinding, (PER_VERTEX_INDEXED));
    normalBinding.setEnums(kBindings);
    SO_ADD_FIELD(materialBinding, (OVERALL));
    materialBinding.setEnums(kBindings);
}

SoVertexProperty::~SoVertexProperty() = default;

void SoVertexProperty::initClass()
{
    SO_NODE_INIT_CLASS(SoVertexProperty, SoNode, "VertexProperty");
}

void SoVertexProperty::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (vertex.getNum() > 0 && !vertex.isIgnored()) {
        state->write<SoCoordinateElement>().set(this, vertex.values());
    }
    if (texCoord.getNum() > 0 && !texCoord.isIgnored()) {
        state->write<SoTextureCoordinateElement>().set(this, texCoord.values());
    }
    if (normal.getNum() > 0 && !normal.isIgnored()
        && SoOverrideElement::maySet(state, this, SoOverrideElement::NORMAL)) {
        state->write<SoNormalElement>().set(this, normal.values());
        state->write<SoNormalBindingElement>().set(this, normalBinding.getValue());
    }
    if (orderedRGBA.getNum() > 0 && !orderedRGBA.isIgnored()
        && SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL)) {
        setColors(state);
    }
}

void SoVertexProperty::unpack()
{
    const kalmyr::detail::CacheLock lock;
    if (m_unpackedId == getChangeId())
        return;
    const auto packed = orderedRGBA.values();
    m_colors.resize(packed.size());
    m_transparencies.resize(packed.size());
    for (std::size_t i = 0; i < packed.size(); ++i)
        m_colors[i].setPackedValue(packed[i], m_transparencies[i]);
    m_unpackedId = getChangeId();
}

void SoVertexProperty::setColors(SoState* state)
{
    unpack();
    auto& element = state->write<SoMaterialElement>();
    auto& v = element.value();
    v.diffuse = m_colors.data();
    v.transparency = m_transparencies.data();
    v.numDiffuse = v.numTransparency = static_cast<int>(m_colors.size());
    element.accumulatedBy(this);
    state->write<SoMaterialBindingElement>().set(this, materialBinding.getValue());
}
