#include "rendering/PaintShaders.h"

#include <kalmyr/rendering/SoRenderAppearance.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

using Stage = SoTextureStage;

// Reflection of the line of sight in the space of the eye, and the two ways to look it up. A sphere
// map shows the reflection as a mirrored ball does that is seen from far away.
constexpr const char* kReflection = R"(
vec3 mirrored()
{
    vec3 towards = viewport.z > 0.5 ? vec3(0.0, 0.0, -1.0) : normalize(v.eye);
    vec3 n = PAINT_NORMAL;
    return reflect(towards, dot(n, towards) > 0.0 ? -n : n);
}
vec4 sphereCoord()
{
    vec3 r = mirrored();
    float m = 2.0 * sqrt(max(dot(r.xy, r.xy) + (r.z + 1.0) * (r.z + 1.0), 1e-12));
    return vec4(r.xy / m + 0.5, 0.0, 1.0);
}
)";

/// `number` in a name, `name` in the text.
std::string with(std::string text, std::size_t unit)
{
    const std::string number = std::to_string(unit);
    for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#', at)) {
        text.replace(at, 1, number);
    }
    return text;
}

/// Attribute location of a unit's own coordinates; -1 for none.
int locationOf(const SoGeometry& geometry, std::size_t unit)
{
    if (!geometry.extras) {
        return -1;
    }
    const auto& sets = geometry.extras->texCoordSets;
    const auto found = std::find_if(sets.begin(), sets.end(), [&](const auto& set) {
        return set.unit == static_cast<int>(unit) && set.values.size() >= geometry.positions.size();
    });
    const int location = kFirstExtraLocation + static_cast<int>(found - sets.begin());
    return found != sets.end() && location < kEndOfLocations ? location : -1;
}

bool hasSet(const SoGeometry& geometry, std::size_t unit)
{
    return locationOf(geometry, unit) >= 0;
}

const char* samplerOf(Stage::Kind kind)
{
    return kind == Stage::VOLUME ? "sampler3D" : kind == Stage::CUBE ? "samplerCube" : "sampler2D";
}

/// Expression of the looked up colour; rows of a cube's sides begin at their top.
std::string lookUp(const Stage& stage, std::size_t unit)
{
    std::string coord;
    switch (stage.coordinates) {
    case Stage::SPHERE:
        coord = "(unitMatrices[#] * sphereCoord())";
        break;
    case Stage::REFLECTION:
        coord = "(unitMatrices[#] * vec4(eyeToWorld * mirrored(), 1.0))";
        break;
    default:
        coord = "(unitMatrices[#] * paintCoord#)";
    }
    switch (stage.kind) {
    case Stage::VOLUME:
    case Stage::CUBE:
        return with("texture(unit#, " + coord + ".xyz)", unit);
    default:
        return with("texture(unit#, " + coord + ".xy)", unit);
    }
}

std::string sourceText(const Stage& stage, std::size_t unit)
{
    switch (stage.source) {
    case Stage::DIFFUSE:
        return "plain";
    case Stage::SPECULAR:
        return "vec4(material[2].rgb, plain.a)";
    case Stage::FACTOR:
        return with("unitFactors[#]", unit);
    default:
        return "c";
    }
}

/// What the model of a texture makes of the current colour `c` and the texel `t`.
const char* modelText(SoTextureValues::Model model)
{
    switch (model) {
    case SoTextureValues::DECAL:
        return "vec4(mix(c.rgb, t.rgb, t.a), c.a)";
    case SoTextureValues::BLEND:
        return "vec4(mix(c.rgb, unitBlends[#].rgb, t.rgb), c.a * t.a)";
    case SoTextureValues::REPLACE:
        return "t";
    default:
        return "c * t";
    }
}

/// What a mode makes of the texel `t` and the other argument `o`.
const char* modeText(Stage::Mode mode)
{
    switch (mode) {
    case Stage::REPLACE:
    case Stage::SELECTARG1:
        return "t";
    case Stage::SELECTARG2:
        return "o";
    case Stage::MODULATE2X:
        return "t * o * 2.0";
    case Stage::MODULATE4X:
        return "t * o * 4.0";
    case Stage::ADD:
        return "t + o";
    case Stage::ADDSIGNED:
        return "t + o - 0.5";
    case Stage::ADDSIGNED2X:
        return "(t + o - 0.5) * 2.0";
    case Stage::SUBTRACT:
        return "t - o";
    case Stage::ADDSMOOTH:
        return "t + (1.0 - t) * o";
    case Stage::BLENDDIFFUSEALPHA:
        return "mix(o, t, plain.a)";
    case Stage::BLENDTEXTUREALPHA:
        return "mix(o, t, t.a)";
    case Stage::BLENDFACTORALPHA:
        return "mix(o, t, unitFactors[#].a)";
    case Stage::BLENDCURRENTALPHA:
        return "mix(o, t, c.a)";
    case Stage::MODULATEALPHA_ADDCOLOR:
        return "vec4(t.rgb + t.a * o.rgb, t.a * o.a)";
    case Stage::MODULATEINVALPHA_ADDCOLOR:
        return "vec4(t.rgb + (1.0 - t.a) * o.rgb, t.a * o.a)";
    case Stage::MODULATEINVCOLOR_ADDALPHA:
        return "vec4((1.0 - t.rgb) * o.rgb + t.a, t.a * o.a)";
    case Stage::DOTPRODUCT3:
        return "vec4(4.0 * dot(t.rgb - 0.5, o.rgb - 0.5))";
    default:
        return "t * o";
    }
}

/// Statements that mix one unit into `c`.
std::string mixText(const SoRenderAppearance& look, std::size_t unit)
{
    const Stage& stage = stageOf(look, unit);
    std::string text = "    t = " + lookUp(stage, unit) + ";\n";
    if (stage.mode == Stage::AS_MODEL) {
        text +=
            with(std::string("    c = ") + modelText(textureOf(look, unit).model) + ";\n", unit);
    } else {
        const bool apart = stage.alphaMode != Stage::AS_MODEL && stage.alphaMode != stage.mode;
        text += "    o = " + sourceText(stage, unit) + ";\n    m = ";
        text += with(std::string(modeText(stage.mode)) + ";\n", unit);
        if (apart) {
            const bool keeps = stage.alphaMode == Stage::OFF;
            text += keeps ? "    m.a = c.a;\n"
                          : with(std::string("    m.a = (") + modeText(stage.alphaMode) + ").a;\n",
                                 unit);
        }
        text += "    c = clamp(m, 0.0, 1.0);\n";
    }
    if (stage.function == Stage::COMPLEMENT) {
        text += "    c = 1.0 - c;\n";
    } else if (stage.function == Stage::ALPHAREPLICATE) {
        text += "    c = c.aaaa;\n";
    }
    return text;
}

const char* comparison(SoLookExtras::DepthFunction function)
{
    constexpr const char* kTexts[] = {"false",  "true",   "a < b", "a <= b",
                                      "a == b", "a >= b", "a > b", "a != b"};
    return kTexts[function];
}

bool isSurface(const SoRenderAppearance& look, std::size_t unit)
{
    return unit == 0 && stageOf(look, 0).mode == Stage::AS_MODEL
           && look.texture.model == SoTextureValues::SURFACE;
}

/// The first unit may paint the surface before it is lit.
void addBefore(const SoRenderAppearance& look, const SoGeometry& geometry, std::string& text)
{
    text += "vec4 paintBefore(vec4 c)\n{\n";
    if (isPainted(look, geometry, 0) && isSurface(look, 0)) {
        text += "    vec4 t = " + lookUp(stageOf(look, 0), 0) + ";\n";
        text += std::string("    c = vec4(")
                + (look.texture.hasColors() ? "t.rgb" : "c.rgb * t.rgb") + ", "
                + (look.texture.hasAlpha() ? "t.a" : "c.a") + ");\n";
    }
    text += "    return c;\n}\n";
}

void addAfter(const SoRenderAppearance& look, const SoGeometry& geometry, std::string& text)
{
    text += "vec4 paintAfter(vec4 c, vec4 plain)\n{\n    vec4 t, o, m;\n";
    bool painted = false;
    for (std::size_t unit = 0; unit < numUnits(look); ++unit) {
        if (isPainted(look, geometry, unit)) {
            painted = true;
            text += isSurface(look, unit) ? "" : mixText(look, unit);
        }
    }
    text += painted ? "    if (c.a < 0.004) discard;\n" : "";
    const SoLookExtras& extras = *look.extras;
    if (extras.alphaFunction != SoLookExtras::ALWAYS) {
        text += "    float a = c.a, b = alphaValue;\n";
        text += std::string("    if (!(") + comparison(extras.alphaFunction) + ")) discard;\n";
    }
    text += "    return c;\n}\n";
}

} // namespace

bool needsPaint(const SoRenderAppearance& look)
{
    return look.extras
           && (look.extras->hasStages() || look.extras->alphaFunction != SoLookExtras::ALWAYS);
}

bool hasOwnState(const SoRenderAppearance& look)
{
    const SoLookExtras* extras = look.extras.get();
    return extras
           && (needsPaint(look) || extras->program || extras->hasDepthSettings()
               || extras->hasOffset());
}

std::size_t numUnits(const SoRenderAppearance& look)
{
    return std::max<std::size_t>(1, look.extras ? look.extras->stages.size() : 0);
}

const SoTextureStage& stageOf(const SoRenderAppearance& look, std::size_t unit)
{
    static const SoTextureStage plain;
    return look.extras && unit < look.extras->stages.size() ? look.extras->stages[unit] : plain;
}

const SoTextureValues& textureOf(const SoRenderAppearance& look, std::size_t unit)
{
    return unit == 0 ? look.texture : stageOf(look, unit).texture;
}

bool isPainted(const SoRenderAppearance& look, const SoGeometry& geometry, std::size_t unit)
{
    const Stage& stage = stageOf(look, unit);
    if (textureOf(look, unit).image.isNull() || stage.mode == Stage::OFF) {
        return false;
    }
    return stage.coordinates != Stage::GIVEN || hasSet(geometry, unit)
           || geometry.texCoords.size() >= geometry.positions.size();
}

PaintSource paintSource(const SoRenderAppearance& look, const SoGeometry& geometry)
{
    PaintSource source;
    const std::size_t units = numUnits(look);
    std::string vertexBody, cornerBody;
    std::string declarations;
    bool mirrors = false;
    for (std::size_t unit = 0; unit < units; ++unit) {
        if (!isPainted(look, geometry, unit)) {
            continue;
        }
        const Stage& stage = stageOf(look, unit);
        declarations += std::string("uniform ") + samplerOf(stage.kind) + with(" unit#;\n", unit);
        if (stage.coordinates != Stage::GIVEN) {
            mirrors = true;
            continue;
        }
        const bool own = hasSet(geometry, unit);
        // A stage between has the names twice.
        const std::string number = std::to_string(unit);
        source.vertex += "#ifdef WIDE_LINES\n#define paintCoord" + number + " lineCoord" + number
                         + "\n#endif\nout vec4 paintCoord" + number + ";\n";
        source.geometry += with("in vec4 lineCoord#[];\nout vec4 paintCoord#;\n", unit);
        cornerBody += with("    paintCoord# = mix(lineCoord#[A], lineCoord#[B], t);\n", unit);
        declarations += with("in vec4 paintCoord#;\n", unit);
        if (own) {
            const std::string location = std::to_string(locationOf(geometry, unit));
            source.vertex +=
                "layout(location = " + location + with(") in vec4 texCoords#;\n", unit);
            vertexBody += with("    paintCoord# = texCoords#;\n", unit);
        } else {
            vertexBody += with("    paintCoord# = vec4(texCoord, 0.0, 1.0);\n", unit);
        }
    }
    const std::string count = std::to_string(units);
    source.defines = "#define PAINT\n";
    source.vertex += "void paintVertex()\n{\n" + vertexBody + "}\n";
    source.geometry += "void paintCorner(float t)\n{\n" + cornerBody + "}\n";
    source.fragment = "uniform mat4 unitMatrices[" + count + "];\nuniform vec4 unitFactors[" + count
                      + "];\nuniform vec4 unitBlends[" + count
                      + "];\nuniform mat3 eyeToWorld;\nuniform float alphaValue;\n" + declarations;
    if (mirrors) {
        source.fragment += kReflection;
    }
    addBefore(look, geometry, source.fragment);
    addAfter(look, geometry, source.fragment);
    return source;
}

} // namespace kalmyr::detail
