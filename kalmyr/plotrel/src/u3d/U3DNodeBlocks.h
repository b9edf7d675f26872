#pragma once

#include "U3DScene.h"

namespace kalmyr::detail {

class U3DBlocks;

/// The block of a node; of a model the chain that gives it its shaders.
void writeNode(U3DBlocks& out, const U3DScene& scene, const U3DNode& node);
/// What a light shines, and what a view shows. Nodes refer to them by their own names.
void writeLight(U3DBlocks& out, const std::string& name, const U3DLight& light);
void writeViewResource(U3DBlocks& out, const std::string& name);

} // namespace kalmyr::detail
