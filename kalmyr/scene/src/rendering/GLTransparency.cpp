#include "rendering/GLPeeling.h"
#include "rendering/GLRenderer.h"

#include <kalmyr/actions/SoGLRenderAction.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

bool isFilled(const FrameItem& item)
{
    return item.entry->appearance->drawStyle.style == SoDrawStyleValues::FILLED;
}

} // namespace

void GLRenderer::drawTransparent(std::vector<std::uint32_t> items)
{
    if (items.empty()) {
        return;
    }
    if (m_type == SoGLRenderAction::BLEND) {
        drawInOrder(items);
        return;
    }
    if (m_type == SoGLRenderAction::SORTED_PIXELS_BLEND
        || m_type == SoGLRenderAction::DELAYED_SORTED_PIXELS_BLEND) {
        drawByPixels(items);
        return;
    }
    if (m_type != SoGLRenderAction::DELAYED_BLEND) {
        std::stable_sort(items.begin(), items.end(), [this](std::uint32_t a, std::uint32_t b) {
            return m_frame.items[a].depth < m_frame.items[b].depth;
        });
    }
    // Transparent surfaces do not hide each other; what is opaque in front hides them.
    setBlending(Blending::BLEND, false);
    switch (m_type) {
    case SoGLRenderAction::SORTED_OBJECT_BLEND:
        drawByObjects(items);
        break;
    case SoGLRenderAction::SORTED_TRIANGLES_BLEND:
        drawByTriangles(items);
        break;
    case SoGLRenderAction::SORTED_OBJECT_TRIANGLES_BLEND:
        for (const std::uint32_t i : items) {
            drawByTriangles({i});
        }
        break;
    default:
        for (const std::uint32_t i : items) {
            drawItem(m_frame.items[i]);
        }
    }
    setBlending(Blending::NONE, true);
}

/// The far side of each object before its near side, which is all the order that convex shapes
/// need.
void GLRenderer::drawByObjects(const std::vector<std::uint32_t>& items)
{
    for (const std::uint32_t i : items) {
        const FrameItem& item = m_frame.items[i];
        const bool filled = isFilled(item);
        if (item.entry->geometry->triangles.empty() || !filled || item.entry->geometry->solid) {
            drawItem(item);
            continue;
        }
        const GLGeometry& buffers = m_device.geometry(*item.entry->geometry);
        if (!prepare(item, buffers, featuresOf(item))) {
            continue;
        }
        for (const GLenum face : {GL_FRONT, GL_BACK}) {
            setCulling(face);
            submit(buffers, GL_TRIANGLES, buffers.numTriangleIndices, buffers.firstIndex);
        }
        setCulling(GL_NONE);
        drawItem(item, false);
    }
}

void GLRenderer::collectTriangles(std::uint32_t index, std::vector<DepthTriangle>& triangles) const
{
    const FrameItem& item = m_frame.items[index];
    const SoGeometry& geometry = *item.entry->geometry;
    const float* m = item.toEye.m;
    std::vector<float> depths(geometry.positions.size());
    for (std::size_t i = 0; i < depths.size(); ++i) {
        const SbVec3f& p = geometry.positions[i];
        depths[i] = p[0] * m[2] + p[1] * m[6] + p[2] * m[10] + m[14];
    }
    for (std::size_t t = 0; t < geometry.getNumTriangles(); ++t) {
        const std::uint32_t* corner = &geometry.triangles[3 * t];
        const float sum = depths[corner[0]] + depths[corner[1]] + depths[corner[2]];
        triangles.push_back({sum / 3, index, static_cast<std::uint32_t>(t)});
    }
}

void GLRenderer::drawByTriangles(const std::vector<std::uint32_t>& items)
{
    std::vector<DepthTriangle> triangles;
    std::vector<std::uint32_t> others;
    for (const std::uint32_t i : items) {
        const bool filled = isFilled(m_frame.items[i]);
        if (filled) {
            collectTriangles(i, triangles);
        } else {
            drawItem(m_frame.items[i]);
        }
        others.push_back(i);
    }
    std::stable_sort(
        triangles.begin(), triangles.end(),
        [](const DepthTriangle& a, const DepthTriangle& b) { return a.depth < b.depth; });
    drawTriangleRuns(triangles);
    for (const std::uint32_t i : others) {
        if (isFilled(m_frame.items[i])) {
            drawItem(m_frame.items[i], false);
        }
    }
}

void GLRenderer::drawTriangleRuns(const std::vector<DepthTriangle>& triangles)
{
    if (triangles.empty()) {
        return;
    }
    std::vector<std::uint32_t> indices;
    indices.reserve(3 * triangles.size());
    for (const DepthTriangle& t : triangles) {
        const auto& from = m_frame.items[t.item].entry->geometry->triangles;
        indices.insert(indices.end(), &from[3 * t.triangle], &from[3 * t.triangle] + 3);
    }
    const GLuint stream = m_device.streamIndices(indices);
    for (std::size_t first = 0; first < triangles.size();) {
        std::size_t last = first + 1;
        while (last < triangles.size() && triangles[last].item == triangles[first].item) {
            ++last;
        }
        const FrameItem& item = m_frame.items[triangles[first].item];
        const GLGeometry& buffers = m_device.geometry(*item.entry->geometry);
        if (prepare(item, buffers, featuresOf(item))) {
            setFaces(item);
            glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, stream);
            submit(buffers, GL_TRIANGLES, static_cast<GLsizei>(3 * (last - first)), 3 * first);
            glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
        }
        first = last;
    }
}

/// In rows of the picture, as many at a time as there is memory for.
void GLRenderer::drawByPixels(const std::vector<std::uint32_t>& items)
{
    const SavedTarget target;
    PixelBox all;
    std::vector<PixelBox> boxes;
    for (const std::uint32_t i : items) {
        const FrameItem& item = m_frame.items[i];
        const PixelBox box = boxOf(item, m_frame.views[item.view]);
        boxes.push_back(target.limit(inTarget(box, m_options)));
        all = all.unionWith(boxes.back());
    }
    GLPeeling& peeling = m_device.peeling();
    const bool canPeel = !all.isEmpty() && peeling.open();
    const int step = canPeel ? peeling.getMaxRows(all.width()) : all.height();
    std::vector<std::uint32_t> seen;
    for (PixelBox part = all; !part.isEmpty(); part.bottom += step) {
        PixelBox rows = part;
        rows.top = std::min(part.top, part.bottom + step);
        seen.clear();
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (!boxes[i].intersection(rows).isEmpty()) {
                seen.push_back(items[i]);
            }
        }
        if (!canPeel || !drawPart(rows, target, seen)) {
            target.bind();
            limitTo(rows);
            setBlending(Blending::BLEND, false);
            drawByTriangles(seen);
        }
        forgetBindings();
    }
    // The passes have changed what begin() sets.
    end();
    begin();
}

bool GLRenderer::drawPart(const PixelBox& part, const SavedTarget& target,
                          const std::vector<std::uint32_t>& items)
{
    GLPeeling& peeling = m_device.peeling();
    if (!peeling.begin(part, target)) {
        return false;
    }
    m_peelingFeatures = SHADER_PEEL | (peeling.hasSamples() ? SHADER_SAMPLES : 0u);
    const PixelBox whole = m_part;
    m_part.left += part.left;
    m_part.bottom += part.bottom;
    int layer = 0;
    do {
        peeling.beginLayer();
        setBlending(Blending::LAYER, true);
        drawNumbered(items);
    } while (peeling.endLayer() && ++layer < GLPeeling::kMaxLayers);
    m_part = whole;
    if (layer == GLPeeling::kMaxLayers) {
        peeling.beginRest(target);
        setBlending(Blending::BLEND, false);
        setBlendFunction();
        drawByTriangles(items);
        forgetBindings();
    }
    m_peelingFeatures = 0;
    setBlending(Blending::NONE, true);
    peeling.end(target);
    return true;
}

void GLRenderer::drawNumbered(const std::vector<std::uint32_t>& items)
{
    forgetBindings();
    m_numPrimitives = 0;
    for (const std::uint32_t i : items) {
        drawItem(m_frame.items[i]);
    }
    forgetBindings();
}

/// Primitives are told apart by their numbers, which go on from one draw to the next.
void GLRenderer::numberPrimitives(GLenum mode, GLsizei count)
{
    if (!m_peelingFeatures) {
        return;
    }
    glUniform1i(m_program->firstPrimitive, m_numPrimitives & 0xffffff);
    m_numPrimitives += count / (mode == GL_TRIANGLES ? 3 : mode == GL_LINES ? 2 : 1);
}

/// For others that bind programs, vertex arrays and textures, and set the viewport.
void GLRenderer::forgetBindings()
{
    for (; m_clipPlanes > 0; --m_clipPlanes) {
        glDisable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(m_clipPlanes - 1));
    }
    setCulling(GL_NONE);
    m_surroundings = -1;
    m_program = nullptr;
    m_material = nullptr;
    m_vertexArray = 0;
    m_texture = 0;
    m_view = -1;
}

} // namespace kalmyr::detail
