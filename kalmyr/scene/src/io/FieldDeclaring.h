#pragma once

#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

namespace kalmyr::detail {

/// Whether files declare the fields of such nodes: they may be called anything, numbers included,
/// and may use nodes that they stand in.
inline bool declaresFields(const SoNode* node)
{
    return node->isOfType(SoVRMLScript::getClassTypeId())
           || node->isOfType(SoUnknownNode::getClassTypeId())
           || node->isOfType(SoVRMLProtoInstance::getClassTypeId());
}

} // namespace kalmyr::detail
