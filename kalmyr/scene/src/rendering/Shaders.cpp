#include "rendering/Shaders.h"

#include "rendering/Anaglyph.h"
#include "rendering/PaintShaders.h"
#include "rendering/PeelingShaders.h"

namespace kalmyr::detail {

namespace {

constexpr const char* kCommon = R"(
layout(std140) uniform View {
    mat4 projection;
    vec4 viewport; // size in pixels; 1 for a parallel projection; distance of the far plane
};
#ifdef INSTANCED
uniform samplerBuffer materials;
vec4 material[9];
void readMaterial(int look)
{
    material[0] = texelFetch(materials, look);
#ifdef LIT
    material[1] = texelFetch(materials, look + 1);
    material[3] = texelFetch(materials, look + 3);
#endif
#ifdef SPECULAR
    material[2] = texelFetch(materials, look + 2);
#endif
#ifdef TEXTURE
    material[4] = texelFetch(materials, look + 4);
    material[5] = texelFetch(materials, look + 5);
    material[6] = texelFetch(materials, look + 6);
#endif
#ifdef FOG
    material[7] = texelFetch(materials, look + 7);
    material[8] = texelFetch(materials, look + 8);
#endif
}
#else
uniform vec4 material[9];
#endif
#if defined(LIT) || defined(CLIP)
struct Light { vec4 position; vec4 color; vec4 direction; vec4 attenuation; };
layout(std140) uniform Surroundings {
    vec4 counts; // of lights and planes; where each begin in the table
    vec4 planes[6];
    Light lights[16];
};
#endif
#if defined(LIGHT_TABLE) || defined(PLANE_TABLE)
uniform samplerBuffer surroundings;
#endif
#ifdef LIGHT_TABLE
Light lightAt(int i)
{
    int first = int(counts.z) + 4 * i;
    return Light(texelFetch(surroundings, first), texelFetch(surroundings, first + 1),
                 texelFetch(surroundings, first + 2), texelFetch(surroundings, first + 3));
}
#else
#define lightAt(i) lights[i]
#endif
#ifdef CLIP
#define CUT(eye) for (int i = 0; i < 6; ++i) gl_ClipDistance[i] = dot(vec4(eye, 1.0), planes[i])
#endif
)";

constexpr const char* kVertex = R"(
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 texCoord;
layout(location = 3) in vec4 color;
#ifdef PIXEL_OFFSETS
layout(location = 7) in vec2 pixelOffset;
#endif
#ifdef INSTANCED
layout(location = 4) in int slot;
uniform int firstSlot;
uniform samplerBuffer instances;
flat out int look;
vec4 toEye[7];
void readInstance()
{
    int first = (firstSlot + slot) * 4;
    vec4 x = texelFetch(instances, first);
    vec4 y = texelFetch(instances, first + 1);
    vec4 z = texelFetch(instances, first + 2);
    vec4 more = texelFetch(instances, first + 3);
    toEye[0] = x;
    toEye[1] = y;
    toEye[2] = z;
    toEye[3] = vec4(x.w, y.w, z.w, 1.0);
#ifdef LIT
    toEye[4].xyz = more.y * cross(y.xyz, z.xyz);
    toEye[5].xyz = more.y * cross(z.xyz, x.xyz);
    toEye[6].xyz = more.y * cross(x.xyz, y.xyz);
#endif
    look = int(more.x) * 9;
#ifdef TEXTURE
    readMaterial(look);
#endif
}
#else
uniform vec4 toEye[7]; // columns of the matrix, then of the normals' matrix
#endif
out Vertex {
    vec3 eye;
#ifdef LIT
    vec3 normal;
#endif
#ifdef TEXTURE
    vec2 texCoord;
#endif
#ifdef COLORS
    vec4 color;
#endif
} o;
#ifdef CLIP
out float gl_ClipDistance[6];
#endif
#ifdef PAINT
void paintVertex();
#endif
// Everything that the standard look needs of a vertex.
void standardVertex(vec3 position, vec3 normal)
{
#ifdef INSTANCED
    readInstance();
#endif
    vec3 eye = toEye[0].xyz * position.x + toEye[1].xyz * position.y + toEye[2].xyz * position.z
               + toEye[3].xyz;
    o.eye = eye;
#ifdef LIT
    o.normal = toEye[4].xyz * normal.x + toEye[5].xyz * normal.y + toEye[6].xyz * normal.z;
#endif
#ifdef TEXTURE
    vec3 t = vec3(texCoord, 1.0);
    o.texCoord = vec2(dot(material[4].xyz, t), dot(material[5].xyz, t));
#endif
#ifdef COLORS
    o.color = color.abgr; // packed with red in the highest byte
#endif
#ifdef CLIP
    CUT(eye);
#endif
#ifdef PAINT
    paintVertex();
#endif
    gl_Position = projection * vec4(eye, 1.0);
#ifdef PIXEL_OFFSETS
    // As in PixelOffsets.cpp. All vertices of one position lie on one side of the near plane.
    if (gl_Position.w > 0.0) {
        vec2 middle = 0.5 * viewport.xy;
        vec2 place = floor(gl_Position.xy / gl_Position.w * middle + middle + 0.002) + pixelOffset;
        gl_Position.xy = (place / middle - 1.0) * gl_Position.w;
    }
#endif
}
)";

constexpr const char* kVertexMain = R"(
void main()
{
    standardVertex(position, normal);
}
)";

// Turns a segment into a quad of the wanted width on the screen.
constexpr const char* kGeometry = R"(
#ifdef SILHOUETTE
layout(lines_adjacency) in;
#define A 1
#define B 2
#else
layout(lines) in;
#define A 0
#define B 1
#endif
layout(triangle_strip, max_vertices = 4) out;
in Vertex {
    vec3 eye;
#ifdef LIT
    vec3 normal;
#endif
#ifdef TEXTURE
    vec2 texCoord;
#endif
#ifdef COLORS
    vec4 color;
#endif
} i[];
out Vertex {
    vec3 eye;
#ifdef LIT
    vec3 normal;
#endif
#ifdef TEXTURE
    vec2 texCoord;
#endif
#ifdef COLORS
    vec4 color;
#endif
} o;
noperspective out float along;
#ifdef DASHES
uniform samplerBuffer dashStarts;
#endif
#ifdef CLIP
out float gl_ClipDistance[6];
#endif
#ifdef PAINT
void paintCorner(float t);
#endif
void corner(float t, vec4 place, vec2 side, float distance)
{
    o.eye = mix(i[A].eye, i[B].eye, t);
#ifdef LIT
    o.normal = mix(i[A].normal, i[B].normal, t);
#endif
#ifdef TEXTURE
    o.texCoord = mix(i[A].texCoord, i[B].texCoord, t);
#endif
#ifdef COLORS
    o.color = mix(i[A].color, i[B].color, t);
#endif
#ifdef CLIP
    CUT(o.eye);
#endif
#ifdef PAINT
    paintCorner(t);
#endif
    along = distance;
    gl_PrimitiveID = gl_PrimitiveIDIn;
    gl_Position = vec4(place.xy + side * place.w, place.z, place.w);
    EmitVertex();
}
#ifdef SILHOUETTE
bool facing(vec3 a, vec3 b, vec3 c)
{
    vec3 toEye = viewport.z > 0.5 ? vec3(0.0, 0.0, 1.0) : -a;
    return dot(cross(b - a, c - a), toEye) > 0.0;
}
#endif
void main()
{
#ifdef SILHOUETTE
    if (facing(i[1].eye, i[2].eye, i[0].eye) == facing(i[2].eye, i[1].eye, i[3].eye)) return;
#endif
    vec4 a = gl_in[A].gl_Position;
    vec4 b = gl_in[B].gl_Position;
    // The part in front of the eye: points behind it have no place on the screen.
    float da = a.z + a.w;
    float db = b.z + b.w;
    if (da < 0.0 && db < 0.0) return;
    float ta = da < 0.0 ? da / (da - db) : 0.0;
    float tb = db < 0.0 ? da / (da - db) : 1.0;
    vec4 from = mix(a, b, ta);
    vec4 to = mix(a, b, tb);
    vec2 pixels = (to.xy / to.w - from.xy / from.w) * 0.5 * viewport.xy;
    float size = length(pixels);
    vec2 dir = size > 1e-6 ? pixels / size : vec2(1.0, 0.0);
    vec2 side = vec2(-dir.y, dir.x) * max(material[3].w, 1.0) / viewport.xy;
    float start = 0.0;
#ifdef DASHES
    start = texelFetch(dashStarts, gl_PrimitiveIDIn).r;
#endif
    corner(ta, from, side, start);
    corner(ta, from, -side, start);
    corner(tb, to, side, start + size);
    corner(tb, to, -side, start + size);
    EndPrimitive();
}
)";

constexpr const char* kFragment = R"(
in Vertex {
    vec3 eye;
#ifdef LIT
    vec3 normal;
#endif
#ifdef TEXTURE
    vec2 texCoord;
#endif
#ifdef COLORS
    vec4 color;
#endif
} v;
#ifdef WIDE_LINES
noperspective in float along;
#endif
#if defined(TEXTURE) && !defined(NO_IMAGE)
#define IMAGE
uniform sampler2D image;
#endif
#ifdef MASK
uniform sampler2D depths;
#endif
layout(location = 0) out vec4 fragment;
#ifdef INSTANCED
flat in int look;
#endif

#ifdef LIT
void shine(Light source, vec3 n, vec3 toViewer, vec3 diffuse, inout vec3 sum)
{
    vec3 l = source.position.xyz;
    float strength = 1.0;
#ifdef MANY_LIGHTS
    if (source.position.w > 0.5) {
        l -= v.eye;
        float d = length(l);
        l /= max(d, 1e-20);
        vec3 falloff = source.attenuation.xyz;
        float reach = length(source.direction.xyz);
        if (d > reach) return;
        strength = 1.0 / max(falloff.x + d * (falloff.y + d * falloff.z), 1e-6);
        if (source.position.w > 1.5) {
            float c = dot(-l, source.direction.xyz) / max(reach, 1e-20);
            float fading = source.attenuation.w;
            if (c < source.direction.w) {
                strength = 0.0;
            } else if (fading > 0.0) {
                strength *= pow(max(c, 0.0), fading);
            } else if (fading < 0.0) {
                float cutOff = acos(source.direction.w);
                strength *= clamp((cutOff - acos(min(c, 1.0))) / max(cutOff + 1.0 + fading, 1e-6),
                                  0.0, 1.0);
            }
        }
    }
#endif
    vec3 color = source.color.rgb * strength;
    float d = dot(n, l);
    sum += color * (diffuse * max(d, 0.0) + material[1].rgb * source.color.a);
#ifdef SPECULAR
    if (d > 0.0)
        sum += color * material[2].rgb
               * (material[1].a > 0.0
                      ? pow(max(dot(n, normalize(l + toViewer)), 0.0), material[1].a) : 1.0);
#endif
}

vec3 light(vec3 diffuse)
{
    vec3 n = normalize(v.normal);
#ifdef TWO_SIDED
    if (!gl_FrontFacing) n = -n;
#endif
    vec3 toViewer = vec3(0.0, 0.0, 1.0);
#ifdef SPECULAR
    if (viewport.z < 0.5) toViewer = normalize(-v.eye);
#endif
    vec3 sum = material[3].rgb;
#ifdef MANY_LIGHTS
    for (int i = 0; i < int(counts.x); ++i) shine(lightAt(i), n, toViewer, diffuse, sum);
#else
    shine(lights[0], n, toViewer, diffuse, sum);
#endif
    return min(sum, vec3(1.0));
}
#endif

#ifdef IMAGE
vec4 paintSurface(vec4 c, vec4 t, int model)
{
    return vec4((model & 1) != 0 ? t.rgb : c.rgb * t.rgb, (model & 2) != 0 ? t.a : c.a);
}
vec4 paint(vec4 c, vec4 t, int model)
{
    if (model == 0) return c * t;
    if (model == 1) return vec4(mix(c.rgb, t.rgb, t.a), c.a);
    if (model == 2) return vec4(mix(c.rgb, material[6].rgb, t.rgb), c.a * t.a);
    return t;
}
#endif

#ifdef FOG
vec3 fog(vec3 c)
{
    float far = material[8].x > 0.0 ? material[8].x : viewport.w;
    float d = length(v.eye) / max(far, 1e-20);
    float clear = material[7].w < 1.5 ? 1.0 - d
                : material[7].w < 2.5 ? exp(-5.545 * d)
                : material[7].w < 3.5 ? exp(-5.545 * d * d)
                : d < 1.0 ? exp(-d / (1.0 - d)) : 0.0;
    return mix(material[7].rgb, c, clamp(clear, 0.0, 1.0));
}
#endif

#ifdef SCREEN_DOOR
const float kHoles[16] = float[16](0.5, 8.5, 2.5, 10.5, 12.5, 4.5, 14.5, 6.5,
                                   3.5, 11.5, 1.5, 9.5, 15.5, 7.5, 13.5, 5.5);
#endif

#ifdef PAINT
vec4 paintBefore(vec4 c);
vec4 paintAfter(vec4 c, vec4 plain);
#ifdef LIT
#define PAINT_NORMAL normalize(v.normal)
#elif defined(WIDE_LINES)
#define PAINT_NORMAL (viewport.z > 0.5 ? vec3(0.0, 0.0, 1.0) : normalize(-v.eye))
#else
#define PAINT_NORMAL normalize(cross(dFdx(v.eye), dFdy(v.eye)))
#endif
#endif

// The colour of the standard look.
vec4 standardColor()
{
#ifdef PEEL
    peel();
#endif
#ifdef INSTANCED
    readMaterial(look);
#endif
#ifdef MASK
    // The slope allows for depths that were taken at another place within the pixel, the constant
    // for programs that round differently.
    float slack = fwidth(gl_FragCoord.z) + 5e-7;
#endif
#ifdef PLANE_TABLE
    for (int i = 6; i < int(counts.y); ++i)
        if (dot(vec4(v.eye, 1.0), texelFetch(surroundings, int(counts.w) + i)) < 0.0) discard;
#endif
#ifdef WIDE_LINES
    int bit = int(mod(along, 16.0));
    if (((int(material[2].w) >> bit) & 1) == 0) discard;
#endif
    vec4 c = material[0];
#ifdef COLORS
    c = v.color;
#endif
#ifdef PAINT
    vec4 plain = c;
    c = paintBefore(c);
#endif
#ifdef IMAGE
    vec4 texel = texture(image, v.texCoord);
    int model = int(material[6].a + 0.5);
    if (model >= 4) c = paintSurface(c, texel, model);
#endif
#ifdef LIT
    c.rgb = light(c.rgb);
#endif
#ifdef IMAGE
    if (model < 4) c = paint(c, texel, model);
    if (c.a < 0.004) discard;
#endif
#ifdef PAINT
    c = paintAfter(c, plain);
#endif
#ifdef SCREEN_DOOR
    ivec2 cell = ivec2(gl_FragCoord.xy) & 3;
    if (c.a * 16.0 < kHoles[cell.y * 4 + cell.x]) discard;
    c.a = 1.0;
#endif
#ifdef FOG
    c.rgb = fog(c.rgb);
#endif
#ifdef MASK
    float before = texelFetch(depths, ivec2(gl_FragCoord.xy), 0).r;
    c = vec4(1.0, gl_FragCoord.z <= before + slack ? 1.0 : 0.0, 0.0, 1.0);
#endif
    return c;
}
)";

constexpr const char* kFragmentMain = R"(
void main()
{
    vec4 c = standardColor();
#ifdef PEEL
    c = peeled(c);
#endif
    fragment = c;
}
)";

// A triangle that covers the viewport, without any vertex data. Stops go by the angle from the
// zenith or, when no direction is up, by the share of the picture from its top.
constexpr const char* kBackgroundVertex = R"(
out vec2 place;
void main()
{
    place = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(place, 0.0, 1.0);
}
)";
constexpr const char* kBackgroundFragment = R"(
uniform vec4 material[26]; // number of stops and tangents of the view; up; stops
in vec2 place;
out vec4 fragment;
void main()
{
    int count = int(material[0].x);
    vec3 towards = normalize(vec3(place * material[0].yz, -1.0));
    float angle = material[1].xyz == vec3(0.0) ? 0.5 - 0.5 * place.y
                : acos(clamp(dot(towards, material[1].xyz), -1.0, 1.0));
    vec3 color = material[2].rgb;
    for (int i = 3; i < count + 2; ++i) {
        float from = material[i - 1].a;
        float size = material[i].a - from;
        float t = size > 0.0 ? clamp((angle - from) / size, 0.0, 1.0) : float(angle >= from);
        color = mix(color, material[i].rgb, t);
    }
    fragment = vec4(color, 1.0);
}
)";

constexpr const char* kOutlineFragmentTop = R"(
uniform sampler2D from;
out vec4 fragment;
)";

constexpr const char* kCover = R"(
void main()
{
    if (texelFetch(from, ivec2(gl_FragCoord.xy), 0).r >= 1.0) discard;
    fragment = vec4(0.0);
}
)";

// Of the whole mask, then of its visible part: how many pixels away the nearest pixel of it is, and
// how much of that pixel it covers.
constexpr const char* kRows = R"(
uniform int reach;
void main()
{
    ivec2 at = ivec2(gl_FragCoord.xy);
    int last = textureSize(from, 0).x - 1;
    vec2 all = vec2(255.0, 0.0);
    vec2 seen = vec2(255.0, 0.0);
    for (int d = 0; d <= reach; ++d) {
        vec2 a = texelFetch(from, ivec2(max(at.x - d, 0), at.y), 0).rg;
        vec2 b = texelFetch(from, ivec2(min(at.x + d, last), at.y), 0).rg;
        vec2 most = max(a, b);
        float f = float(d);
        if (most.r > 0.0 && f - most.r < all.x - all.y) all = vec2(f, most.r);
        if (most.g > 0.0 && f - most.g < seen.x - seen.y) seen = vec2(f, most.g);
        if (seen.y == 1.0) break;
    }
    fragment = vec4(all.x / 255.0, all.y, seen.x / 255.0, seen.y);
}
)";

// The edge of the mask runs half a pixel beyond the middle of a pixel that is wholly covered, and
// through the middle of one that is half covered.
constexpr const char* kColumns = R"(
uniform int reach;
uniform vec4 line;
uniform vec4 rim;
uniform vec4 sizes; // widths of the line, of the line where the object is hidden, of the rim; pattern
void main()
{
    ivec2 at = ivec2(gl_FragCoord.xy);
    vec4 here = texelFetch(from, at, 0);
    float inside = here.x == 0.0 ? here.y : 0.0;
    fragment = vec4(0.0);
    if (inside == 1.0) return;
    int last = textureSize(from, 0).y - 1;
    float all = 1000.0;
    float seen = 1000.0;
    for (int d = -reach; d <= reach; ++d) {
        vec4 t = texelFetch(from, ivec2(at.x, clamp(at.y + d, 0, last)), 0);
        float dy = float(d);
        if (t.y > 0.0) all = min(all, length(vec2(t.x * 255.0, dy)) + 0.5 - t.y);
        if (t.w > 0.0) seen = min(seen, length(vec2(t.z * 255.0, dy)) + 0.5 - t.w);
    }
    vec2 edge = sizes.xy + 0.5;
    float lined = max(clamp(edge.x - seen, 0.0, 1.0), clamp(edge.y - all, 0.0, 1.0));
    edge += sizes.z;
    float rimmed = max(clamp(edge.x - seen, 0.0, 1.0), clamp(edge.y - all, 0.0, 1.0));
    int bit = int(gl_FragCoord.x + gl_FragCoord.y) & 15;
    float shown = ((int(sizes.w) >> bit) & 1) == 0 ? 0.0 : 1.0 - inside;
    fragment = (line * lined + rim * (rimmed - lined)) * shown;
}
)";

constexpr const char* kTiles = R"(
void main()
{
    ivec2 first = ivec2(gl_FragCoord.xy) * TILE;
    ivec2 end = min(first + TILE, textureSize(from, 0));
    fragment = vec4(0.0);
    for (int y = first.y; y < end.y; ++y)
        for (int x = first.x; x < end.x; ++x)
            if (texelFetch(from, ivec2(x, y), 0).a > 0.0) {
                fragment = vec4(1.0);
                return;
            }
}
)";

constexpr const char* kLayVertex = R"(
uniform sampler2D tiles;
uniform ivec4 grid; // first tile, number of columns
uniform vec2 window;
void main()
{
    ivec2 tile = grid.xy + ivec2(gl_InstanceID % grid.z, gl_InstanceID / grid.z);
    vec2 corner = vec2((tile + ivec2(gl_VertexID & 1, gl_VertexID >> 1)) * TILE);
    bool isEmpty = texelFetch(tiles, tile, 0).r == 0.0;
    gl_Position = isEmpty ? vec4(2.0, 2.0, 2.0, 1.0) : vec4(corner / window * 2.0 - 1.0, 0.0, 1.0);
}
)";
constexpr const char* kLay = R"(
void main()
{
    fragment = texelFetch(from, ivec2(gl_FragCoord.xy), 0);
    if (fragment.a == 0.0) discard;
}
)";

std::string header(unsigned features)
{
    constexpr struct {
        unsigned feature;
        const char* name;
    } kNames[] = {{SHADER_LIT, "LIT"},
                  {SHADER_SPECULAR, "SPECULAR"},
                  {SHADER_MANY_LIGHTS, "MANY_LIGHTS"},
                  {SHADER_TWO_SIDED, "TWO_SIDED"},
                  {SHADER_COLORS, "COLORS"},
                  {SHADER_TEXTURE, "TEXTURE"},
                  {SHADER_FOG, "FOG"},
                  {SHADER_SCREEN_DOOR, "SCREEN_DOOR"},
                  {SHADER_WIDE_LINES, "WIDE_LINES"},
                  {SHADER_CLIP, "CLIP"},
                  {SHADER_SILHOUETTE, "SILHOUETTE"},
                  {SHADER_MASK, "MASK"},
                  {SHADER_LIGHT_TABLE, "LIGHT_TABLE"},
                  {SHADER_PLANE_TABLE, "PLANE_TABLE"},
                  {SHADER_PIXEL_OFFSETS, "PIXEL_OFFSETS"},
                  {SHADER_INSTANCED, "INSTANCED"},
                  {SHADER_DASHES, "DASHES"},
                  {SHADER_PEEL, "PEEL"},
                  {SHADER_SAMPLES, "SAMPLES"}};
    std::string text = "#version 330 core\n";
    for (const auto& entry : kNames) {
        if (features & entry.feature) {
            text += std::string("#define ") + entry.name + "\n";
        }
    }
    return text;
}

} // namespace

ShaderSource shaderSource(unsigned features, const PaintSource* paint, const SoProgramValues* own)
{
    if (features == SHADER_ANAGLYPH) {
        return anaglyphShaderSource();
    }
    const std::string top = header(features) + (paint ? paint->defines : "");
    if (features & SHADER_BACKGROUND) {
        return {top + kBackgroundVertex, {}, top + kBackgroundFragment};
    }
    const std::string peeling = features & SHADER_PEEL ? peelingText() : std::string();
    ShaderSource source{top + kCommon + kVertex + (paint ? paint->vertex : ""),
                        {},
                        top + peeling + kCommon + kFragment + (paint ? paint->fragment : "")};
    if (features & SHADER_WIDE_LINES) {
        source.geometry = top + kCommon + kGeometry + (paint ? paint->geometry : "");
    }
    const auto ownText = [own](SoProgramValues::Stage stage) {
        return own ? own->stages[stage].text : std::string();
    };
    const std::string lines = "\n#line " + std::to_string(kOwnTextLine + 1) + "\n";
    // An own main() is called by one that does what no text of a scene should have to care for.
    const auto addMain = [&](std::string& text, SoProgramValues::Stage stage, const char* main,
                             const char* after) {
        const std::string mine = ownText(stage);
        text += mine.empty() ? main
                             : "\n#define main ownMain" + lines + mine + "\n#undef main\n"
                                   + "void main() { ownMain(); " + after + " }\n";
    };
    addMain(source.vertex, SoProgramValues::VERTEX, kVertexMain, "");
    addMain(source.fragment, SoProgramValues::FRAGMENT, kFragmentMain,
            features & SHADER_PEEL ? "fragment = peeled(fragment);" : "");
    if (const std::string mine = ownText(SoProgramValues::GEOMETRY); !mine.empty()) {
        source.geometry = top + kCommon + lines + mine + "\n";
    }
    return source;
}

ShaderSource outlineShaderSource(OutlinePass pass)
{
    constexpr const char* kTexts[kNumOutlinePasses] = {kCover, kRows, kColumns, kTiles, kLay};
    const std::string top =
        "#version 330 core\n#define TILE " + std::to_string(kOutlineTileSize) + "\n";
    return {top + (pass == OutlinePass::LAY ? kLayVertex : kBackgroundVertex),
            {},
            top + kOutlineFragmentTop + kTexts[static_cast<std::size_t>(pass)]};
}

} // namespace kalmyr::detail
