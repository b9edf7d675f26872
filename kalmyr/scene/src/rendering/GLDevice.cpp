#include "rendering/GLDevice.h"

#include "rendering/FaceEdges.h"
#include "rendering/GLCurrent.h"
#include "rendering/GLDashes.h"
#include "rendering/GLOutline.h"
#include "rendering/GLPeeling.h"
#include "rendering/PeelingShaders.h"

#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <numeric>

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

void setUnit(GLuint program, const char* sampler, int unit)
{
    if (const GLint place = glGetUniformLocation(program, sampler); place >= 0) {
        glUseProgram(program);
        glUniform1i(place, unit);
    }
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

void findProgramPlaces(GLProgram& known)
{
    known.toEye = glGetUniformLocation(known.program, "toEye");
    known.material = glGetUniformLocation(known.program, "material");
    known.firstSlot = glGetUniformLocation(known.program, "firstSlot");
    known.firstPrimitive = glGetUniformLocation(known.program, "firstPrimitive");
    setUnit(known.program, "depths", kDepthUnit);
    setUnit(known.program, "peeledKeys", kPeeledUnit);
    setUnit(known.program, "cover", kCoverUnit);
    setUnit(known.program, "dashStarts", kDashUnit);
    setUnit(known.program, "instances", kInstanceUnit);
    setUnit(known.program, "materials", kMaterialUnit);
    setUnit(known.program, "surroundings", kSurroundingsUnit);
    bindBlock(known.program, "View", VIEW_BINDING);
    bindBlock(known.program, "Surroundings", SURROUNDINGS_BINDING);
    bindBlock(known.program, "Peeling", PEELING_BINDING);
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
    m_frameBlocks.create();
    glGenBuffers(1, &m_streamBuffer);
    glGenBuffers(1, &m_slotNumbers);
    m_capabilities = GLCapabilities::ofCurrent();
    m_pool = std::make_unique<GLGeometryPool>(m_slotNumbers);
    reserveSlots(1); // what is drawn without slots reads the first
    glGenVertexArrays(1, &m_emptyVertexArray);
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
        m_pool->abandon();
        return;
    }
    for (const auto& [id, buffers] : m_geometries) {
        m_pool->remove(buffers);
    }
    m_textures.freeAll();
    m_paint.freeAll();
    for (const auto& program : m_otherPrograms) {
        glDeleteProgram(program.value_or(0));
    }
    for (const auto& [features, program] : m_programs) {
        glDeleteProgram(program.program);
    }
    for (const auto& [number, outline] : m_outlines) {
        outline->resources.free();
    }
    if (m_dashes) {
        m_dashes->free();
    }
    if (m_peeling) {
        m_peeling->free();
    }
    for (const auto& [number, kept] : m_plans) {
        kept->plan.free();
    }
    for (const GLuint buffer : {m_marker, m_streamBuffer, m_slotNumbers}) {
        glDeleteBuffers(1, &buffer);
    }
    glDeleteVertexArrays(1, &m_emptyVertexArray);
    m_frameBlocks.free();
}

void GLDevice::beginFrame()
{
    ++m_frame;
    freeDead();
    m_paint.beginFrame(m_frame);
}

void GLDevice::endFrame()
{
    freeDead();
    m_textures.freeOld(m_frame);
    freeOldOutlines();
    freeOldPlans();
    freeOldPeeling();
    if (m_dashes && m_frame > kKeptOutlineFrames) {
        m_dashes->freeOld(m_frame - kKeptOutlineFrames);
    }
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
            m_pool->remove(found->second);
            m_geometries.erase(found);
        }
    }
}

void GLDevice::freeOldOutlines()
{
    std::erase_if(m_outlines, [this](const auto& entry) {
        const bool old = entry.second->frame + kKeptOutlineFrames < m_frame;
        if (old) {
            entry.second->resources.free();
        }
        return old;
    });
}

void GLDevice::freeOldPlans()
{
    std::erase_if(m_plans, [this](const auto& entry) {
        const bool old = entry.second->frame + kKeptOutlineFrames < m_frame;
        if (old) {
            entry.second->plan.free();
        }
        return old;
    });
}

GLDrawPlan& GLDevice::plan(std::uint64_t frameId)
{
    std::unique_ptr<KeptPlan>& known = m_plans[frameId];
    if (!known) {
        known = std::make_unique<KeptPlan>();
    }
    known->frame = m_frame;
    return known->plan;
}

void GLDevice::reserveSlots(std::size_t count)
{
    if (count <= m_numSlotNumbers) {
        return;
    }
    m_numSlotNumbers = std::max(2 * m_numSlotNumbers, count);
    std::vector<GLint> numbers(m_numSlotNumbers);
    std::iota(numbers.begin(), numbers.end(), 0);
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_slotNumbers);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(bytesOf(numbers)), numbers.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
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

GLGeometry& GLDevice::find(const SoGeometry& geometry)
{
    const auto [found, isNew] = m_geometries.try_emplace(geometry.getId());
    if (isNew) {
        found->second = m_pool->add(geometry);
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

GLPeeling& GLDevice::peeling()
{
    if (!m_peeling) {
        m_peeling = std::make_unique<GLPeeling>();
    }
    m_peelingFrame = m_frame;
    return *m_peeling;
}

GLDashes& GLDevice::dashes()
{
    if (!m_dashes) {
        m_dashes = std::make_unique<GLDashes>();
    }
    return *m_dashes;
}

void GLDevice::freeOldPeeling()
{
    if (m_peeling && m_peelingFrame + kKeptOutlineFrames < m_frame) {
        m_peeling->free();
        m_peeling.reset();
    }
}

const GLProgram* GLDevice::program(unsigned features)
{
    const auto [found, isNew] = m_programs.try_emplace(features);
    GLProgram& known = found->second;
    if (isNew) {
        known.program = linkProgram(shaderSource(features));
        if (known.program) {
            findProgramPlaces(known);
        }
    }
    return known.program ? &known : nullptr;
}

GLuint GLDevice::otherProgram(OtherProgram which, const ShaderSource& source)
{
    std::optional<GLuint>& known = m_otherPrograms[which];
    if (!known) {
        known = linkProgram(source);
    }
    return *known;
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
