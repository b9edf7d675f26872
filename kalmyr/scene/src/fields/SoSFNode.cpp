#include <kalmyr/fields/SoSFNode.h>

#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>

#include "core/LastRites.h"
#include "NodeHolding.h"

#include <utility>

SO_FIELD_SOURCE(SoSFNode, SoSField, "SFNode")

SoSFNode::~SoSFNode()
{
    initValue(nullptr);
}

void SoSFNode::initValue(SoNode* node)
{
    if (node) {
        node->ref();
        node->addAuditor(this, SoAuditor::FIELD);
        node->joinHolder(getContainer(), this);
    }
    SoNode* old = std::exchange(m_node, node);
    if (old) {
        old->removeAuditor(this);
        kalmyr::detail::releaseInTurn(old);
    }
}

void SoSFNode::setValue(SoNode* node)
{
    if (!kalmyr::detail::mayHold(*this, node)) {
        return;
    }
    const SoRef<SoNode> old(m_node); // lives until everybody has heard of the change
    if (!(flags() & kPulling))
        kalmyr::detail::expectWalk(*this);
    initValue(node);
    valueChanged();
}

bool SoSFNode::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && static_cast<const SoSFNode&>(other).getValue() == getValue();
}

void SoSFNode::copyFrom(const SoField& other)
{
    if (canCopy(other))
        setValue(static_cast<const SoSFNode&>(other).getValue());
}

void SoSFNode::copyWith(SoNodeCopier& copier, const SoField& other)
{
    if (canCopy(other))
        setValue(copier.copyOf(static_cast<const SoSFNode&>(other).getValue()));
}

bool SoSFNode::readValue(SoFieldReader& in)
{
    SoNode* node = nullptr;
    in.text.peek();
    const std::size_t at = in.text.getOffset();
    if (!in.readNode(node)) {
        return false;
    }
    const SoRef<SoNode> keep(node);
    if (!kalmyr::detail::mayHold(*this, node)) {
        return in.text.fail("expected a node that does not hold this one");
    }
    const SoFieldContainer* holder = getContainer();
    SbString why;
    if (holder && holder->isOfType(SoNode::getClassTypeId())
        && !static_cast<const SoNode*>(holder)->acceptsValue(*this, node, why)) {
        return in.leaveOut(at, why);
    }
    setValue(node);
    return true;
}

void SoSFNode::writeValue(SoFieldWriter& out) const
{
    out.writeNode(getValue());
}
