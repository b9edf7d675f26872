#pragma once

#include "Projection.h"
#include "VectorDrawing.h"

#include <kalmyr/rendering/SoSceneView.h>

#include <array>
#include <vector>

namespace kalmyr::detail {

/// Draws the textured triangles of one item into a picture that lies on the page: what is to be
/// seen through their outlines.
class TextureBaker {
public:
    struct BakeCorner {
        double x, y, z;             ///< on the page; nearness before scaling
        double inverseW;            ///< linear on the page
        SbVec2f texCoord;           ///< before the texture matrix
        std::array<float, 4> color; ///< lit, without fog
        float clear;                ///< share that fog leaves
    };
    using Triangle = std::array<BakeCorner, 3>;

    explicit TextureBaker(const SoRenderAppearance& look) : m_look(look) {}

    void add(const Triangle& triangle) { m_triangles.push_back(triangle); }
    /// False when there is nothing to draw. `resolution` in pixels a millimetre.
    bool bake(const DrawingArea& area, double resolution, VectorImage& image);

private:
    struct Texel {
        float red = 0, green = 0, blue = 0, alpha = 0;
    };
    struct Level {
        int width = 0;
        int height = 0;
        std::vector<Texel> texels;
        const Texel& at(int x, int y, bool repeatX, bool repeatY) const;
    };
    void makeLevels();
    Texel sample(const Level& level, float u, float v) const;
    Texel sample(float u, float v, float texelsPerPixel) const;
    Texel paint(const std::array<float, 4>& color, const Texel& texel) const;
    void draw(const Triangle& triangle, double resolution, const VectorImage& image, int width,
              int height);

    const SoRenderAppearance& m_look; // Not owned.
    std::vector<Triangle> m_triangles;
    std::vector<Level> m_levels;
    std::vector<Texel> m_pixels;
    std::vector<float> m_depths;
};

} // namespace kalmyr::detail
