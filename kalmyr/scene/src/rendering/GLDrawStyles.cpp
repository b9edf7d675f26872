// What draw styles need of the renderer.
#include "rendering/GLRenderer.h"

namespace kalmyr::detail {

/// Depths only, a little behind the faces, so that the edges of the faces stand in front of them.
void GLRenderer::drawHiding(const std::vector<std::uint32_t>& items)
{
    GLint depthFunction = GL_LEQUAL;
    glGetIntegerv(GL_DEPTH_FUNC, &depthFunction);
    const bool isReversed = depthFunction == GL_GEQUAL || depthFunction == GL_GREATER;
    const GLfloat away = isReversed ? -1.0f : 1.0f;
    setBlending(Blending::NONE, true);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(away, away);
    for (const std::uint32_t i : items) {
        const FrameItem& item = m_frame.items[i];
        drawFaces(item, m_device.geometry(*item.entry->geometry));
    }
    glPolygonOffset(0, 0);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

} // namespace kalmyr::detail
