#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <memory>

/// How one or several shapes are to look; copied from the state, never changed afterwards.
class KALMYR_API SoRenderAppearance final : public SoRefCounter {
public:
    SoRenderAppearance() = default;

    SbColor diffuse{0.8f, 0.8f, 0.8f}; ///< where the geometry has no colours of its own
    SbColor ambient;
    SbColor specular;
    SbColor emissive;
    float shininess = 0.2f;
    float transparency = 0;
    bool lit = true; ///< false: colours as they are
    bool translucentTexture = false;
    bool hiding = false; ///< faces are not seen but hide what is behind them; nothing else is drawn
    SoDrawStyleValues drawStyle;
    SoTextureValues texture;
    SbMatrix textureMatrix;
    SoEnvironmentValues environment;
    std::shared_ptr<const SoLookExtras> extras; ///< null for most

    friend KALMYR_API bool operator==(const SoRenderAppearance& a, const SoRenderAppearance& b);

private:
    ~SoRenderAppearance() override = default;
};
