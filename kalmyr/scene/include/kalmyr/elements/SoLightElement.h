#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/elements/SoState.h>

#include <memory>
#include <vector>

/// One light source as it stands in the scene: parameters in its own space and the matrix to the
/// world.
struct SoLightRecord {
    enum Kind { DIRECTIONAL, POINT, SPOT };
    Kind kind = DIRECTIONAL;
    SbMatrix toWorld = SbMatrix::identity();
    SbColor color{1, 1, 1};
    float intensity = 1;
    float ambientIntensity = 0;
    SbVec3f position{0, 0, 1};
    SbVec3f direction{0, 0, -1};
    float cutOffAngle = 0.785398f; ///< radians
    float dropOffRate = 0;         ///< 0 to 1
    /// Radians. Of a spot light whose full strength falls off evenly from there to the cut-off
    /// angle, whatever the drop-off rate; negative: by the rate.
    float beamWidth = -1;
    SbVec3f attenuation{1, 0, 0}; ///< constant, linear, quadratic
    static constexpr float kUnlimited = 1e18f;
    float radius = kUnlimited; ///< of a point or spot light: how far it shines

    bool operator==(const SoLightRecord&) const = default;
};

/// The lights that shine on what follows. Shared between stack levels; replaced, never edited.
class KALMYR_API SoLightElement final
    : public SoValueElement<SoLightElement, std::shared_ptr<const std::vector<SoLightRecord>>> {
public:
    static int getStackIndex();
    /// The value id covers the present model matrix, too.
    static void add(SoState* state, const SoNode* node, const SoLightRecord& light);
    /// Empty when there are none.
    static const std::vector<SoLightRecord>& get(SoState* state);
};

/// Ambient light and fog.
struct SoEnvironmentValues {
    float ambientIntensity = 0.2f;
    SbColor ambientColor{1, 1, 1};
    SbVec3f attenuation{0, 0, 1};
    /// EXPONENTIAL leaves exp(-d / (visibility - d)) at the distance d, HAZE an even share.
    enum Fog { NONE = 0, HAZE = 1, FOG = 2, SMOKE = 3, EXPONENTIAL = 4 };
    Fog fogType = NONE;
    SbColor fogColor{1, 1, 1};
    float fogVisibility = 0; ///< world units; 0: the far plane
};

/// Fog that lies over a whole scene.
struct SoFogValues {
    SoEnvironmentValues::Fog type = SoEnvironmentValues::NONE; ///< NONE: there is none
    SbColor color{1, 1, 1};
    float visibility = 0; ///< world units; 0: the far plane

    static SoFogValues from(const SoEnvironmentValues& values)
    {
        return {values.fogType, values.fogColor, values.fogVisibility};
    }
};

class KALMYR_API SoEnvironmentElement final
    : public SoValueElement<SoEnvironmentElement, SoEnvironmentValues> {
public:
    static int getStackIndex();
};
