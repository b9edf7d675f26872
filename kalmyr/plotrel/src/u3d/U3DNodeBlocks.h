#pragma once

#include "U3DScene.h"

namespace kalmyr::detail {

class U3DBlocks;

/// The block of a node; of a model the chain that gives it its shaders.
void writeNode(U3DBlocks& out, const U3DScene& scene, const U3DNode& node);
/// Write the resource of a light or of a view. Nodes refer to it by their own name.
void writeLight(U3DBlocks& out, const std::string& name, const U3DLight& light);
void writeViewResource(U3DBlocks& out, const std::string& name);

} // namespace kalmyr::detail
