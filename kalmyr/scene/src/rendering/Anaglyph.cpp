#include "rendering/Anaglyph.h"

namespace kalmyr::detail {

namespace {

constexpr const char* kVertex = R"(#version 330 core
out vec2 place;
void main()
{
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    place = corner * 0.5 + 0.5;
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";
constexpr const char* kFragment = R"(#version 330 core
uniform sampler2D left;
in vec2 place;
out vec4 fragment;
void main()
{
    float brightness = dot(texture(left, place).rgb, vec3(0.299, 0.587, 0.114));
    fragment = vec4(brightness, 0.0, 0.0, 1.0);
}
)";

} // namespace

std::vector<RenderView> seenFromAside(std::vector<RenderView> views, float offset,
                                      float convergence)
{
    for (RenderView& each : views) {
        SoView& view = each.view;
        const bool isParallel = view.projection[2][3] == 0;
        if (isParallel || !(convergence > 0))
            continue;
        SbMatrix aside;
        aside.setTranslate(SbVec3f(-offset, 0, 0));
        view.viewing = view.viewing * aside;
        view.projection[2][0] -= view.projection[0][0] * offset / convergence;
    }
    return views;
}

Anaglyph::Anaglyph(GLDevice& device, const PixelBox& box) : m_device(device), m_box(box)
{
    glGenTextures(1, &m_texture);
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, m_box.width(), m_box.height(), 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &m_buffer);
}

Anaglyph::~Anaglyph()
{
    glDeleteFramebuffers(1, &m_buffer);
    glDeleteTextures(1, &m_texture);
}

void Anaglyph::keepLeft()
{
    GLint read = 0, drawn = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawn);
    const GLboolean isScissored = glIsEnabled(GL_SCISSOR_TEST);
    glDisable(GL_SCISSOR_TEST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(drawn));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_buffer);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
    glBlitFramebuffer(m_box.left, m_box.bottom, m_box.right, m_box.top, 0, 0, m_box.width(),
                      m_box.height(), GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(drawn));
    if (isScissored)
        glEnable(GL_SCISSOR_TEST);
}

void Anaglyph::mergeLeft()
{
    const GLProgram* program = m_device.program(SHADER_ANAGLYPH);
    if (!program)
        return;
    glViewport(m_box.left, m_box.bottom, m_box.width(), m_box.height());
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glColorMask(GL_TRUE, GL_FALSE, GL_FALSE, GL_FALSE);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glUseProgram(program->program);
    glBindVertexArray(m_device.emptyVertexArray());
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindVertexArray(0);
    glUseProgram(0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

ShaderSource anaglyphShaderSource()
{
    return {kVertex, {}, kFragment};
}

} // namespace kalmyr::detail
