#pragma once

#include "rendering/GLDevice.h"
#include "rendering/PixelBox.h"

#include <kalmyr/base/SbColor.h>

#include <cstdint>
#include <functional>

namespace kalmyr::detail {

/// Colour, width and pattern of an outline.
struct OutlineStyle {
    SbColor color{0.0f, 0.9f, 1.0f};
    float width = 2; ///< points: pixels of a screen of usual density
    unsigned short pattern = 0xffff;
};

/// The textures of one outline in one context, as large as the window that is drawn into, and the
/// passes that fill them.
///
/// The object is drawn into a mask beside the scene; from that the outline is made as a picture,
/// which stays and is laid over every frame. What is bound for drawing into, and the state of the
/// context, are put back after each of the functions.
class GLOutline {
public:
    GLOutline() = default;
    GLOutline(const GLOutline&) = delete;
    GLOutline& operator=(const GLOutline&) = delete;
    /// Everything, in the current context. Without it the memory goes with the context.
    void free();

    /// Objects that the scene does not show (a switch leaves them out) change unseen: every change
    /// of the graph counts then.
    bool followsGraph = false;

    /// Returns the sum over everything that the picture was made of; 0: there is none yet.
    std::uint64_t getKey() const { return m_key; }

    /// Nothing of the objects is in view.
    void setEmpty(std::uint64_t key);
    /// Empties the mask for a window of that size, of which `box` is to be outlined. False when the
    /// context has no such textures.
    bool begin(int width, int height, const PixelBox& box);
    /// Adds what `draw` draws, with the depths of what is bound for drawing into at unit
    /// kDepthUnit. They hide what was added before: they are those of a layer on top.
    void addLayer(const std::function<void()>& draw);
    /// Makes the picture; `pixelsPerPoint` scales the widths.
    void end(const OutlineStyle& style, float pixelsPerPoint, std::uint64_t key);
    /// Lays the picture over what is bound for drawing into.
    void lay();

    /// Returns how many pixels an outline reaches beyond the mask.
    static int reachOf(const OutlineStyle& style, float pixelsPerPoint);

private:
    struct Widths;
    static Widths widthsOf(const OutlineStyle& style, float pixelsPerPoint);
    bool makeTargets(int width, int height, GLint samples);
    bool makeDepths(int width, int height, GLenum format);
    bool copyDepths();
    GLuint program(OutlinePass pass);
    void setUniforms(const OutlineStyle& style, const Widths& widths);
    PixelBox seenFromBox() const;
    void runPass(OutlinePass pass, GLuint framebuffer, GLuint texture, const PixelBox& box);
    void cover(OutlinePass pass, GLuint texture);
    void findTiles();
    void layTiles();

    enum Target { MASK, ROWS, PICTURE, TILES, NUM_TARGETS };
    GLuint m_textures[NUM_TARGETS] = {};
    GLuint m_framebuffers[NUM_TARGETS] = {};
    GLuint m_samplesBuffer = 0; ///< of the mask, when it has several samples a pixel
    GLuint m_samplesFramebuffer = 0;
    GLuint m_depths = 0;
    GLuint m_depthsFramebuffer = 0;
    GLenum m_depthFormat = GL_NONE;
    GLuint m_vertexArray = 0; ///< without attributes
    GLuint m_programs[kNumOutlinePasses] = {};
    int m_width = 0;
    int m_height = 0;
    GLint m_samples = 0;
    PixelBox m_box;
    std::uint64_t m_key = 0;
    bool m_hasLayer = false;
    bool m_copiesDepths = true; ///< false once the context has refused to
};

} // namespace kalmyr::detail
