#include <kalmyr/nodes/SoPackedColor.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

#include "core/CacheLock.h"

SO_NODE_SOURCE(SoPackedColor)

SoPackedColor::SoPackedColor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(orderedRGBA, (0xccccccffu));
}

SoPackedColor::~SoPackedColor() = default;

void SoPackedColor::initClass()
{
    SO_NODE_INIT_CLASS(SoPackedColor, SoNode, "PackedColor");
}

void SoPackedColor::unpack()
{
    const kalmyr::detail::CacheLock lock;
    if (m_unpackedId == getChangeId())
        return;
    const auto packed = orderedRGBA.values();
    m_colors.resize(packed.size());
    m_transparencies.resize(packed.size());
    for (std::size_t i = 0; i < packed.size(); ++i) {
        m_colors[i].setPackedValue(packed[i], m_transparencies[i]);
    }
    m_unpackedId = getChangeId();
}

void SoPackedColor::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (orderedRGBA.isIgnored() || orderedRGBA.getNum() == 0)
        return;
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL))
        return;
    unpack();
    auto& element = state->write<SoMaterialElement>();
    auto& v = element.value();
    v.diffuse = m_colors.data();
    v.transparency = m_transparencies.data();
    v.numDiffuse = v.numTransparency = static_cast<int>(m_colors.size());
    element.accumulatedBy(this);
}
