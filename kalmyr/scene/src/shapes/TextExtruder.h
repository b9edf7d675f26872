#pragma once

#include "TextLayout.h"

#include <array>
#include <cstdint>
#include <vector>

class SoGeometry;
class SoNode;

namespace kalmyr::detail {

/// Makes solid letters of a text: fronts at the first point of the profile, backs at its last.
struct TextExtruder {
    /// Letters that would come to more are left out, and one warning says so.
    static constexpr std::size_t kMaxFaces = 4'000'000;

    enum Part { FRONT, SIDES, BACK, NUM_PARTS };

    const SoNode* node = nullptr; ///< named in warnings
    /// From front to back: distance behind z = 0 and outwards from the glyph, object units. A
    /// single point makes no sides.
    std::vector<SbVec2f> profile;
    std::array<bool, NUM_PARTS> shown{true, true, true};
    bool hasColors = false; ///< the parts have the colours below
    std::array<std::uint32_t, NUM_PARTS> colors{};

    /// One face a line of text.
    void build(const TextLayout& text, SoGeometry& geometry) const;
};

} // namespace kalmyr::detail
