#include <kalmyr/fields/SoSFNode.h>

#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>

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
    }
    SoNode* old = std::exchange(m_node, node);
    if (old) {
        old->removeAuditor(this);
        old->unref();
    }
}

void SoSFNode::setValue(SoNode* node)
{
    if (!kalmyr::detail::mayHold(*this, node)) {
        return;
    }
    const SoRef<SoNode> old(m_node); // lives until everybody has heard of the change
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
    setValue(static_cast<const SoSFNode&>(other).getValue());
}

void SoSFNode::copyWith(SoNodeCopier& copier, const SoField& other)
{
    setValue(copier.copyOf(static_cast<const SoSFNode&>(other).getValue()));
}

bool SoSFNode::readValue(SoFieldReader& in)
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

void SoSFNode::writeValue(SoFieldWriter& out) const
{
    out.writeNode(getValue());
}
