#include "NodeHolding.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>

#include "core/NodeFields.h"

bool kalmyr::detail::mayHold(const SoField& field, const SoNode* node)
{
    const SoFieldContainer* container = field.getContainer();
    if (!node || !container || !container->isOfType(SoNode::getClassTypeId())) {
        return true;
    }
    const auto* holder = static_cast<const SoNode*>(container);
    if (!mayBeAtOrAbove(node, holder) || !holder->isAtOrBelow(node)) {
        return true;
    }
    SoDebugError::post("SoField",
                       "%s \"%s\" cannot be held by the field %s of %s \"%s\": it holds it",
                       node->getTypeId().getName().getString(), node->getName().getString(),
                       holder->getFieldName(&field).getString(),
                       holder->getTypeId().getName().getString(), holder->getName().getString());
    return false;
}
