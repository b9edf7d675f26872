#include "core/NodeFields.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFNode.h>

#include <algorithm>

namespace {

bool isPlainValue(SoType type)
{
    // Fields of containers, paths and engines do not make a node the ancestor of another.
    return !type.isDerivedFrom(SoSFNode::getClassTypeId())
           && !type.isDerivedFrom(SoMNodeField::getClassTypeId());
}

} // namespace

namespace kalmyr::detail {

SoNode* findInNodeFields(const SoNode* holder, const SoNode* child)
{
    const SoFieldData* data = holder->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(holder, i);
        if (field->isOfType(SoSFNode::getClassTypeId())) {
            SoNode* node = static_cast<const SoSFNode*>(field)->getValue();
            if (node && node == child)
                return node;
        } else if (field->isOfType(SoMNodeField::getClassTypeId())) {
            const auto& nodes = static_cast<const SoMNodeField*>(field)->getValues();
            const auto at = std::find(nodes.begin(), nodes.end(), child);
            if (at != nodes.end())
                return *at;
        }
    }
    return nullptr;
}

bool mayHoldNodesInFields(const SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    if (!data)
        return false;
    for (int i = 0; i < data->getNumFields(); ++i)
        if (!isPlainValue(data->getField(node, i)->getTypeId()))
            return true;
    return false;
}

} // namespace kalmyr::detail
