#pragma once

#include <epoxy/gl.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// What a context can do beyond OpenGL 3.3. The preference "KMR_GL_BASELINE" switches all of it
/// off.
struct GLCapabilities {
    bool baseInstance = false; ///< a draw call may begin with any slot
    bool indirect = false;     ///< many draw calls by one, from a buffer
    GLint maxBufferTexels = 65536;

    static GLCapabilities ofCurrent();
};

/// Vectors of four floats that shaders read by their number.
struct GLTable {
    GLuint buffer = 0;
    GLuint texture = 0;

    /// Returns the number of bytes.
    std::size_t fill(const void* data, std::size_t bytes);
    void bind(int unit) const;
    void free();
};

/// Where and how one shape is drawn, as the shaders read it: four texels.
struct GLInstance {
    float columns[3][4]; ///< where the axes go in the space of the eye; fourth: of the origin
    float look;          ///< place in the table of looks
    float normalSign;    ///< -1 where the matrix mirrors
    float unused[2];
};

/// One draw call, as OpenGL reads it from a buffer.
struct GLDrawCommand {
    GLuint numIndices;
    GLuint numInstances; ///< 0 draws nothing
    GLuint firstIndex;
    GLint firstVertex;
    GLuint firstSlot;
};

/// What all draw calls of a batch have in common.
struct GLBatchKey {
    GLuint vertexArray = 0;
    GLenum mode = GL_TRIANGLES;
    unsigned features = 0;
    std::uint32_t surroundings = 0;
    std::uint16_t view = 0;
    bool mirrored = false;
    bool solid = false;
    const unsigned char* image = nullptr; ///< pixels of the texture
    std::uint32_t wraps = 0;
    float pointSize = 1;

    bool operator==(const GLBatchKey&) const = default;
};

struct GLBatch {
    GLBatchKey key;
    std::uint32_t item = 0; ///< one of them, for the texture
    std::uint32_t firstCommand = 0;
    std::uint32_t numCommands = 0;
};

/// The draw calls of a frame, kept with what they read in the buffers of one context.
///
/// Items of the frame that need no state of their own stand in batches; each has a slot in the
/// table of instances and shares an entry in the table of looks with its likes. The plan stands
/// while the frame's items do; single items may be moved and get other colours meanwhile.
class GLDrawPlan {
public:
    struct Layer {
        std::uint32_t firstBatch = 0;
        std::uint32_t numBatches = 0;
        std::vector<std::uint32_t> hiding;      ///< drawn first, as depths only
        std::vector<std::uint32_t> singles;     ///< opaque items that are drawn one by one
        std::vector<std::uint32_t> transparent; ///< in the order of the frame
    };
    static constexpr std::uint32_t kNoSlot = 0xffffffff;
    static constexpr std::uint32_t kSeveralSlots = 0xfffffffe;

    std::uint64_t generation = 0; ///< of the frame it was made from; 0: of none
    int transparencyType = 0;
    std::uint64_t numPatches = 0; ///< how many of the frame's are in it
    std::vector<Layer> layers;
    std::vector<GLBatch> batches;
    std::vector<GLDrawCommand> commands;
    std::vector<std::uint32_t> slots; ///< by item; or one of the two above

    void clear();
    /// Brings commands and tables to the context. Behind the looks there is room for some more.
    void upload(const std::vector<GLInstance>& instances, std::vector<float> looks);
    /// Returns the place in the table of looks that belongs to the slot alone, or nothing when
    /// there is no room.
    std::optional<std::uint32_t> ownLook(std::uint32_t slot);
    /// Brings one look to the context: `values` fills an entry of the table.
    void setLook(std::uint32_t place, const float* values);
    /// Brings one instance to the context; without its look unless `withLook`.
    void setInstance(std::uint32_t slot, const GLInstance& instance, bool withLook);
    /// Binds the tables to their texture units.
    void bind() const;
    /// Draws a batch with what it needs already set; `firstSlot` is the uniform for contexts
    /// without base instance.
    void draw(const GLBatch& batch, const GLCapabilities& capabilities, GLint firstSlot) const;
    std::size_t getNumBytes() const { return m_numBytes; }
    /// Frees what is in the context.
    void free();

private:
    GLuint m_commands = 0;
    GLTable m_instances;
    GLTable m_looks;
    std::uint32_t m_numLooks = 0;                                ///< in use
    std::uint32_t m_maxLooks = 0;                                ///< that the table has room for
    std::unordered_map<std::uint32_t, std::uint32_t> m_ownLooks; ///< by slot
    std::size_t m_numBytes = 0;
};

} // namespace kalmyr::detail
