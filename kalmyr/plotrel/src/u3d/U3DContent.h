#pragma once

#include "U3DScene.h"

#include <cstddef>
#include <functional>

namespace kalmyr::detail {

class U3DBlocks;
class U3DMeshLayout;

/// How the content of generators is written.
struct U3DContentOptions {
    bool compressed = false;
    /// Told of the faces and positions that are done; false stops.
    std::function<bool(std::size_t)> advance;
};

/// The declaration of a generator: the only block of its chain.
void declareMesh(U3DBlocks& out, const U3DGenerator& generator, const U3DMeshLayout& layout);
void declareWire(U3DBlocks& out, const U3DGenerator& generator);
/// Writes the quality and quantisation fields that both declarations contain.
void declareQuality(U3DBlocks& out, float positionQuantum);

/// The blocks of its content. False when stopped.
bool writeMesh(U3DBlocks& out, const U3DGenerator& generator, const U3DMeshLayout& layout,
               const U3DContentOptions& options);
bool writeWire(U3DBlocks& out, const U3DGenerator& generator, const U3DContentOptions& options);

} // namespace kalmyr::detail
