#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <array>

namespace kalmyr::detail {

/// A place on a surface in the space of the eye.
struct SurfacePoint {
    SbVec3f eye;
    SbVec3f normal;             ///< of any length
    std::array<float, 4> color; ///< diffuse, with opacity
    SbVec2f texCoord;

    static SurfacePoint between(const SurfacePoint& a, const SurfacePoint& b, float t);
};

/// Light from a place on a surface, not limited to what can be shown.
struct LightShares {
    SbColor diffuse; ///< in proportion to the colour of the surface there
    SbColor other;   ///< ambient, specular and emissive

    SbColor sum() const { return SbColor(diffuse + other); }
};

/// The light that comes from the surfaces of one item: what the renderer's shaders compute.
class Lighting {
public:
    /// `view` and `item` outlive it.
    Lighting(const SoSceneView& view, const SoSceneView::Item& item);

    bool isLit() const { return m_lit; }
    const SbColor& getFogColor() const { return m_fogValues.color; }
    /// Whether the light may change suddenly.
    bool hasSpots() const { return m_spots; }
    /// Whether corners of one colour and one normal make a triangle of one colour.
    bool isEven() const { return m_even; }

    /// Colour before texture and fog. `front`: the side of the surface that is seen.
    SbColor light(const SurfacePoint& point, bool front) const;
    LightShares split(const SurfacePoint& point, bool front) const;
    SbColor fog(const SbColor& color, const SbVec3f& eye) const;
    /// The share of a colour that fog leaves, 0 to 1; 1 without fog.
    float getClearness(const SbVec3f& eye) const;
    SbColor shade(const SurfacePoint& point, bool front) const
    {
        const SbColor lit = light(point, front);
        return m_fog ? fog(lit, point.eye) : lit;
    }

private:
    void shine(const SoEyeLight& light, const SurfacePoint& point, const SbVec3f& normal,
               const SbVec3f& toViewer, LightShares& sum) const;

    const SoRenderAppearance& m_look;
    const std::vector<SoEyeLight>& m_lights;
    SoFogValues m_fogValues;
    SbColor m_glow;
    float m_farDistance;
    bool m_lit;
    bool m_fog;
    bool m_twoSided;
    bool m_specular;
    bool m_perspective;
    bool m_even;
    bool m_spots;
};

} // namespace kalmyr::detail
