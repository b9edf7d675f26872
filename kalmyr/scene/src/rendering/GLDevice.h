#pragma once

#include "rendering/Shaders.h"

#include <kalmyr/base/SbImage.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <epoxy/gl.h>

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kalmyr::detail {

/// The buffers of one geometry in one context. Indices stand in one buffer: triangles, lines,
/// points.
struct GLGeometry {
    GLuint vertexArray = 0;
    GLuint vertices = 0;
    GLuint indices = 0;
    GLuint edges = 0;   ///< made when first asked for
    GLuint outline = 0; ///< pairs of sharp edges, then fours of smooth ones; the same
    GLsizei numTriangleIndices = 0;
    GLsizei numLineIndices = 0;
    GLsizei numPointIndices = 0;
    GLsizei numEdgeIndices = 0;
    GLsizei numSharpIndices = 0;
    GLsizei numSmoothIndices = 0;
    GLsizei numVertices = 0;
};

/// Compiles and links; 0, with an error posted, when the driver refuses.
GLuint linkProgram(const ShaderSource& source);

class GLOutline;

struct GLProgram {
    GLuint program = 0;
    GLint toEye = -1;
    GLint material = -1;
};

/// Everything kept in one OpenGL context: programs, buffers, textures.
///
/// Made when a context is first drawn into and found again by the context's handle; a marker in the
/// context tells when the handle is that of a new context at an old address.
class GLDevice {
public:
    /// The device of the current context; null, with the reason in `error`, when none is current
    /// or it is too old.
    static GLDevice* current(const char*& error);
    /// Frees everything in the current context.
    static void releaseCurrent();
    /// Has the buffers of a geometry freed, in each context when it is next drawn into. Called in
    /// any thread: graphs of their own die in many, with geometries that other graphs share.
    static void geometryDied(std::uint64_t id);

    ~GLDevice();
    GLDevice(const GLDevice&) = delete;
    GLDevice& operator=(const GLDevice&) = delete;

    void beginFrame();
    void endFrame();

    const GLGeometry& geometry(const SoGeometry& geometry);
    /// The same with the edge buffer.
    const GLGeometry& geometryWithEdges(const SoGeometry& geometry);
    const GLGeometry& geometryWithOutline(const SoGeometry& geometry);
    /// The texture object of an image; 0 for images that cannot be textures.
    GLuint texture(const SoTextureValues& values);
    /// Null, with an error posted, when the driver refuses the program.
    const GLProgram* program(unsigned features);

    /// Returns the picture of an outline by its number; freed when not asked for in a while.
    GLOutline& outline(std::uint64_t number);

    /// A buffer for index runs of the present frame.
    GLuint streamIndices(const std::vector<std::uint32_t>& indices);
    GLuint viewBuffer() const { return m_viewBuffer; }
    GLuint surroundingsBuffer() const { return m_surroundingsBuffer; }
    GLuint emptyVertexArray() const { return m_emptyVertexArray; }
    GLint uniformAlignment() const { return m_uniformAlignment; }

    std::size_t getNumGeometries() const { return m_geometries.size(); }
    std::size_t getNumTextures() const { return m_textures.size(); }

    static constexpr GLuint kViewBinding = 0;
    static constexpr GLuint kSurroundingsBinding = 1;

private:
    /// Textures and outlines that were not drawn for so many frames are freed.
    static constexpr std::uint64_t kKeptTextureFrames = 60;

    struct Outline;

    struct Texture {
        GLuint name = 0;
        SbImage image; ///< keeps the pixels, whose address is the key, from being reused
        std::uint64_t frame = 0;
        std::uint32_t wraps = 0;
    };

    GLDevice();
    bool isAlive() const;
    void mark();
    void abandon() { m_abandoned = true; }
    GLGeometry& find(const SoGeometry& geometry);
    static GLGeometry upload(const SoGeometry& geometry);
    static GLuint uploadIndices(const std::vector<std::uint32_t>& indices);
    static void free(const GLGeometry& buffers);
    void freeDead();
    void freeOldTextures();
    void freeOldOutlines();

    std::unordered_map<std::uint64_t, GLGeometry> m_geometries;
    std::unordered_map<const unsigned char*, Texture> m_textures;
    std::array<std::unique_ptr<GLProgram>, kNumShaderVariants> m_programs;
    std::unordered_map<std::uint64_t, std::unique_ptr<Outline>> m_outlines;
    // Guarded by the mutex of all devices.
    std::unordered_set<std::uint64_t> m_known; ///< what there are buffers of and lives
    std::vector<std::uint64_t> m_dead;         ///< whose buffers are to be freed
    std::uint64_t m_frame = 0;
    GLuint m_marker = 0;
    GLint m_markerSize = 0;
    GLuint m_viewBuffer = 0;
    GLuint m_surroundingsBuffer = 0;
    GLuint m_streamBuffer = 0;
    GLuint m_emptyVertexArray = 0;
    GLint m_uniformAlignment = 256;
    bool m_abandoned = false; ///< the context is gone: nothing to free
};

} // namespace kalmyr::detail
