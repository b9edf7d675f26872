#include "rendering/GLOutline.h"

#include "rendering/GLTargets.h"

#include <kalmyr/base/SbViewportRegion.h>

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr float kRimWidth = 1; // points
constexpr float kRimOpacity = 0.8f;
constexpr float kBrightLine = 0.4f; // luminance from which on the rim is dark

/// Returns the grey of the rim: dark beside a bright line, bright beside a dark one.
float rimTone(const SbColor& line)
{
    const float luminance = 0.2126f * line[0] + 0.7152f * line[1] + 0.0722f * line[2];
    return luminance > kBrightLine ? 0.0f : 1.0f;
}

/// The tiles that have a part in the box.
PixelBox tilesOf(const PixelBox& box)
{
    return {box.left / kOutlineTileSize, box.bottom / kOutlineTileSize,
            (box.right - 1) / kOutlineTileSize + 1, (box.top - 1) / kOutlineTileSize + 1};
}

} // namespace

/// In pixels.
struct GLOutline::Widths {
    float line;
    float hidden; ///< of the line where something hides the object
    float rim;
    int reach() const
    {
        return std::min(static_cast<int>(std::ceil(std::max(line, hidden) + rim)),
                        kMaxOutlineReach);
    }
};

GLOutline::Widths GLOutline::widthsOf(const OutlineStyle& style, float pixelsPerPoint)
{
    const float scale = std::max(pixelsPerPoint, 1.0f);
    const float line = std::max(style.width, 1.0f);
    return {line * scale, std::max(line / 2, 1.0f) * scale, kRimWidth * scale};
}

int GLOutline::reachOf(const OutlineStyle& style, float pixelsPerPoint)
{
    return widthsOf(style, pixelsPerPoint).reach();
}

void GLOutline::free()
{
    for (int i = 0; i < NUM_TARGETS; ++i) {
        deleteTarget(m_framebuffers[i], m_textures[i]);
    }
    deleteTarget(m_depthsFramebuffer, m_depths);
    glDeleteFramebuffers(1, &m_samplesFramebuffer);
    glDeleteRenderbuffers(1, &m_samplesBuffer);
    glDeleteVertexArrays(1, &m_vertexArray);
    m_vertexArray = 0;
    m_samplesFramebuffer = 0;
    m_samplesBuffer = 0;
    for (GLuint& program : m_programs) {
        glDeleteProgram(program);
        program = 0;
    }
    m_depthFormat = GL_NONE;
    m_width = 0;
    m_height = 0;
    m_key = 0;
}

bool GLOutline::makeTargets(int width, int height, GLint samples)
{
    if (m_width == width && m_height == height && m_samples == samples) {
        return true;
    }
    free();
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    if (width > limit || height > limit) {
        return false;
    }
    glGenVertexArrays(1, &m_vertexArray);
    bool ok = true;
    for (int i = 0; i < NUM_TARGETS; ++i) {
        m_textures[i] =
            makeTexture(i == MASK ? GL_RG8 : GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, width, height);
        ok = makeFramebuffer(m_framebuffers[i], GL_COLOR_ATTACHMENT0, m_textures[i]) && ok;
    }
    if (samples > 1) {
        glGenRenderbuffers(1, &m_samplesBuffer);
        glBindRenderbuffer(GL_RENDERBUFFER, m_samplesBuffer);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RG8, width, height);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        glGenFramebuffers(1, &m_samplesFramebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_samplesFramebuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                  m_samplesBuffer);
        ok = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE && ok;
    }
    if (!ok) {
        free();
        return false;
    }
    m_width = width;
    m_height = height;
    m_samples = samples;
    return true;
}

bool GLOutline::makeDepths(int width, int height, GLenum format)
{
    if (m_depths && m_depthFormat == format) {
        return true;
    }
    deleteTarget(m_depthsFramebuffer, m_depths);
    m_depths = makeDepthTexture(format, width, height);
    m_depthFormat = format;
    return makeFramebuffer(m_depthsFramebuffer,
                           hasStencil(format) ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT,
                           m_depths);
}

void GLOutline::setEmpty(std::uint64_t key)
{
    m_box = {};
    m_key = key;
}

bool GLOutline::begin(int width, int height, const PixelBox& box)
{
    const SavedTarget saved;
    if (!makeTargets(width, height, boundSamples())) {
        return false;
    }
    m_box = box;
    m_key = 0;
    m_hasLayer = false;
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER,
                      m_samplesFramebuffer ? m_samplesFramebuffer : m_framebuffers[MASK]);
    limitTo(seenFromBox());
    constexpr GLfloat kNothing[4] = {};
    glClearBufferfv(GL_COLOR, 0, kNothing);
    return true;
}

/// False when there are none, or not to be had: then nothing counts as hidden.
bool GLOutline::copyDepths()
{
    GLint bound = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    const auto from = static_cast<GLuint>(bound);
    const GLenum format = m_copiesDepths ? boundDepthFormat(from) : GL_NONE;
    const bool isNew = m_depthFormat != format;
    if (!makeDepths(m_width, m_height, format == GL_NONE ? GL_DEPTH_COMPONENT24 : format)) {
        return false;
    }
    glDisable(GL_SCISSOR_TEST);
    glDepthMask(GL_TRUE);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_depthsFramebuffer);
    if (format == GL_NONE) {
        constexpr GLfloat kFar = 1;
        glClearBufferfv(GL_DEPTH, 0, &kFar);
        return true;
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    if (isNew) {
        clearErrors();
    }
    glBlitFramebuffer(m_box.left, m_box.bottom, m_box.right, m_box.top, m_box.left, m_box.bottom,
                      m_box.right, m_box.top, GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    if (isNew && glGetError() != GL_NO_ERROR) {
        m_copiesDepths = false;
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, from);
        return copyDepths();
    }
    return true;
}

void GLOutline::addLayer(const std::function<void()>& draw)
{
    const SavedTarget saved;
    if (!copyDepths()) {
        return;
    }
    const GLuint target = m_samplesFramebuffer ? m_samplesFramebuffer : m_framebuffers[MASK];
    if (m_hasLayer) {
        glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_FALSE);
        runPass(OutlinePass::COVER, target, m_depths, m_box);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    }
    m_hasLayer = true;
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, target);
    limitTo(m_box);
    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, m_depths);
    glActiveTexture(GL_TEXTURE0);
    draw();
    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
}

GLuint GLOutline::program(OutlinePass pass)
{
    GLuint& known = m_programs[static_cast<std::size_t>(pass)];
    if (!known) {
        known = linkProgram(outlineShaderSource(pass));
    }
    return known;
}

/// Fills the box, in whatever is bound for drawing into, from the texture.
void GLOutline::cover(OutlinePass pass, GLuint texture)
{
    glViewport(0, 0, m_width, m_height);
    glDisable(GL_DEPTH_TEST);
    glUseProgram(program(pass));
    glBindVertexArray(m_vertexArray);
    glBindTexture(GL_TEXTURE_2D, texture);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindVertexArray(0);
    glUseProgram(0);
}

/// What the passes look at when they fill the box: an earlier mask may reach beyond it.
PixelBox GLOutline::seenFromBox() const
{
    constexpr int kReach = kMaxOutlineReach;
    return PixelBox{m_box.left - kReach, m_box.bottom - kReach, m_box.right + kReach,
                    m_box.top + kReach}
        .intersection({0, 0, m_width, m_height});
}

void GLOutline::runPass(OutlinePass pass, GLuint framebuffer, GLuint texture, const PixelBox& box)
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    limitTo(box);
    cover(pass, texture);
}

/// Most of the box is within the object or beside its outline.
void GLOutline::findTiles()
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_framebuffers[TILES]);
    limitTo(tilesOf(m_box));
    cover(OutlinePass::TILES, m_textures[PICTURE]);
}

void GLOutline::layTiles()
{
    const GLuint used = program(OutlinePass::LAY);
    const PixelBox tiles = tilesOf(m_box);
    glViewport(0, 0, m_width, m_height);
    glDisable(GL_DEPTH_TEST);
    glUseProgram(used);
    glUniform1i(glGetUniformLocation(used, "tiles"), kDepthUnit);
    glUniform4i(glGetUniformLocation(used, "grid"), tiles.left, tiles.bottom, tiles.width(), 0);
    glUniform2f(glGetUniformLocation(used, "window"), static_cast<float>(m_width),
                static_cast<float>(m_height));
    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, m_textures[TILES]);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_textures[PICTURE]);
    glBindVertexArray(m_vertexArray);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, tiles.width() * tiles.height());
    glBindVertexArray(0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
    glUseProgram(0);
}

void GLOutline::setUniforms(const OutlineStyle& style, const Widths& widths)
{
    const auto place = [this](OutlinePass pass, const char* name) {
        return glGetUniformLocation(program(pass), name);
    };
    glUseProgram(program(OutlinePass::ROWS));
    glUniform1i(place(OutlinePass::ROWS, "reach"), widths.reach());
    glUseProgram(program(OutlinePass::COLUMNS));
    glUniform1i(place(OutlinePass::COLUMNS, "reach"), widths.reach());
    const SbColor& c = style.color;
    const float tone = rimTone(c) * kRimOpacity;
    glUniform4f(place(OutlinePass::COLUMNS, "line"), c[0], c[1], c[2], 1);
    glUniform4f(place(OutlinePass::COLUMNS, "rim"), tone, tone, tone, kRimOpacity);
    glUniform4f(place(OutlinePass::COLUMNS, "sizes"), widths.line, widths.hidden, widths.rim,
                style.pattern);
}

void GLOutline::end(const OutlineStyle& style, float pixelsPerPoint, std::uint64_t key)
{
    const SavedTarget saved;
    const PixelBox seen = seenFromBox();
    if (m_samplesFramebuffer) {
        glDisable(GL_SCISSOR_TEST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, m_samplesFramebuffer);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_framebuffers[MASK]);
        glBlitFramebuffer(seen.left, seen.bottom, seen.right, seen.top, seen.left, seen.bottom,
                          seen.right, seen.top, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    }
    setUniforms(style, widthsOf(style, pixelsPerPoint));
    runPass(OutlinePass::ROWS, m_framebuffers[ROWS], m_textures[MASK], seen);
    runPass(OutlinePass::COLUMNS, m_framebuffers[PICTURE], m_textures[ROWS], m_box);
    findTiles();
    m_key = key;
}

void GLOutline::lay()
{
    if (m_box.isEmpty()) {
        return;
    }
    const SavedTarget saved;
    const PixelBox box = saved.limit(m_box);
    if (box.isEmpty()) {
        return;
    }
    limitTo(box);
    constexpr GLenum kNames[] = {GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA,
                                 GL_BLEND_DST_ALPHA};
    GLint functions[4];
    for (int i = 0; i < 4; ++i) {
        glGetIntegerv(kNames[i], &functions[i]);
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    layTiles();
    glDisable(GL_BLEND);
    glBlendFuncSeparate(static_cast<GLenum>(functions[0]), static_cast<GLenum>(functions[1]),
                        static_cast<GLenum>(functions[2]), static_cast<GLenum>(functions[3]));
}

} // namespace kalmyr::detail
