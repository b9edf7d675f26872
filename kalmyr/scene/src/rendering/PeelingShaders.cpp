#include "rendering/PeelingShaders.h"

namespace kalmyr::detail {

namespace {

constexpr const char* kSampleTop = R"(
#ifdef SAMPLES
#extension GL_ARB_sample_shading : enable
#define SAMPLER sampler2DMS
#define SAMPLE gl_SampleID
#else
#define SAMPLER sampler2D
#define SAMPLE 0
#endif
)";

// Surfaces are in order of their depths; of those that coincide the one drawn last is in front. A
// key says which surface it was: its depth, and the number of its primitive, as floats hold it.
constexpr const char* kPeeling = R"(
uniform SAMPLER peeledKeys;
uniform SAMPLER cover;
layout(std140) uniform Peeling {
    vec4 peeling; // allowance for depths; 1 behind all layers; first pixel
};
uniform int firstPrimitive;
layout(location = 1) out vec2 key;
void peel()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy) - ivec2(peeling.zw);
    float depth = gl_FragCoord.z;
    if (depth > texelFetch(cover, pixel, SAMPLE).r + peeling.x) discard;
    vec2 last = texelFetch(peeledKeys, pixel, SAMPLE).xy;
    float number = float((firstPrimitive + gl_PrimitiveID) & 0xffffff);
    bool isNext = depth == last.x ? number < last.y && peeling.y == 0.0 : depth > last.x;
    if (!isNext) discard;
    key = vec2(depth, number);
    gl_FragDepth = depth;
}
vec4 peeled(vec4 color)
{
    return peeling.y == 0.0 ? vec4(color.rgb * color.a, color.a) : color;
}
)";

constexpr const char* kLayerVertex = R"(
void main()
{
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
}
)";
constexpr const char* kLayer = R"(
uniform SAMPLER from;
uniform ivec2 origin;
out vec4 fragment;
void main()
{
    fragment = texelFetch(from, ivec2(gl_FragCoord.xy) - origin, SAMPLE);
    if (fragment.a == 0.0) discard;
}
)";

} // namespace

std::string peelingText()
{
    return std::string(kSampleTop) + kPeeling;
}

ShaderSource layerShaderSource(bool hasSamples)
{
    const std::string top =
        std::string("#version 330 core\n") + (hasSamples ? "#define SAMPLES\n" : "");
    return {top + kLayerVertex, {}, top + kSampleTop + kLayer};
}

} // namespace kalmyr::detail
