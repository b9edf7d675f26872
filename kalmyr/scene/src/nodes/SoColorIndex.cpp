#include <kalmyr/nodes/SoColorIndex.h>

#include "core/CacheLock.h"
#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

#include <algorithm>

namespace {

constexpr SbColor kStandard[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0},
                                 {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};

} // namespace

SO_NODE_SOURCE(SoColorIndex)

SoColorIndex::SoColorIndex()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(index, (0));
    SO_ADD_EMPTY_FIELD(colors);
}

SoColorIndex::~SoColorIndex() = default;

void SoColorIndex::initClass()
{
    SO_NODE_INIT_CLASS(SoColorIndex, SoNode, "ColorIndex");
}

void SoColorIndex::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (index.isIgnored() || index.getNum() == 0
        || !SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL))
        return;
    choose();
    auto& element = state->write<SoMaterialElement>();
    element.value().diffuse = m_chosen.data();
    element.value().numDiffuse = static_cast<int>(m_chosen.size());
    element.accumulatedBy(this);
}

void SoColorIndex::choose()
{
    const kalmyr::detail::CacheLock lock;
    if (m_chosenId == getChangeId())
        return;
    const std::span<const SbColor> palette =
        colors.getNum() > 0 && !colors.isIgnored() ? colors.values() : std::span(kStandard);
    m_chosen.clear();
    for (const std::int32_t i : index.values())
        m_chosen.push_back(palette[static_cast<std::size_t>(
            std::clamp(i, 0, static_cast<int>(palette.size()) - 1))]);
    m_chosenId = getChangeId();
}
