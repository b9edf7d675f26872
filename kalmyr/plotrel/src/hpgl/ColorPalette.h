#pragma once

#include "../FlatShapes.h"

#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// Few colours that stand for many: the colours are parted at the middle of their greatest spread
/// again and again, and each part gets its mean.
class ColorPalette {
public:
    /// A use of a colour, and how much of the picture it takes.
    void add(PackedColor color, double area) { m_uses[color] += area; }
    /// Chooses at most `size` colours.
    void choose(std::size_t size);

    const std::vector<PackedColor>& colors() const { return m_colors; }
    /// Index of the colour that stands for one that was added.
    std::size_t indexOf(PackedColor color) const { return m_indices.at(color); }

private:
    std::unordered_map<PackedColor, double> m_uses;
    std::unordered_map<PackedColor, std::size_t> m_indices;
    std::vector<PackedColor> m_colors;
};

} // namespace kalmyr::detail
