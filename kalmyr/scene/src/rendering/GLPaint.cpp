#include "rendering/GLPaint.h"

#include "rendering/PaintShaders.h"

#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <functional>

namespace kalmyr::detail {

namespace {

/// Frames that a program is kept without being used.
constexpr std::uint64_t kKeptFrames = 60;

const SoProgramValues* ownProgram(const SoRenderAppearance& look)
{
    return look.extras ? look.extras->program.get() : nullptr;
}

unsigned coordinatesOf(const SoGeometry& geometry)
{
    unsigned bits = geometry.texCoords.size() >= geometry.positions.size() ? 1 : 0;
    if (geometry.extras) {
        for (const auto& set : geometry.extras->texCoordSets) {
            bits |= 2u << set.unit;
        }
        for (const auto& input : geometry.extras->attributes) {
            const auto hash = static_cast<unsigned>(std::hash<std::string>()(input.name));
            bits = std::rotl(bits ^ hash, 7) + static_cast<unsigned>(input.components);
        }
    }
    return bits;
}

GLenum functionOf(SoLookExtras::DepthFunction function)
{
    constexpr GLenum kFunctions[] = {GL_NEVER, GL_ALWAYS, GL_LESS,    GL_LEQUAL,
                                     GL_EQUAL, GL_GEQUAL, GL_GREATER, GL_NOTEQUAL};
    return kFunctions[function];
}

GLint placeOf(GLuint program, const std::string& name)
{
    return glGetUniformLocation(program, name.c_str());
}

void setFloats(GLint place, int components, const std::vector<float>& values)
{
    const auto count = static_cast<GLsizei>(values.size() / static_cast<std::size_t>(components));
    switch (components) {
    case 1:
        return glUniform1fv(place, count, values.data());
    case 2:
        return glUniform2fv(place, count, values.data());
    case 3:
        return glUniform3fv(place, count, values.data());
    default:
        return glUniform4fv(place, count, values.data());
    }
}

void setIntegers(GLint place, int components, const std::vector<std::int32_t>& values)
{
    const auto count = static_cast<GLsizei>(values.size() / static_cast<std::size_t>(components));
    switch (components) {
    case 1:
        return glUniform1iv(place, count, values.data());
    case 2:
        return glUniform2iv(place, count, values.data());
    case 3:
        return glUniform3iv(place, count, values.data());
    default:
        return glUniform4iv(place, count, values.data());
    }
}

/// Puts the name of an own text and the line in it in place of the driver's: "0:100012(3): error"
/// or "0(100012) : error" becomes "NAME:12...".
std::string placesInOwnText(const std::string& log, const std::string& name)
{
    std::string out;
    for (std::size_t at = 0; at < log.size();) {
        const std::size_t end = std::min(log.find('\n', at), log.size());
        const char* const last = log.data() + end;
        int line = 0;
        const char* digits =
            std::find_if(log.data() + at, last, [](char c) { return c == ':' || c == '('; });
        const char* rest = digits;
        if (digits != last) {
            rest = std::from_chars(digits + 1, last, line).ptr;
        }
        if (line > kOwnTextLine) {
            out += name + ":" + std::to_string(line - kOwnTextLine) + std::string(rest, last);
        } else {
            out += log.substr(at, end - at);
        }
        out += end < log.size() ? "\n" : "";
        at = end + 1;
    }
    while (!out.empty() && (out.back() == '\n' || out.back() == '\0')) {
        out.pop_back();
    }
    return out.find(name) == std::string::npos ? name + ": " + out : out;
}

/// The inputs that the geometry has, and for each HAS_ and its name.
std::string inputDeclarations(const SoGeometry& geometry)
{
    std::string text;
    if (!geometry.extras) {
        return text;
    }
    constexpr const char* kTypes[] = {"float", "vec2", "vec3", "vec4"};
    int location = kFirstExtraLocation + static_cast<int>(geometry.extras->texCoordSets.size());
    for (const auto& input : geometry.extras->attributes) {
        if (location < kEndOfLocations) {
            text += "layout(location = " + std::to_string(location++) + ") in "
                    + kTypes[std::clamp(input.components, 1, 4) - 1] + " " + input.name
                    + ";\n#define HAS_" + input.name + "\n";
        }
    }
    return text;
}

} // namespace

GLuint linkOwnProgram(const ShaderSource& source, const SoProgramValues& values)
{
    const struct {
        GLenum stage;
        const std::string& text;
        const SoProgramValues::Source& own;
    } stages[] = {{GL_VERTEX_SHADER, source.vertex, values.stages[SoProgramValues::VERTEX]},
                  {GL_GEOMETRY_SHADER, source.geometry, values.stages[SoProgramValues::GEOMETRY]},
                  {GL_FRAGMENT_SHADER, source.fragment, values.stages[SoProgramValues::FRAGMENT]}};
    const GLuint program = glCreateProgram();
    bool ok = true;
    for (const auto& [stage, text, own] : stages) {
        if (text.empty()) {
            continue;
        }
        const GLuint shader = glCreateShader(stage);
        const char* const bytes = text.c_str();
        glShaderSource(shader, 1, &bytes, nullptr);
        glCompileShader(shader);
        GLint compiled = 0;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
        if (!compiled) {
            char log[2048] = "";
            glGetShaderInfoLog(shader, sizeof log, nullptr, log);
            SoError::post("%s", placesInOwnText(log, own.name).c_str());
            ok = false;
        }
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    GLint linked = 0;
    if (ok) {
        glLinkProgram(program);
        glGetProgramiv(program, GL_LINK_STATUS, &linked);
        if (!linked) {
            char log[2048] = "";
            glGetProgramInfoLog(program, sizeof log, nullptr, log);
            SoError::post("%s: %s", values.name.c_str(), log);
        }
    }
    if (linked) {
        return program;
    }
    glDeleteProgram(program);
    return 0;
}

std::vector<GLuint> uploadExtras(const SoGeometry::Extras& extras, std::size_t numVertices)
{
    std::vector<GLuint> buffers;
    int location = kFirstExtraLocation;
    const auto add = [&](int components, const float* values, std::size_t count) {
        // Arrays that are too short are not read at all.
        const bool isRead = location < kEndOfLocations && numVertices > 0
                            && count >= numVertices * static_cast<std::size_t>(components);
        ++location;
        if (!isRead) {
            return;
        }
        glGenBuffers(1, &buffers.emplace_back());
        glBindBuffer(GL_ARRAY_BUFFER, buffers.back());
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(count * sizeof(float)), values,
                     GL_STATIC_DRAW);
        const auto at = static_cast<GLuint>(location - 1);
        glEnableVertexAttribArray(at);
        glVertexAttribPointer(at, components, GL_FLOAT, GL_FALSE, 0, nullptr);
    };
    for (const auto& set : extras.texCoordSets) {
        add(4, set.values.empty() ? nullptr : set.values[0].getValue(), set.values.size() * 4);
    }
    for (const auto& input : extras.attributes) {
        add(input.components, input.values.data(), input.values.size());
    }
    return buffers;
}

struct GLPaint::Program : GLProgram {
    std::vector<GLint> units; ///< places of the samplers
    GLint matrices = -1;
    GLint factors = -1;
    GLint blends = -1;
    GLint eyeToWorld = -1;
    GLint alphaValue = -1;
    std::uint64_t frame = 0;
};

GLPaint::GLPaint() = default;
GLPaint::~GLPaint() = default;

const GLProgram* GLPaint::find(const SoRenderAppearance& look, const SoGeometry& geometry,
                               unsigned features)
{
    const SoProgramValues* own = ownProgram(look);
    if (!needsPaint(look) && !own) {
        return nullptr;
    }
    const Key key{&look, features, coordinatesOf(geometry)};
    const auto [found, isNew] = m_found.try_emplace(key, nullptr);
    if (isNew) {
        found->second = make(look, geometry, features);
    }
    return found->second;
}

GLPaint::Program* GLPaint::make(const SoRenderAppearance& look, const SoGeometry& geometry,
                                unsigned features)
{
    PaintSource paint;
    const bool paints = needsPaint(look);
    if (paints) {
        paint = paintSource(look, geometry);
    }
    Program* program = nullptr;
    // Wide lines have a geometry stage already.
    const bool wide = features & SHADER_WIDE_LINES;
    if (const SoProgramValues* own = wide ? nullptr : ownProgram(look)) {
        PaintSource withInputs = paint;
        withInputs.vertex += inputDeclarations(geometry);
        // Coordinates are passed on for the program's own textures too.
        withInputs.defines += paints || look.texture.image.isNull() ? "#define NO_IMAGE\n" : "";
        program = link(shaderSource(features, &withInputs, own), own);
    }
    if (!program && paints) {
        const unsigned others = features & ~static_cast<unsigned>(SHADER_TEXTURE);
        program = link(shaderSource(others, &paint, nullptr), nullptr);
    }
    return program;
}

/// Null for programs that the driver refuses.
GLPaint::Program* GLPaint::link(const ShaderSource& source, const SoProgramValues* own)
{
    const std::string key = source.vertex + source.geometry + source.fragment;
    if (const auto known = m_programs.find(key); known != m_programs.end()) {
        known->second->frame = m_frame;
        return known->second.get();
    }
    if (m_refused.contains(key)) {
        return nullptr;
    }
    auto program = std::make_unique<Program>();
    program->program = own ? linkOwnProgram(source, *own) : linkProgram(source);
    if (!program->program) {
        m_refused.insert(key);
        return nullptr;
    }
    findProgramPlaces(*program);
    glUseProgram(program->program);
    for (int unit = 0; unit < SoTextureUnitElement::kMaxUnits; ++unit) {
        program->units.push_back(placeOf(program->program, "unit" + std::to_string(unit)));
        if (program->units.back() >= 0) {
            glUniform1i(program->units.back(), kFirstUnit + unit);
        }
    }
    program->matrices = placeOf(program->program, "unitMatrices");
    program->factors = placeOf(program->program, "unitFactors");
    program->blends = placeOf(program->program, "unitBlends");
    program->eyeToWorld = placeOf(program->program, "eyeToWorld");
    program->alphaValue = placeOf(program->program, "alphaValue");
    program->frame = m_frame;
    return m_programs.emplace(key, std::move(program)).first->second.get();
}

void GLPaint::bind(const GLProgram& used, const SoRenderAppearance& look,
                   const SoGeometry& geometry, const SbMatrix& viewing, GLTextures& textures)
{
    const auto& program = static_cast<const Program&>(used);
    if (program.eyeToWorld >= 0) {
        const SbMatrix fromEye = viewing.inverse();
        float rows[9];
        for (int i = 0; i < 9; ++i) {
            rows[i] = fromEye[i / 3][i % 3];
        }
        glUniformMatrix3fv(program.eyeToWorld, 1, GL_FALSE, rows);
    }
    if (m_boundLook == &look && m_boundProgram == &used) {
        return;
    }
    m_boundLook = &look;
    m_boundProgram = &used;
    std::vector<float> matrices, factors, blends;
    const std::size_t units = numUnits(look);
    for (std::size_t unit = 0; unit < units; ++unit) {
        const SoTextureStage& stage = stageOf(look, unit);
        const SbMatrix& matrix = unit == 0 ? look.textureMatrix : stage.matrix;
        matrices.insert(matrices.end(), matrix[0], matrix[0] + 16);
        factors.insert(factors.end(), stage.factor.getValue(), stage.factor.getValue() + 4);
        const SbColor& blend = textureOf(look, unit).blendColor;
        blends.insert(blends.end(), {blend[0], blend[1], blend[2], 0});
        if (unit < program.units.size() && program.units[unit] >= 0
            && isPainted(look, geometry, unit)) {
            glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(kFirstUnit)
                            + static_cast<GLenum>(unit));
            glBindTexture(targetOf(stage.kind),
                          textures.find(textureOf(look, unit), m_frame, stage.kind, stage.wrapR));
        }
    }
    if (program.matrices >= 0) {
        glUniformMatrix4fv(program.matrices, static_cast<GLsizei>(units), GL_FALSE,
                           matrices.data());
    }
    if (program.factors >= 0) {
        glUniform4fv(program.factors, static_cast<GLsizei>(units), factors.data());
    }
    if (program.blends >= 0) {
        glUniform4fv(program.blends, static_cast<GLsizei>(units), blends.data());
    }
    if (program.alphaValue >= 0) {
        glUniform1f(program.alphaValue, look.extras->alphaValue);
    }
    int bound = static_cast<int>(units);
    if (const SoProgramValues* own = ownProgram(look)) {
        setUniforms(program, *own, bound, textures);
    }
    m_numBound = std::max(m_numBound, bound);
    glActiveTexture(GL_TEXTURE0);
}

void GLPaint::setUniforms(const Program& program, const SoProgramValues& values, int& bound,
                          GLTextures& textures) const
{
    for (const SoUniformValue& value : values.uniforms) {
        const GLint place = placeOf(program.program, value.name);
        if (place < 0) {
            continue; // declared but unused ones have none
        }
        switch (value.kind) {
        case SoUniformValue::FLOATS:
            setFloats(place, value.components, value.floats);
            break;
        case SoUniformValue::INTEGERS:
            setIntegers(place, value.components, value.integers);
            break;
        case SoUniformValue::MATRICES:
            glUniformMatrix4fv(place, static_cast<GLsizei>(value.floats.size() / 16), GL_FALSE,
                               value.floats.data());
            break;
        case SoUniformValue::TEXTURE:
            glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(kFirstUnit + bound));
            glBindTexture(targetOf(value.texture.kind),
                          textures.find(value.texture.texture, m_frame, value.texture.kind,
                                        value.texture.wrapR));
            glUniform1i(place, kFirstUnit + bound++);
            break;
        }
    }
}

void GLPaint::applySettings(const SoLookExtras* extras, bool writesDepth)
{
    if (extras && !extras->hasDepthSettings() && !extras->hasOffset()) {
        extras = nullptr;
    }
    if (extras == m_settings) {
        return;
    }
    static const SoLookExtras usual;
    m_settings = extras;
    const SoLookExtras& now = extras ? *extras : usual;
    if (now.depthTest) {
        glDepthFunc(functionOf(now.depthFunction));
    } else {
        glDepthFunc(GL_ALWAYS); // without the test nothing would be written either
    }
    glDepthMask(writesDepth && now.depthWrite ? GL_TRUE : GL_FALSE);
    glDepthRange(now.depthRange[0], now.depthRange[1]);
    glDisable(GL_POLYGON_OFFSET_FILL);
}

void GLPaint::offsetFor(GLenum mode) const
{
    if (!m_settings || !m_settings->hasOffset()) {
        return;
    }
    const SoLookExtras& now = *m_settings;
    const auto has = [&now](SoLookExtras::OffsetStyle style) {
        return (now.offsetStyles & style) != 0;
    };
    if (mode == GL_TRIANGLES && has(SoLookExtras::OFFSET_FILLED)) {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(now.offsetFactor, now.offsetUnits);
    } else {
        glDisable(GL_POLYGON_OFFSET_FILL);
    }
    // Lines and points have no slope, and OpenGL moves faces alone.
    constexpr double kSmallestStep = 1.0 / (1 << 23);
    const bool isMoved = mode == GL_POINTS      ? has(SoLookExtras::OFFSET_POINTS)
                         : mode != GL_TRIANGLES ? has(SoLookExtras::OFFSET_LINES)
                                                : false;
    const double by = isMoved ? static_cast<double>(now.offsetUnits) * kSmallestStep : 0;
    glDepthRange(std::clamp(now.depthRange[0] + by, 0.0, 1.0),
                 std::clamp(now.depthRange[1] + by, 0.0, 1.0));
}

void GLPaint::beginFrame(std::uint64_t frame)
{
    m_frame = frame;
    m_found.clear();
    std::erase_if(m_programs, [frame](const auto& entry) {
        const bool old = entry.second->frame + kKeptFrames < frame;
        if (old) {
            glDeleteProgram(entry.second->program);
        }
        return old;
    });
}

void GLPaint::end(bool writesDepth)
{
    applySettings(nullptr, writesDepth);
    for (int i = 0; i < m_numBound; ++i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(kFirstUnit + i));
        for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP}) {
            glBindTexture(target, 0);
        }
    }
    if (m_numBound > 0) {
        glActiveTexture(GL_TEXTURE0);
    }
    m_numBound = 0;
    m_boundLook = nullptr;
    m_boundProgram = nullptr;
}

void GLPaint::freeAll()
{
    for (const auto& [text, program] : m_programs) {
        glDeleteProgram(program->program);
    }
    m_programs.clear();
    m_found.clear();
}

} // namespace kalmyr::detail
