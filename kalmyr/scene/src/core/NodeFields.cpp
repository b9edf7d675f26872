#include "core/NodeFields.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>

#include <algorithm>
#include <iterator>

namespace {

/// The object that a field holds as number `index`; `more` says whether there may be further ones.
const SoFieldContainer* heldBy(const SoField& field, int index, bool& more)
{
    more = false;
    if (field.isOfType(SoSFNode::getClassTypeId()))
        return static_cast<const SoSFNode&>(field).getValue();
    if (field.isOfType(SoSFFieldContainer::getClassTypeId()))
        return static_cast<const SoSFFieldContainer&>(field).getValue();
    if (!field.isOfType(SoMNodeField::getClassTypeId()))
        return nullptr;
    const auto& nodes = static_cast<const SoMNodeField&>(field).getValues();
    more = static_cast<std::size_t>(index) + 1 < nodes.size();
    return static_cast<std::size_t>(index) < nodes.size() ? nodes[static_cast<std::size_t>(index)]
                                                          : nullptr;
}

const SoChildList* childrenOf(const SoFieldContainer* holder)
{
    return holder->isOfType(SoNode::getClassTypeId())
               ? static_cast<const SoNode*>(holder)->getInternalChildren()
               : nullptr;
}

/// Children, or nodes in fields.
bool holdsAny(const SoNode* node)
{
    const SoChildList* children = node->getInternalChildren();
    if (children && children->getLength() > 0)
        return true;
    const SoFieldData* data = node->getFieldData();
    if (!data)
        return false;
    for (const int i : data->getNodeFields()) {
        const SoField* field = data->getField(node, i);
        if (field->isConnected()) // who knows what it follows
            return true;
        const bool holds = field->isOfType(SoSFNode::getClassTypeId())
                               ? static_cast<const SoSFNode*>(field)->getValue() != nullptr
                               : static_cast<const SoMNodeField*>(field)->getNum() > 0;
        if (holds)
            return true;
    }
    return false;
}

} // namespace

namespace kalmyr::detail {

bool isNodeField(SoType type)
{
    return type.isDerivedFrom(SoSFNode::getClassTypeId())
           || type.isDerivedFrom(SoMNodeField::getClassTypeId());
}

bool hasObjectsInText(SoType type)
{
    const SoType others[] = {SoSFFieldContainer::getClassTypeId(), SoSFPath::getClassTypeId(),
                             SoMFPath::getClassTypeId(), SoSFEngine::getClassTypeId(),
                             SoMFEngine::getClassTypeId()};
    return isNodeField(type)
           || std::any_of(std::begin(others), std::end(others),
                          [type](SoType other) { return type.isDerivedFrom(other); });
}

const SoField* findNodeField(const SoNode* holder, const SoNode* child, int& index)
{
    const SoFieldData* data = holder->getFieldData();
    if (!data || !child)
        return nullptr;
    for (const int i : data->getNodeFields()) {
        const SoField* field = data->getField(holder, i);
        index = field->isOfType(SoSFNode::getClassTypeId())
                    ? (static_cast<const SoSFNode*>(field)->getValue() == child ? 0 : -1)
                    : static_cast<const SoMNodeField*>(field)->find(child);
        if (index >= 0)
            return field;
    }
    return nullptr;
}

SoNode* findInNodeFields(const SoNode* holder, const SoNode* child)
{
    int index = 0;
    return findNodeField(holder, child, index) ? const_cast<SoNode*>(child) : nullptr;
}

bool mayBeAtOrAbove(const SoNode* node, const SoNode* holder)
{
    return node == holder || (holder->getAuditors().getLength() > 0 && holdsAny(node));
}

const SoFieldContainer* nextHeld(HeldPlace& place)
{
    const SoChildList* children = childrenOf(place.holder);
    if (children && place.child < children->getLength())
        return (*children)[place.child++];
    const SoFieldData* data = place.holder->getFieldData();
    while (data && place.field < data->getNumFields()) {
        bool more = false;
        const SoFieldContainer* held =
            heldBy(*data->getField(place.holder, place.field), place.value++, more);
        if (!more) {
            ++place.field;
            place.value = 0;
        }
        if (held)
            return held;
    }
    return nullptr;
}

} // namespace kalmyr::detail
