#pragma once

#include "TextLayout.h"

#include <array>
#include <cstdint>

class SoGeometry;

namespace kalmyr::detail {

/// Makes solid letters of a text: their fronts lie at z = 0, their backs at -depth.
struct TextExtruder {
    enum Part { FRONT, SIDES, BACK, NUM_PARTS };

    float depth = 1; ///< object units; without one there are no sides
    std::array<bool, NUM_PARTS> shown{true, true, true};
    bool hasColors = false; ///< the parts have the colours below
    std::array<std::uint32_t, NUM_PARTS> colors{};

    /// One face a line of text.
    void build(const TextLayout& text, SoGeometry& geometry) const;
};

} // namespace kalmyr::detail
