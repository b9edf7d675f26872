// The object of an outline, as a mask or as its edges.
#include "rendering/GLRenderer.h"

#include <cstddef>

namespace kalmyr::detail {

/// Sharp edges wherever they are, smooth ones where the surface turns away from the eye.
void GLRenderer::drawContours(const FrameItem& item, const GLGeometry& buffers)
{
    const unsigned features = featuresOf(item) | SHADER_WIDE_LINES;
    setCulling(GL_NONE);
    if (buffers.numSharpIndices && prepare(item, buffers, features)) {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.outline);
        submit(buffers, GL_LINES, buffers.numSharpIndices, 0);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
    }
    if (buffers.numSmoothIndices && prepare(item, buffers, features | SHADER_SILHOUETTE)) {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.outline);
        submit(buffers, GL_LINES_ADJACENCY, buffers.numSmoothIndices,
               static_cast<std::size_t>(buffers.numSharpIndices));
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
    }
}

/// Whatever their style, faces are drawn whole, so that no edge within the object shows.
void GLRenderer::drawMask(int layer)
{
    m_purpose = Purpose::MASK;
    begin();
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendEquation(GL_MAX);
    for (const FrameItem& item : m_frame.items) {
        if (item.layer != layer) {
            continue;
        }
        const GLGeometry& buffers = m_device.geometry(*item.entry->geometry);
        if (buffers.numTriangleIndices && prepare(item, buffers, featuresOf(item))) {
            submit(buffers, GL_TRIANGLES, buffers.numTriangleIndices, buffers.firstIndex);
        }
        if (buffers.numLineIndices) {
            drawSegments(item, buffers, false);
        }
        if (buffers.numPointIndices) {
            drawPoints(item, buffers, false);
        }
    }
    glBlendEquation(GL_FUNC_ADD);
    glDisable(GL_BLEND);
    end();
}

void GLRenderer::drawEdges(const OutlineStyle& style, float width)
{
    m_purpose = Purpose::EDGES;
    begin();
    glDisable(GL_DEPTH_TEST);
    SoRef<SoRenderAppearance> look(new SoRenderAppearance);
    look->diffuse = style.color;
    look->drawStyle.lineWidth = width;
    look->drawStyle.linePattern = style.pattern;
    look->drawStyle.pointSize = 2 * width;
    for (const FrameItem& item : m_frame.items) {
        RenderList::Entry entry = *item.entry;
        entry.appearance = look;
        FrameItem outlined = item;
        outlined.entry = &entry;
        const GLGeometry& buffers = m_device.geometryWithOutline(*entry.geometry);
        drawContours(outlined, buffers);
        if (buffers.numLineIndices) {
            drawSegments(outlined, buffers, false);
        }
        if (buffers.numPointIndices) {
            drawPoints(outlined, buffers, false);
        }
    }
    end();
}

} // namespace kalmyr::detail
