#pragma once

#include "TextLayout.h"

#include <kalmyr/base/SbImage.h>

#include <vector>

namespace kalmyr::detail {

/// A text painted pixel by pixel, as a picture of its rows: the font's size is in pixels.
class PixelText {
public:
    static constexpr int kMaxRowWidth = 4096;
    static constexpr std::size_t kMaxPixels = std::size_t(1) << 24;

    /// Paints horizontal lines. False when there were too many pixels: the rest is left out.
    bool paint(const TextLayout& text);
    /// A rectangle each row at the origin, sized in pixels, with the picture on it; one face a
    /// line.
    void write(SoGeometry& geometry) const;

private:
    /// A line, or a part of one that is very long.
    struct Row {
        int line = 0;
        int left = 0, bottom = 0, right = 0, top = 0; ///< from the origin
        int y = 0;                                    ///< of its bottom in the picture
    };
    struct Stamp {
        std::size_t row;
        int left, bottom, width, height;
        std::vector<unsigned char> values; ///< from the bottom upwards
    };

    bool add(const PlacedGlyph& placed, float size);
    void compose();

    std::vector<Row> m_rows;
    std::vector<Stamp> m_stamps;
    std::size_t m_pixels = 0;
    int m_width = 0, m_height = 0;
    SbImage m_image;
};

} // namespace kalmyr::detail
