#pragma once

#include "rendering/GLTargets.h"

#include <epoxy/gl.h>

#include <cstddef>

namespace kalmyr::detail {

/// The textures of one context in which transparent surfaces are sorted at each pixel, and the
/// passes that do it.
///
/// All surfaces are drawn once for each of the surfaces that lie over each other: each time what
/// is nearest behind the previous ones stays, and is laid under them. With several samples a pixel
/// each sample is sorted by itself, where OpenGL has shaders that run for each sample (4.0, or the
/// extension); elsewhere each pixel.
///
/// A part of the picture is done at a time, of so many rows that the textures stay within
/// kMaxBytes.
class GLPeeling {
public:
    /// How many surfaces over each other are sorted. What lies behind so many is drawn by other
    /// means.
    static constexpr int kMaxLayers = 64;
    static constexpr std::size_t kMaxBytes = std::size_t(256) << 20;

    GLPeeling() = default;
    GLPeeling(const GLPeeling&) = delete;
    GLPeeling& operator=(const GLPeeling&) = delete;
    /// Everything, in the current context. Without it the memory goes with the context.
    void free();

    /// Looks at what is bound for drawing into. False when its depths cannot be copied.
    bool open();
    /// Returns how many rows of that width are done at a time.
    int getMaxRows(int width) const;

    /// Begins with a part of the picture: copies its depths. False when there is no memory.
    bool begin(const PixelBox& part, const SavedTarget& target);
    /// Binds what the next layer is to be drawn into, with the program's variants for peeling. What
    /// is seen at the part's lower left goes to 0 0.
    void beginLayer();
    /// Lays what was drawn under what was there; false when nothing was drawn.
    bool endLayer();
    /// Binds the target, for drawing what lies behind all the layers with the same programs.
    void beginRest(const SavedTarget& target);
    /// Lays the layers over the target.
    void end(const SavedTarget& target);

    /// Variants of programs for what is bound: with several samples a pixel.
    bool hasSamples() const { return m_samples > 0; }

private:
    enum Texture { LAYER, KEYS, OTHER_KEYS, DEPTHS, SUM, COVER, NUM_TEXTURES };
    struct Block {
        float allowance; ///< how much farther than what covers it a surface still counts
        float behind;    ///< 1: draws what lies behind the layers
        float left;
        float bottom;
    };

    bool makeTargets(int width, int height);
    bool copyDepths(const SavedTarget& target);
    void bindTextures(GLuint keys);
    void setBlock(const Block& block);
    void freeTargets();
    /// Blends a texture of premultiplied colours, its lower left at a pixel, with what is there.
    void lay(GLuint texture, int left, int bottom);
    GLuint program();
    GLenum textureTarget() const;

    GLuint m_textures[NUM_TEXTURES] = {};
    GLuint m_layerTargets[2] = {}; ///< with KEYS, with OTHER_KEYS
    GLuint m_sumTarget = 0;
    GLuint m_coverTarget = 0;
    GLuint m_programs[2] = {}; ///< for one sample a pixel, for several
    GLuint m_block = 0;
    GLuint m_query = 0;
    GLuint m_vertexArray = 0; ///< without attributes
    GLenum m_depthFormat = GL_NONE;
    GLenum m_refused = GL_NONE; ///< depth format that could not be copied
    GLint m_boundSamples = 0;
    GLint m_samples = 0;
    int m_width = 0;
    int m_height = 0;
    int m_layer = 0;
    PixelBox m_part;
};

} // namespace kalmyr::detail
