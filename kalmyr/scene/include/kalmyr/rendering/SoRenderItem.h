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

#include <cstddef>
#include <memory>
#include <vector>

class SoGLRenderAction;
class SoNode;

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

/// One visible shape in world space, for those who look at a scene as the renderer does.
struct SoRenderItem {
    SoRef<SoGeometry> geometry;
    SoRef<const SoRenderAppearance> appearance;
    SbMatrix toWorld;
    std::vector<SoLightRecord> lights; ///< their matrices lead to the world
    std::vector<SbVec4f> clipPlanes;   ///< a, b, c, d: kept is a x + b y + c z + d >= 0
    const SoNode* node = nullptr;      ///< the shape; not owned
    int layer = 0;                     ///< above 0: drawn on top of what is below
};

namespace kalmyr {

/// Traverses like a frame of `action`, using and filling its caches, but draws nothing. Items come
/// in the order of traversal. Needs no context.
KALMYR_API std::vector<SoRenderItem> collectRenderItems(SoGLRenderAction& action, SoNode* root);

} // namespace kalmyr

namespace kalmyr::detail {

/// Counts of one frame.
struct RenderStatistics {
    std::size_t visits = 0;           ///< nodes traversed
    std::size_t listsBuilt = 0;       ///< lists of separators made
    std::size_t listsReused = 0;      ///< lists of separators that were still valid
    std::size_t listsPatched = 0;     ///< lists of which only what changed was made anew
    std::size_t items = 0;            ///< shapes in view
    std::size_t itemsPlaced = 0;      ///< shapes whose place on the target was computed
    std::size_t culled = 0;           ///< shapes or whole lists out of view
    std::size_t drawCalls = 0;        ///< of the scene
    std::size_t outlineDrawCalls = 0; ///< more, of what is outlined
    std::size_t geometries = 0;       ///< geometries in the context's buffers after the frame
    std::size_t planBytes = 0;        ///< of the frame's own tables in the context
    std::size_t geometryBytes = 0;    ///< of those buffers, used or not
    std::size_t textures = 0;         ///< images in the context after the frame
    double traverseSeconds = 0;       ///< making the list
    double flattenSeconds = 0;        ///< placing, culling, sorting
    double submitSeconds = 0;         ///< handing over to OpenGL
};

} // namespace kalmyr::detail
