#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <vector>

namespace kalmyr::detail {

struct Texel {
    float red = 0, green = 0, blue = 0, alpha = 0;
};

/// A texture in sizes that halve, looked up as the renderer does: bilinear within a size, linear
/// between two.
class TextureLevels {
public:
    explicit TextureLevels(const SbImage& image);

    int getWidth() const { return m_levels.front().width; }
    int getHeight() const { return m_levels.front().height; }
    /// `values` tells how the texture repeats; `texelsPerPixel` how finely it is seen.
    Texel sample(const SoTextureValues& values, const SbVec2f& place, float texelsPerPixel) const;

private:
    struct Level {
        int width = 0;
        int height = 0;
        std::vector<Texel> texels;
        const Texel& at(int x, int y, bool repeatX, bool repeatY) const;
        Level half() const;
    };
    static Texel sample(const Level& level, const SoTextureValues& values, const SbVec2f& place);

    std::vector<Level> m_levels;
};

} // namespace kalmyr::detail
