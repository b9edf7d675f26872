#include <kalmyr/fields/SoSFFieldContainer.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>

#include "core/LastRites.h"
#include "NodeHolding.h"

#include <utility>

SO_FIELD_SOURCE(SoSFFieldContainer, SoSField, "SFFieldContainer")

namespace {

SoNode* nodeOf(SoFieldContainer* container)
{
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<SoNode*>(container)
               : nullptr;
}

} // namespace

SoSFFieldContainer::~SoSFFieldContainer()
{
    initValue(nullptr);
}

void SoSFFieldContainer::initValue(SoFieldContainer* container)
{
    if (container) {
        container->ref();
        container->addAuditor(this, SoAuditor::FIELD);
        container->joinHolder(getContainer(), this);
    }
    SoFieldContainer* old = std::exchange(m_held, container);
    if (old) {
        old->removeAuditor(this);
        kalmyr::detail::releaseInTurn(old);
    }
}

void SoSFFieldContainer::setValue(SoFieldContainer* container)
{
    if (!kalmyr::detail::mayHold(*this, nodeOf(container))) {
        return;
    }
    const SoRef<SoFieldContainer> old(m_held); // lives until everybody has heard of the change
    if (!(flags() & kPulling))
        kalmyr::detail::expectWalk(*this);
    initValue(container);
    valueChanged();
}

bool SoSFFieldContainer::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && static_cast<const SoSFFieldContainer&>(other).getValue() == getValue();
}

void SoSFFieldContainer::copyFrom(const SoField& other)
{
    if (canCopy(other))
        setValue(static_cast<const SoSFFieldContainer&>(other).getValue());
}

void SoSFFieldContainer::copyWith(SoNodeCopier& copier, const SoField& other)
{
    if (!canCopy(other))
        return;
    SoFieldContainer* held = static_cast<const SoSFFieldContainer&>(other).getValue();
    SoNode* node = nodeOf(held);
    setValue(node ? copier.copyOf(node) : held);
}

bool SoSFFieldContainer::readValue(SoFieldReader& in)
{
    SoNode* node = nullptr;
    if (!in.readNode(node)) {
        return false;
    }
    const SoRef<SoNode> keep(node);
    if (!kalmyr::detail::mayHold(*this, node)) {
        return in.text.fail("expected a node that does not hold this one");
    }
    setValue(node);
    return true;
}

void SoSFFieldContainer::writeValue(SoFieldWriter& out) const
{
    out.writeNode(nodeOf(getValue()));
}
