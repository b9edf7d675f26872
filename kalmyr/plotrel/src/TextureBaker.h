#pragma once

#include "Projection.h"
#include "TextureLevels.h"
#include "VectorDrawing.h"

#include <kalmyr/rendering/SoSceneView.h>

#include <array>
#include <vector>

namespace kalmyr::detail {

/// Draws the textured triangles of one item into a picture that lies on the page: what is to be
/// seen through their outlines.
class TextureBaker {
public:
    struct BakeLight {
        std::array<float, 4> color{}; ///< lit, without fog; of a SURFACE the diffuse share alone
        SbVec3f other;                ///< of a SURFACE: light that the texture does not change
        float clear = 0;              ///< share that fog leaves
    };
    struct BakeCorner {
        double x, y, z;   ///< on the page; nearness before scaling
        double inverseW;  ///< linear on the page
        SbVec2f texCoord; ///< before the texture matrix
        BakeLight light;
    };
    using Triangle = std::array<BakeCorner, 3>;

    /// Of each unit, null where it shows nothing.
    using Levels = std::vector<const TextureLevels*>;

    /// `look` and `levels`, those of its units, outlive the baker.
    TextureBaker(const SoRenderAppearance& look, const Levels& levels, const SbColor& fogColor);

    void add(const Triangle& triangle) { m_triangles.push_back(triangle); }
    /// False when there is nothing to draw. `resolution` in pixels a millimetre.
    bool bake(const DrawingArea& area, double resolution, VectorImage& image);

private:
    Texel paint(const BakeLight& light, const Texel& texel) const;
    Texel mix(std::size_t unit, const Texel& current, const Texel& texel,
              const BakeLight& light) const;
    bool isLeftOut(const Texel& pixel) const;
    class PixelTriangle;
    Texel sample(const PixelTriangle& triangle, std::size_t unit, int x, int y) const;
    Texel colorAt(const PixelTriangle& triangle, int x, int y) const;
    void draw(const PixelTriangle& triangle, int width, int height);

    const SoRenderAppearance& m_look; // Not owned.
    Levels m_levels;                  // Not owned.
    SbColor m_fogColor;
    std::vector<Triangle> m_triangles;
    std::vector<Texel> m_pixels;
    std::vector<float> m_depths;
};

} // namespace kalmyr::detail
