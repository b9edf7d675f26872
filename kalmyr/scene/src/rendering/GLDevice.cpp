#include "rendering/GLDevice.h"

#include "rendering/FaceEdges.h"
#include "rendering/GLCurrent.h"
#include "rendering/GLOutline.h"

#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <map>
#include <mutex>

namespace kalmyr::detail {

namespace {

constexpr int kMinVersion = 33;
constexpr GLint kMarkerSize = 16;

std::map<void*, std::unique_ptr<GLDevice>>& devices()
{
    // Never destroyed: contexts may be gone at the end of the process.
    static auto* const all = new std::map<void*, std::unique_ptr<GLDevice>>;
    return *all;
}

/// The devices as those see them who tell of deaths.
struct Listening {
    std::mutex mutex;
    std::vector<GLDevice*> devices; // Not owned.
};

Listening& listening()
{
    static auto* const all = new Listening;
    return *all;
}

template <class T>
std::size_t bytesOf(const std::vector<T>& values)
{
    return values.size() * sizeof(T);
}

template <class T>
std::size_t append(GLenum target, std::size_t at, const std::vector<T>& values)
{
    if (!values.empty()) {
        glBufferSubData(target, static_cast<GLintptr>(at), static_cast<GLsizeiptr>(bytesOf(values)),
                        values.data());
    }
    return at + bytesOf(values);
}

void attribute(GLuint index, GLint size, GLenum type, std::size_t offset, bool present)
{
    if (present) {
        glEnableVertexAttribArray(index);
        glVertexAttribPointer(index, size, type, type == GL_UNSIGNED_BYTE, 0,
                              reinterpret_cast<const void*>(offset));
    }
}

GLuint compile(GLenum stage, const std::string& source)
{
    const GLuint shader = glCreateShader(stage);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (!ok) {
        char log[512] = "";
        glGetShaderInfoLog(shader, sizeof log, nullptr, log);
        SoError::post("rendering: a shader was refused: %s", log);
    }
    return shader;
}

void bindBlock(GLuint program, const char* name, GLuint binding)
{
    const GLuint index = glGetUniformBlockIndex(program, name);
    if (index != GL_INVALID_INDEX) {
        glUniformBlockBinding(program, index, binding);
    }
}

std::uint32_t wrapsOf(const SoTextureValues& values)
{
    return static_cast<std::uint32_t>(values.wrapS) << 16
           | static_cast<std::uint32_t>(values.wrapT);
}

void setWraps(const SoTextureValues& values)
{
    const auto wrap = [](SoTextureValues::Wrap w) {
        return w == SoTextureValues::CLAMP ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    };
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap(values.wrapS));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap(values.wrapT));
}

void setGrey(bool withAlpha)
{
    const GLint swizzle[] = {GL_RED, GL_RED, GL_RED, withAlpha ? GL_GREEN : GL_ONE};
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
}

GLuint uploadTexture(const SbImage& image)
{
    constexpr GLenum kFormats[] = {GL_RED, GL_RG, GL_RGB, GL_RGBA};
    constexpr GLint kStored[] = {GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};
    const int components = image.getComponents();
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    if (components < 1 || components > 4 || image.getWidth() > limit || image.getHeight() > limit) {
        SoError::post("rendering: a texture of %d by %d pixels is larger than the limit of %d",
                      image.getWidth(), image.getHeight(), limit);
        return 0;
    }
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, kStored[components - 1], image.getWidth(), image.getHeight(), 0,
                 kFormats[components - 1], GL_UNSIGNED_BYTE, image.getBytes());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    if (components < 3) {
        setGrey(components == 2);
    }
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return name;
}

} // namespace

struct GLDevice::Outline {
    GLOutline resources;
    std::uint64_t frame = 0; ///< when it was last drawn
};

GLuint linkProgram(const ShaderSource& source)
{
    const GLuint program = glCreateProgram();
    const std::pair<GLenum, const std::string&> stages[] = {{GL_VERTEX_SHADER, source.vertex},
                                                            {GL_GEOMETRY_SHADER, source.geometry},
                                                            {GL_FRAGMENT_SHADER, source.fragment}};
    for (const auto& [stage, text] : stages) {
        if (!text.empty()) {
            const GLuint shader = compile(stage, text);
            glAttachShader(program, shader);
            glDeleteShader(shader);
        }
    }
    glLinkProgram(program);
    GLint ok = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (ok) {
        return program;
    }
    char log[512] = "";
    glGetProgramInfoLog(program, sizeof log, nullptr, log);
    SoError::post("rendering: a shader program was refused: %s", log);
    glDeleteProgram(program);
    return 0;
}

GLDevice* GLDevice::current(const char*& error)
{
    void* context = currentGLContext();
    if (!context) {
        error = "no OpenGL context is current";
        return nullptr;
    }
    std::unique_ptr<GLDevice>& device = devices()[context];
    if (device && !device->isAlive()) {
        device->abandon();
        device.reset();
    }
    if (!device) {
        if (epoxy_gl_version() < kMinVersion || !epoxy_is_desktop_gl()) {
            error = "the OpenGL context is older than 3.3";
            devices().erase(context);
            return nullptr;
        }
        device.reset(new GLDevice);
        device->mark();
    }
    return device.get();
}

void GLDevice::releaseCurrent()
{
    const auto found = devices().find(currentGLContext());
    if (found == devices().end()) {
        return;
    }
    if (!found->second->isAlive()) {
        found->second->abandon();
    }
    devices().erase(found);
}

void GLDevice::geometryDied(std::uint64_t id)
{
    const std::scoped_lock lock(listening().mutex);
    for (GLDevice* device : listening().devices) {
        if (device->m_known.erase(id) > 0) {
            device->m_dead.push_back(id);
        }
    }
}

GLDevice::GLDevice()
{
    glGenBuffers(1, &m_viewBuffer);
    glGenBuffers(1, &m_surroundingsBuffer);
    glGenBuffers(1, &m_streamBuffer);
    glGenVertexArrays(1, &m_emptyVertexArray);
    glGetIntegerv(GL_UNIFORM_BUFFER_OFFSET_ALIGNMENT, &m_uniformAlignment);
    const std::scoped_lock lock(listening().mutex);
    listening().devices.push_back(this);
}

/// A buffer whose size no other device uses: a context without a buffer of that name and size is
/// not the one the device was made for.
void GLDevice::mark()
{
    static GLint serial = 0;
    m_markerSize = kMarkerSize * ++serial;
    glGenBuffers(1, &m_marker);
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_marker);
    glBufferData(GL_COPY_WRITE_BUFFER, m_markerSize, nullptr, GL_STATIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
}

bool GLDevice::isAlive() const
{
    if (!glIsBuffer(m_marker)) {
        return false;
    }
    GLint size = 0;
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_marker);
    glGetBufferParameteriv(GL_COPY_WRITE_BUFFER, GL_BUFFER_SIZE, &size);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    return size == m_markerSize;
}

GLDevice::~GLDevice()
{
    {
        const std::scoped_lock lock(listening().mutex);
        std::erase(listening().devices, this);
    }
    if (m_abandoned) {
        return;
    }
    for (const auto& [id, buffers] : m_geometries) {
        free(buffers);
    }
    for (const auto& [bytes, texture] : m_textures) {
        glDeleteTextures(1, &texture.name);
    }
    for (const auto& program : m_programs) {
        if (program) {
            glDeleteProgram(program->program);
        }
    }
    for (const auto& [number, outline] : m_outlines) {
        outline->resources.free();
    }
    for (const GLuint buffer : {m_marker, m_viewBuffer, m_surroundingsBuffer, m_streamBuffer}) {
        glDeleteBuffers(1, &buffer);
    }
    glDeleteVertexArrays(1, &m_emptyVertexArray);
}

void GLDevice::beginFrame()
{
    ++m_frame;
    freeDead();
}

void GLDevice::endFrame()
{
    freeDead();
    freeOldTextures();
    freeOldOutlines();
}

void GLDevice::freeDead()
{
    std::vector<std::uint64_t> dead;
    {
        const std::scoped_lock lock(listening().mutex);
        dead.swap(m_dead);
    }
    for (const std::uint64_t id : dead) {
        if (const auto found = m_geometries.find(id); found != m_geometries.end()) {
            free(found->second);
            m_geometries.erase(found);
        }
    }
}

void GLDevice::freeOldTextures()
{
    std::erase_if(m_textures, [this](const auto& entry) {
        const bool old = entry.second.frame + kKeptTextureFrames < m_frame;
        if (old) {
            glDeleteTextures(1, &entry.second.name);
        }
        return old;
    });
}

void GLDevice::freeOldOutlines()
{
    std::erase_if(m_outlines, [this](const auto& entry) {
        const bool old = entry.second->frame + kKeptTextureFrames < m_frame;
        if (old) {
            entry.second->resources.free();
        }
        return old;
    });
}

GLOutline& GLDevice::outline(std::uint64_t number)
{
    std::unique_ptr<Outline>& known = m_outlines[number];
    if (!known) {
        known = std::make_unique<Outline>();
    }
    known->frame = m_frame;
    return known->resources;
}

void GLDevice::free(const GLGeometry& buffers)
{
    glDeleteVertexArrays(1, &buffers.vertexArray);
    for (const GLuint buffer :
         {buffers.vertices, buffers.indices, buffers.edges, buffers.outline}) {
        glDeleteBuffers(1, &buffer);
    }
}

GLGeometry& GLDevice::find(const SoGeometry& geometry)
{
    const auto [found, isNew] = m_geometries.try_emplace(geometry.getId());
    if (isNew) {
        found->second = upload(geometry);
        const std::scoped_lock lock(listening().mutex);
        m_known.insert(geometry.getId());
    }
    return found->second;
}

const GLGeometry& GLDevice::geometry(const SoGeometry& geometry)
{
    return find(geometry);
}

const GLGeometry& GLDevice::geometryWithEdges(const SoGeometry& geometry)
{
    GLGeometry& buffers = find(geometry);
    if (!buffers.edges && buffers.numTriangleIndices) {
        const std::vector<std::uint32_t> edges = faceEdges(geometry);
        buffers.numEdgeIndices = static_cast<GLsizei>(edges.size());
        buffers.edges = uploadIndices(edges);
    }
    return buffers;
}

const GLGeometry& GLDevice::geometryWithOutline(const SoGeometry& geometry)
{
    GLGeometry& buffers = find(geometry);
    if (!buffers.outline && buffers.numTriangleIndices) {
        OutlineEdges edges = outlineEdges(geometry);
        buffers.numSharpIndices = static_cast<GLsizei>(edges.sharp.size());
        buffers.numSmoothIndices = static_cast<GLsizei>(edges.smooth.size());
        edges.sharp.insert(edges.sharp.end(), edges.smooth.begin(), edges.smooth.end());
        buffers.outline = uploadIndices(edges.sharp);
    }
    return buffers;
}

/// The arrays stand one after another in one buffer, so that they are handed over without a copy.
GLGeometry GLDevice::upload(const SoGeometry& geometry)
{
    GLGeometry buffers;
    buffers.numVertices = static_cast<GLsizei>(geometry.positions.size());
    buffers.numTriangleIndices = static_cast<GLsizei>(geometry.triangles.size());
    buffers.numLineIndices = static_cast<GLsizei>(geometry.lines.size());
    buffers.numPointIndices = static_cast<GLsizei>(geometry.points.size());
    glGenVertexArrays(1, &buffers.vertexArray);
    glGenBuffers(1, &buffers.vertices);
    glGenBuffers(1, &buffers.indices);
    glBindVertexArray(buffers.vertexArray);

    const std::size_t count = geometry.positions.size();
    const std::size_t normals = bytesOf(geometry.positions);
    const std::size_t texCoords = normals + bytesOf(geometry.normals);
    const std::size_t colors = texCoords + bytesOf(geometry.texCoords);
    glBindBuffer(GL_ARRAY_BUFFER, buffers.vertices);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(colors + bytesOf(geometry.colors)),
                 nullptr, GL_STATIC_DRAW);
    append(GL_ARRAY_BUFFER, 0, geometry.positions);
    append(GL_ARRAY_BUFFER, normals, geometry.normals);
    append(GL_ARRAY_BUFFER, texCoords, geometry.texCoords);
    append(GL_ARRAY_BUFFER, colors, geometry.colors);
    // Arrays that are too short for the vertices are not read at all.
    attribute(0, 3, GL_FLOAT, 0, count > 0);
    attribute(1, 3, GL_FLOAT, normals, count > 0 && geometry.normals.size() >= count);
    attribute(2, 2, GL_FLOAT, texCoords, count > 0 && geometry.texCoords.size() >= count);
    attribute(3, 4, GL_UNSIGNED_BYTE, colors, count > 0 && geometry.colors.size() >= count);

    const std::size_t indexBytes =
        bytesOf(geometry.triangles) + bytesOf(geometry.lines) + bytesOf(geometry.points);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indexBytes), nullptr,
                 GL_STATIC_DRAW);
    std::size_t at = append(GL_ELEMENT_ARRAY_BUFFER, 0, geometry.triangles);
    at = append(GL_ELEMENT_ARRAY_BUFFER, at, geometry.lines);
    append(GL_ELEMENT_ARRAY_BUFFER, at, geometry.points);
    return buffers;
}

GLuint GLDevice::uploadIndices(const std::vector<std::uint32_t>& indices)
{
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_COPY_WRITE_BUFFER, buffer);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(bytesOf(indices)), indices.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    return buffer;
}

GLuint GLDevice::texture(const SoTextureValues& values)
{
    if (values.image.isNull()) {
        return 0;
    }
    const auto [found, isNew] = m_textures.try_emplace(values.image.getBytes());
    Texture& texture = found->second;
    if (isNew) {
        texture.image = values.image;
        texture.name = uploadTexture(values.image);
    }
    texture.frame = m_frame;
    if (texture.name && texture.wraps != wrapsOf(values)) {
        glBindTexture(GL_TEXTURE_2D, texture.name);
        setWraps(values);
        texture.wraps = wrapsOf(values);
    }
    return texture.name;
}

const GLProgram* GLDevice::program(unsigned features)
{
    std::unique_ptr<GLProgram>& known = m_programs[features];
    if (!known) {
        known = std::make_unique<GLProgram>();
        known->program = linkProgram(shaderSource(features));
        if (known->program) {
            known->toEye = glGetUniformLocation(known->program, "toEye");
            known->material = glGetUniformLocation(known->program, "material");
            if (const GLint depths = glGetUniformLocation(known->program, "depths"); depths >= 0) {
                glUseProgram(known->program);
                glUniform1i(depths, kDepthUnit);
            }
            bindBlock(known->program, "View", kViewBinding);
            bindBlock(known->program, "Surroundings", kSurroundingsBinding);
        }
    }
    return known->program ? known.get() : nullptr;
}

GLuint GLDevice::streamIndices(const std::vector<std::uint32_t>& indices)
{
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_streamBuffer);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(bytesOf(indices)), indices.data(),
                 GL_STREAM_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    return m_streamBuffer;
}

} // namespace kalmyr::detail
