#include "rendering/GLTargets.h"

namespace kalmyr::detail {

namespace {

constexpr int kMaxPendingErrors = 16;

GLint depthParameter(GLuint framebuffer, GLenum name)
{
    GLint value = 0;
    glGetFramebufferAttachmentParameteriv(
        GL_DRAW_FRAMEBUFFER, framebuffer ? GL_DEPTH_ATTACHMENT : GL_DEPTH, name, &value);
    return value;
}

} // namespace

SavedTarget::SavedTarget()
{
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_read);
    glGetIntegerv(GL_SCISSOR_BOX, m_box);
    glGetIntegerv(GL_VIEWPORT, m_viewport);
    m_scissored = glIsEnabled(GL_SCISSOR_TEST);
}

SavedTarget::~SavedTarget()
{
    bind();
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_read));
}

void SavedTarget::bind() const
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, getDrawn());
    glScissor(m_box[0], m_box[1], m_box[2], m_box[3]);
    glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    if (m_scissored) {
        glEnable(GL_SCISSOR_TEST);
    } else {
        glDisable(GL_SCISSOR_TEST);
    }
}

PixelBox SavedTarget::limit(const PixelBox& box) const
{
    const PixelBox scissor{m_box[0], m_box[1], m_box[0] + m_box[2], m_box[1] + m_box[3]};
    return m_scissored ? box.intersection(scissor) : box;
}

void limitTo(const PixelBox& box)
{
    glEnable(GL_SCISSOR_TEST);
    glScissor(box.left, box.bottom, box.width(), box.height());
}

GLuint makeTexture(GLint format, GLenum layout, GLenum type, int width, int height, GLint samples)
{
    GLuint name = 0;
    glGenTextures(1, &name);
    if (samples > 0) {
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, name);
        glTexImage2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, samples, static_cast<GLenum>(format),
                                width, height, GL_TRUE);
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, 0);
        return name;
    }
    glBindTexture(GL_TEXTURE_2D, name);
    glTexImage2D(GL_TEXTURE_2D, 0, format, width, height, 0, layout, type, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    return name;
}

GLuint makeDepthTexture(GLenum format, int width, int height, GLint samples)
{
    const auto internal = static_cast<GLint>(format);
    if (format == GL_DEPTH24_STENCIL8) {
        return makeTexture(internal, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, width, height,
                           samples);
    }
    if (format == GL_DEPTH32F_STENCIL8) {
        return makeTexture(internal, GL_DEPTH_STENCIL, GL_FLOAT_32_UNSIGNED_INT_24_8_REV, width,
                           height, samples);
    }
    return makeTexture(internal, GL_DEPTH_COMPONENT, GL_FLOAT, width, height, samples);
}

bool attachTexture(GLuint& framebuffer, GLenum attachment, GLuint texture, GLint samples)
{
    const bool isNew = !framebuffer;
    if (isNew) {
        glGenFramebuffers(1, &framebuffer);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, attachment,
                           samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D, texture, 0);
    const bool hasColors =
        attachment != GL_DEPTH_ATTACHMENT && attachment != GL_DEPTH_STENCIL_ATTACHMENT;
    if (isNew && !hasColors) {
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
    }
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

bool makeFramebuffer(GLuint& name, GLenum attachment, GLuint texture)
{
    name = 0;
    return attachTexture(name, attachment, texture);
}

void deleteTarget(GLuint& framebuffer, GLuint& texture)
{
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &texture);
    framebuffer = 0;
    texture = 0;
}

GLenum boundDepthFormat(GLuint framebuffer)
{
    if (depthParameter(framebuffer, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE) == GL_NONE) {
        return GL_NONE;
    }
    const GLint depth = depthParameter(framebuffer, GL_FRAMEBUFFER_ATTACHMENT_DEPTH_SIZE);
    const bool stencil = depthParameter(framebuffer, GL_FRAMEBUFFER_ATTACHMENT_STENCIL_SIZE) > 0;
    switch (depth) {
    case 16:
        return GL_DEPTH_COMPONENT16;
    case 24:
        return stencil ? GL_DEPTH24_STENCIL8 : GL_DEPTH_COMPONENT24;
    case 32:
        if (depthParameter(framebuffer, GL_FRAMEBUFFER_ATTACHMENT_COMPONENT_TYPE) == GL_FLOAT) {
            return stencil ? GL_DEPTH32F_STENCIL8 : GL_DEPTH_COMPONENT32F;
        }
        return GL_DEPTH_COMPONENT32;
    default:
        return GL_NONE;
    }
}

bool hasStencil(GLenum format)
{
    return format == GL_DEPTH24_STENCIL8 || format == GL_DEPTH32F_STENCIL8;
}

GLint boundSamples()
{
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES, &samples);
    return samples;
}

void clearErrors()
{
    for (int i = 0; i < kMaxPendingErrors && glGetError() != GL_NO_ERROR;) {
        ++i;
    }
}

} // namespace kalmyr::detail
