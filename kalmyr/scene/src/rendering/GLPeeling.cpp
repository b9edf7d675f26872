#include "rendering/GLPeeling.h"

#include "rendering/GLDevice.h"
#include "rendering/PeelingShaders.h"

#include <algorithm>
#include <iterator>

namespace kalmyr::detail {

namespace {

constexpr int kSizeStep = 64; // textures grow in such steps, not with every change of the view
constexpr std::size_t kBytesPerSample = 8 + 8 + 8 + 4 + 8 + 8; // of all textures
/// Keys in front of and behind everything.
constexpr GLfloat kBefore[4] = {-1, 0, 0, 0};
constexpr GLfloat kBehind[4] = {2, 0, 0, 0};
constexpr GLfloat kNothing[4] = {};

int roundedUp(int size)
{
    return (size + kSizeStep - 1) / kSizeStep * kSizeStep;
}

bool canShadeSamples()
{
    return epoxy_gl_version() >= 40 || epoxy_has_gl_extension("GL_ARB_sample_shading");
}

/// How far two depths may be apart that are equal in the format.
float stepOf(GLenum depthFormat)
{
    switch (depthFormat) {
    case GL_DEPTH_COMPONENT16:
        return 1.0f / 65535;
    case GL_DEPTH_COMPONENT24:
    case GL_DEPTH24_STENCIL8:
        return 1.0f / 16777215;
    default:
        return 0;
    }
}

} // namespace

void GLPeeling::freeTargets()
{
    glDeleteTextures(NUM_TEXTURES, m_textures);
    glDeleteFramebuffers(2, m_layerTargets);
    glDeleteFramebuffers(1, &m_sumTarget);
    glDeleteFramebuffers(1, &m_coverTarget);
    std::fill(std::begin(m_textures), std::end(m_textures), 0u);
    m_layerTargets[0] = m_layerTargets[1] = m_sumTarget = m_coverTarget = 0;
    m_width = m_height = 0;
}

void GLPeeling::free()
{
    freeTargets();
    for (GLuint& program : m_programs) {
        glDeleteProgram(program);
        program = 0;
    }
    glDeleteBuffers(1, &m_block);
    glDeleteQueries(1, &m_query);
    glDeleteVertexArrays(1, &m_vertexArray);
    m_block = m_query = m_vertexArray = 0;
}

bool GLPeeling::open()
{
    GLint bound = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    const GLenum format = boundDepthFormat(static_cast<GLuint>(bound));
    const GLint samples = boundSamples();
    if (format == GL_NONE || format == m_refused) {
        return false;
    }
    if (format != m_depthFormat || samples != m_boundSamples) {
        freeTargets();
        m_depthFormat = format;
        m_boundSamples = samples;
        m_samples = samples > 1 && canShadeSamples() ? samples : 0;
    }
    return true;
}

int GLPeeling::getMaxRows(int width) const
{
    const std::size_t row = static_cast<std::size_t>(roundedUp(width)) * kBytesPerSample
                            * static_cast<std::size_t>(std::max(m_samples, 1));
    const auto rows = static_cast<int>(std::min<std::size_t>(kMaxBytes / row, 1 << 15));
    return std::max(rows / kSizeStep * kSizeStep, kSizeStep);
}

GLenum GLPeeling::textureTarget() const
{
    return m_samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D;
}

bool GLPeeling::makeTargets(int width, int height)
{
    if (m_width >= width && m_height >= height) {
        return true;
    }
    int newWidth = std::max(m_width, roundedUp(width));
    int newHeight = std::max(m_height, roundedUp(height));
    if (newHeight > getMaxRows(newWidth)) { // one part wide and low, another narrow and high
        newWidth = roundedUp(width);
        newHeight = roundedUp(height);
    }
    freeTargets();
    m_width = newWidth;
    m_height = newHeight;
    struct {
        GLint format;
        GLenum layout;
    } constexpr kFormats[] = {{GL_RGBA16F, GL_RGBA}, {GL_RG32F, GL_RG}, {GL_RG32F, GL_RG}};
    const auto make = [this](GLint format, GLenum layout) {
        return makeTexture(format, layout, GL_FLOAT, m_width, m_height, m_samples);
    };
    clearErrors();
    for (int i = LAYER; i <= OTHER_KEYS; ++i) {
        m_textures[i] = make(kFormats[i].format, kFormats[i].layout);
    }
    m_textures[SUM] = make(GL_RGBA16F, GL_RGBA);
    m_textures[DEPTHS] = makeDepthTexture(GL_DEPTH_COMPONENT32F, m_width, m_height, m_samples);
    m_textures[COVER] = makeDepthTexture(m_depthFormat, m_width, m_height, m_samples);
    bool ok = glGetError() == GL_NO_ERROR;
    for (int i = 0; i < 2; ++i) {
        GLuint& target = m_layerTargets[i];
        attachTexture(target, GL_COLOR_ATTACHMENT0, m_textures[LAYER], m_samples);
        attachTexture(target, GL_COLOR_ATTACHMENT1, m_textures[KEYS + i], m_samples);
        ok = attachTexture(target, GL_DEPTH_ATTACHMENT, m_textures[DEPTHS], m_samples) && ok;
        constexpr GLenum kBuffers[] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};
        glDrawBuffers(2, kBuffers);
    }
    ok = attachTexture(m_sumTarget, GL_COLOR_ATTACHMENT0, m_textures[SUM], m_samples) && ok;
    const GLenum cover =
        hasStencil(m_depthFormat) ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT;
    ok = attachTexture(m_coverTarget, cover, m_textures[COVER], m_samples) && ok;
    if (!ok) {
        freeTargets();
    }
    return ok;
}

bool GLPeeling::copyDepths(const SavedTarget& target)
{
    glDisable(GL_SCISSOR_TEST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, target.getDrawn());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_coverTarget);
    clearErrors();
    glBlitFramebuffer(m_part.left, m_part.bottom, m_part.right, m_part.top, 0, 0, m_part.width(),
                      m_part.height(), GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    if (glGetError() == GL_NO_ERROR) {
        return true;
    }
    m_refused = m_depthFormat;
    return false;
}

bool GLPeeling::begin(const PixelBox& part, const SavedTarget& target)
{
    m_part = part;
    m_layer = 0;
    glActiveTexture(GL_TEXTURE0);
    if (!makeTargets(part.width(), part.height()) || !copyDepths(target)) {
        return false;
    }
    if (!m_block) {
        glGenBuffers(1, &m_block);
        glGenQueries(1, &m_query);
        glGenVertexArrays(1, &m_vertexArray);
    }
    limitTo({0, 0, m_part.width(), m_part.height()});
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_layerTargets[1]);
    glClearBufferfv(GL_COLOR, 1, kBefore);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_sumTarget);
    glClearBufferfv(GL_COLOR, 0, kNothing);
    setBlock({stepOf(m_depthFormat), 0, 0, 0});
    return true;
}

void GLPeeling::setBlock(const Block& block)
{
    glBindBuffer(GL_UNIFORM_BUFFER, m_block);
    glBufferData(GL_UNIFORM_BUFFER, sizeof block, &block, GL_STREAM_DRAW);
    glBindBufferBase(GL_UNIFORM_BUFFER, PEELING_BINDING, m_block);
}

void GLPeeling::bindTextures(GLuint keys)
{
    glActiveTexture(GL_TEXTURE0 + kPeeledUnit);
    glBindTexture(textureTarget(), keys);
    glActiveTexture(GL_TEXTURE0 + kCoverUnit);
    glBindTexture(textureTarget(), keys ? m_textures[COVER] : 0);
    glActiveTexture(GL_TEXTURE0);
}

void GLPeeling::beginLayer()
{
    const int now = m_layer & 1;
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_layerTargets[now]);
    limitTo({0, 0, m_part.width(), m_part.height()});
    constexpr GLfloat kFar = 1;
    glDepthMask(GL_TRUE);
    glClearBufferfv(GL_COLOR, 0, kNothing);
    glClearBufferfv(GL_COLOR, 1, kBehind);
    glClearBufferfv(GL_DEPTH, 0, &kFar);
    bindTextures(m_textures[now ? KEYS : OTHER_KEYS]);
    glBeginQuery(GL_ANY_SAMPLES_PASSED, m_query);
}

bool GLPeeling::endLayer()
{
    glEndQuery(GL_ANY_SAMPLES_PASSED);
    bindTextures(0);
    ++m_layer;
    GLuint any = 0;
    glGetQueryObjectuiv(m_query, GL_QUERY_RESULT, &any);
    if (!any) {
        return false;
    }
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_sumTarget);
    glViewport(0, 0, m_part.width(), m_part.height());
    glBlendFunc(GL_ONE_MINUS_DST_ALPHA, GL_ONE);
    lay(m_textures[LAYER], 0, 0);
    return true;
}

void GLPeeling::beginRest(const SavedTarget& target)
{
    target.bind();
    limitTo(m_part);
    setBlock({stepOf(m_depthFormat), 1, static_cast<float>(m_part.left),
              static_cast<float>(m_part.bottom)});
    bindTextures(m_textures[m_layer & 1 ? KEYS : OTHER_KEYS]);
}

void GLPeeling::end(const SavedTarget& target)
{
    bindTextures(0);
    target.bind();
    limitTo(m_part);
    glViewport(m_part.left, m_part.bottom, m_part.width(), m_part.height());
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    lay(m_textures[SUM], m_part.left, m_part.bottom);
    target.bind();
}

void GLPeeling::lay(GLuint texture, int left, int bottom)
{
    const GLuint used = program();
    glEnable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glUseProgram(used);
    glUniform2i(glGetUniformLocation(used, "origin"), left, bottom);
    glBindVertexArray(m_vertexArray);
    glBindTexture(textureTarget(), texture);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindTexture(textureTarget(), 0);
    glBindVertexArray(0);
    glUseProgram(0);
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
}

GLuint GLPeeling::program()
{
    GLuint& known = m_programs[m_samples > 0 ? 1 : 0];
    if (!known) {
        known = linkProgram(layerShaderSource(m_samples > 0));
    }
    return known;
}

} // namespace kalmyr::detail
