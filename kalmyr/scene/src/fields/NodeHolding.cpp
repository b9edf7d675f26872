#include "NodeHolding.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFNode.h>

#include "core/NodeFields.h"
#include "core/WalkMarks.h"

#include <algorithm>

namespace {

/// The node whose field it is; null for a field without a container, and of an engine.
const SoNode* holderOf(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<const SoNode*>(container)
               : nullptr;
}

bool refuse(const SoField& field, const SoNode* holder, const SoNode* node)
{
    SoDebugError::post("SoField",
                       "%s \"%s\" cannot be held by the field %s of %s \"%s\": it holds it",
                       node->getTypeId().getName().getString(), node->getName().getString(),
                       holder->getFieldName(&field).getString(),
                       holder->getTypeId().getName().getString(), holder->getName().getString());
    return false;
}

} // namespace

bool kalmyr::detail::mayHold(const SoField& field, const SoNode* node)
{
    const SoNode* holder = node ? holderOf(field) : nullptr;
    return !holder || !mayBeAtOrAbove(node, holder) || !holder->isAtOrBelow(node)
           || refuse(field, holder, node);
}

bool kalmyr::detail::mayHoldAll(const SoField& field, std::span<SoNode* const> nodes)
{
    if (nodes.size() < 2) {
        return nodes.empty() || mayHold(field, nodes[0]);
    }
    const SoNode* holder = holderOf(field);
    const auto mayBeAbove = [holder](const SoNode* node) {
        return node && mayBeAtOrAbove(node, holder);
    };
    if (!holder || std::none_of(nodes.begin(), nodes.end(), mayBeAbove)) {
        return true;
    }
    const auto above = holder->getAllAtOrAbove();
    return std::all_of(nodes.begin(), nodes.end(), [&](const SoNode* node) {
        return !node || !above.count(node) || refuse(field, holder, node);
    });
}

bool kalmyr::detail::mayTake(const SoField& field, const SoField& twin, SbString& why)
{
    why = kHoldsThis;
    if (field.isOfType(SoMNodeField::getClassTypeId()))
        return mayHoldAll(field, static_cast<const SoMNodeField&>(twin).getValues());
    const SoFieldContainer* held = nullptr;
    if (field.isOfType(SoSFNode::getClassTypeId()))
        held = static_cast<const SoSFNode&>(twin).getValue();
    else if (field.isOfType(SoSFFieldContainer::getClassTypeId()))
        held = static_cast<const SoSFFieldContainer&>(twin).getValue();
    if (!held || !held->isOfType(SoNode::getClassTypeId()))
        return true;
    const auto* node = static_cast<const SoNode*>(held);
    const SoFieldContainer* holder = field.getContainer();
    return mayHold(field, node)
           && (!holder || !holder->isOfType(SoNode::getClassTypeId())
               || static_cast<const SoNode*>(holder)->acceptsValue(field, node, why));
}

void kalmyr::detail::expectWalk(const SoField& field)
{
    if (SoFieldContainer* container = field.getContainer(); container && field.isNotifyEnabled())
        WalkMarks::set(*container, WalkMarks::kAsked);
}
