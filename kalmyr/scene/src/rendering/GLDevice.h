#pragma once

#include "rendering/GLDrawPlan.h"
#include "rendering/GLFrameBlocks.h"
#include "rendering/GLGeometryPool.h"
#include "rendering/GLPaint.h"
#include "rendering/GLTextures.h"
#include "rendering/Shaders.h"

#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <epoxy/gl.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kalmyr::detail {

class GLOutline;
class GLDashes;
class GLPeeling;

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
    GLuint texture(const SoTextureValues& values) { return m_textures.find(values, m_frame); }
    GLTextures& textures() { return m_textures; }
    /// What shapes with extras are drawn with.
    GLPaint& paint() { return m_paint; }
    /// Programs beside those of shapes, made from `source` when first asked for; 0, with an error
    /// posted once, when the driver refuses.
    enum OtherProgram { BACKGROUND_SIDES, BACKGROUND_SCREEN, NUM_OTHER_PROGRAMS };
    GLuint otherProgram(OtherProgram which, const ShaderSource& source);
    /// Null, with an error posted, when the driver refuses the program.
    const GLProgram* program(unsigned features);

    /// Returns the picture of an outline by its number; freed when not asked for in a while.
    GLOutline& outline(std::uint64_t number);

    /// What sorts transparent surfaces at each pixel; freed when not asked for in a while.
    GLPeeling& peeling();
    /// What lines with a pattern need.
    GLDashes& dashes();
    std::uint64_t getFrameNumber() const { return m_frame; }

    /// A buffer for index runs of the present frame.
    GLuint streamIndices(const std::vector<std::uint32_t>& indices);
    /// The kept commands of a frame by the frame's number; freed when not asked for in a while.
    GLDrawPlan& plan(std::uint64_t frameId);
    const GLCapabilities& capabilities() const { return m_capabilities; }
    /// Has the buffer of slot numbers reach that far.
    void reserveSlots(std::size_t count);

    GLFrameBlocks& frameBlocks() { return m_frameBlocks; }
    GLuint emptyVertexArray() const { return m_emptyVertexArray; }

    std::size_t getNumGeometries() const { return m_geometries.size(); }
    std::size_t getNumTextures() const { return m_textures.size(); }
    std::size_t getNumGeometryBytes() const { return m_pool->getNumBytes(); }

private:
    /// Outlines and plans that were not drawn for so many frames are freed.
    static constexpr std::uint64_t kKeptOutlineFrames = 60;

    struct Outline;
    struct KeptPlan {
        GLDrawPlan plan;
        std::uint64_t frame = 0; ///< when it was last drawn
    };

    GLDevice();
    bool isAlive() const;
    void mark();
    void abandon() { m_abandoned = true; }
    GLGeometry& find(const SoGeometry& geometry);
    static GLuint uploadIndices(const std::vector<std::uint32_t>& indices);
    void freeDead();
    void freeOldOutlines();
    void freeOldPlans();
    void freeOldPeeling();

    GLCapabilities m_capabilities;
    GLuint m_slotNumbers = 0;
    std::size_t m_numSlotNumbers = 0;
    std::unique_ptr<GLGeometryPool> m_pool;
    std::unordered_map<std::uint64_t, GLGeometry> m_geometries;
    GLTextures m_textures;
    GLPaint m_paint;
    std::array<std::optional<GLuint>, NUM_OTHER_PROGRAMS> m_otherPrograms;
    std::unordered_map<unsigned, GLProgram> m_programs; ///< by features
    std::unordered_map<std::uint64_t, std::unique_ptr<Outline>> m_outlines;
    std::unordered_map<std::uint64_t, std::unique_ptr<KeptPlan>> m_plans;
    std::unique_ptr<GLDashes> m_dashes; ///< null before there were any
    std::unique_ptr<GLPeeling> m_peeling;
    std::uint64_t m_peelingFrame = 0; ///< when it was last asked for
    // Guarded by the mutex of all devices.
    std::unordered_set<std::uint64_t> m_known; ///< what there are buffers of and lives
    std::vector<std::uint64_t> m_dead;         ///< whose buffers are to be freed
    std::uint64_t m_frame = 0;
    GLuint m_marker = 0;
    GLint m_markerSize = 0;
    GLFrameBlocks m_frameBlocks;
    GLuint m_streamBuffer = 0;
    GLuint m_emptyVertexArray = 0;
    bool m_abandoned = false; ///< the context is gone: nothing to free
};

} // namespace kalmyr::detail
