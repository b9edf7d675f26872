#pragma once

#include <string>

struct SoProgramValues;

namespace kalmyr::detail {

/// What a shader program can do; each combination that a scene needs is compiled once a context.
enum ShaderFeature : unsigned {
    SHADER_LIT = 1,
    SHADER_SPECULAR = 2,
    SHADER_MANY_LIGHTS = 4, ///< any number and kind of lights; otherwise one directional light
    SHADER_TWO_SIDED = 8,
    SHADER_COLORS = 16, ///< diffuse colours and opacity per vertex
    SHADER_TEXTURE = 32,
    SHADER_FOG = 64,
    SHADER_SCREEN_DOOR = 128,
    SHADER_WIDE_LINES = 256, ///< lines as quads, with width and pattern
    SHADER_CLIP = 512,
    SHADER_SILHOUETTE = 1024, ///< with wide lines: of edges with their two triangles' corners
    SHADER_MASK =
        2048, ///< what is covered, and what of it nothing in `depths` hides, as red and green
    SHADER_PIXEL_OFFSETS = 4096, ///< vertices stand so many pixels away from their positions
    SHADER_BACKGROUND = 8192,    ///< stands alone
    SHADER_ANAGLYPH = SHADER_BACKGROUND + 1, ///< the same
    SHADER_PLANE_TABLE = 1u << 18, ///< with clip planes: more than the uniform block holds
    SHADER_LIGHT_TABLE = 1u << 19, ///< with many lights: the same
    SHADER_INSTANCED = 1u << 20,   ///< place and look from the tables of a draw plan
    SHADER_PEEL = 1u << 21,        ///< one of the layers of GLPeeling
    SHADER_DASHES = 1u << 23,      ///< wide lines whose pattern goes on from segment to segment
    SHADER_SAMPLES = 1u << 22      ///< with peeling: each sample of a pixel by itself
};

/// Texture unit of the depths that SHADER_MASK compares with.
constexpr int kDepthUnit = 1;
/// Texture units of the tables of SHADER_INSTANCED.
constexpr int kInstanceUnit = 14;
constexpr int kMaterialUnit = 15;
/// Texture unit of the lights and planes that the uniform block does not hold.
constexpr int kSurroundingsUnit = 13;
/// Texture unit of where in the pattern segments begin, for SHADER_DASHES.
constexpr int kDashUnit = 11;

/// Limits of the uniform block of lights and planes. More planes, or all lights where there are
/// more, are read from a table.
constexpr int kMaxLights = 16;
constexpr int kMaxClipPlanes = 6;
constexpr int kMaxBackgroundStops = 24;

/// Places in the array of vectors that describe one appearance.
enum MaterialSlot : int {
    SLOT_DIFFUSE = 0,   ///< and opacity
    SLOT_AMBIENT = 1,   ///< for the ambient part of lights; and the specular exponent
    SLOT_SPECULAR = 2,  ///< and line pattern
    SLOT_EMISSIVE = 3,  ///< with the environment's ambient light; and line width in pixels
    SLOT_TEXTURE_U = 4, ///< texture matrix
    SLOT_TEXTURE_V = 5,
    SLOT_BLEND_COLOR = 6, ///< and texture model
    SLOT_FOG = 7,         ///< colour and type
    SLOT_FOG_RANGE = 8,   ///< visibility
    NUM_MATERIAL_SLOTS = 9
};

/// The source text of the stages for a combination; the geometry stage is empty when not needed.
struct ShaderSource {
    std::string vertex;
    std::string geometry;
    std::string fragment;
};
/// Lines of a scene's own text are counted from here on, which tells them from those around it:
/// not all drivers name the text.
constexpr int kOwnTextLine = 100'000;
struct PaintSource;
/// `paint` replaces the texture part of the fragment stage; `own` replaces stages. Null for none.
ShaderSource shaderSource(unsigned features, const PaintSource* paint = nullptr,
                          const SoProgramValues* own = nullptr);

/// The passes that turn a mask into an outline; each has a sampler `from`. Distances are in pixels.
/// All but LAY fill the viewport.
enum class OutlinePass {
    COVER,   ///< from depths: where there is any, nothing of the mask is visible
    ROWS,    ///< from the mask: the nearest part of it in the same row
    COLUMNS, ///< from those: the colours of line and rim; uniforms `reach`, `line`, `rim`, `sizes`
    TILES,   ///< from those: which tiles of the picture have any
    LAY ///< from the picture: copies the tiles that have any, as instances of four vertices each;
        ///< sampler `tiles`, uniforms `grid`, `window`
};
constexpr int kNumOutlinePasses = 5;
constexpr int kOutlineTileSize = 32;
/// Pixels beyond which no part of a mask is found.
constexpr int kMaxOutlineReach = 64;
ShaderSource outlineShaderSource(OutlinePass pass);

} // namespace kalmyr::detail
