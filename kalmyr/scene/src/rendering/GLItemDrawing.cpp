// How one item of a frame is drawn: its program, matrices and material, then its parts.
#include "rendering/GLDashes.h"
#include "rendering/GLRenderer.h"

#include <algorithm>

namespace kalmyr::detail {

namespace {

template <class Vector>
void setVector(Vector& out, const SbColor& rgb, float w)
{
    for (int c = 0; c < 3; ++c) {
        out[c] = rgb[c];
    }
    out[3] = w;
}

/// Columns of the matrix that carries normals: cofactors, which need no inverse and keep working
/// for flattening scales. Their common sign is that of the determinant.
void normalMatrix(const Matrix4& matrix, bool mirrored, float* out)
{
    const float* m = matrix.m;
    const float sign = mirrored ? -1.0f : 1.0f;
    for (int row = 0; row < 3; ++row) {
        const float* a = m + 4 * ((row + 1) % 3);
        const float* b = m + 4 * ((row + 2) % 3);
        out[4 * row + 0] = sign * (a[1] * b[2] - a[2] * b[1]);
        out[4 * row + 1] = sign * (a[2] * b[0] - a[0] * b[2]);
        out[4 * row + 2] = sign * (a[0] * b[1] - a[1] * b[0]);
        out[4 * row + 3] = 0;
    }
}

unsigned when(bool condition, ShaderFeature feature)
{
    return condition ? feature : 0u;
}

/// Number of a texture's model in the shaders; of SURFACE with what the image replaces.
float modelNumber(const SoTextureValues& texture)
{
    switch (texture.model) {
    case SoTextureValues::SURFACE:
        return static_cast<float>(4 + (texture.hasColors() ? 1 : 0) + (texture.hasAlpha() ? 2 : 0));
    case SoTextureValues::MODULATE:
        return 0;
    case SoTextureValues::DECAL:
        return 1;
    case SoTextureValues::BLEND:
        return 2;
    default:
        return 3;
    }
}

bool isBlack(const SbColor& color)
{
    return color[0] == 0 && color[1] == 0 && color[2] == 0;
}

bool isOneDirectional(const EyeSurroundings& surroundings)
{
    return surroundings.lights.size() == 1 && surroundings.lights[0].position[3] < 0.5f;
}

const void* indexOffset(std::size_t firstIndex)
{
    return reinterpret_cast<const void*>(firstIndex * sizeof(std::uint32_t));
}
} // namespace

void GLRenderer::drawItem(const FrameItem& item, bool withFaces)
{
    const RenderList::Entry& entry = *item.entry;
    const SoDrawStyleValues::Style style = entry.appearance->drawStyle.style;
    const bool edges = style == SoDrawStyleValues::LINES && withFaces;
    const GLGeometry& buffers =
        edges ? m_device.geometryWithEdges(*entry.geometry) : m_device.geometry(*entry.geometry);
    if (style == SoDrawStyleValues::POINTS) {
        drawPoints(item, buffers, true);
        return;
    }
    if (buffers.numTriangleIndices && withFaces) {
        if (edges) {
            drawSegments(item, buffers, true);
        } else {
            drawFaces(item, buffers);
        }
    }
    if (buffers.numLineIndices) {
        drawSegments(item, buffers, false);
    }
    if (buffers.numPointIndices) {
        drawPoints(item, buffers, false);
    }
}

void GLRenderer::drawFaces(const FrameItem& item, const GLGeometry& buffers)
{
    if (prepare(item, buffers, featuresOf(item))) {
        setFaces(item);
        submit(buffers, GL_TRIANGLES, buffers.numTriangleIndices, buffers.firstIndex);
    }
}

void GLRenderer::drawSegments(const FrameItem& item, const GLGeometry& buffers, bool edges)
{
    const SoDrawStyleValues& style = item.entry->appearance->drawStyle;
    if (style.linePattern != 0xffff && m_purpose == Purpose::SCENE) {
        drawDashes(item, buffers, edges);
        return;
    }
    const bool wide = m_purpose == Purpose::EDGES || style.lineWidth > 1;
    if (!prepare(item, buffers, featuresOf(item) | when(wide, SHADER_WIDE_LINES))) {
        return;
    }
    setCulling(GL_NONE);
    if (!edges) {
        submit(buffers, GL_LINES, buffers.numLineIndices, buffers.firstLineIndex());
        return;
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.edges);
    submit(buffers, GL_LINES, buffers.numEdgeIndices, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
}

/// The pattern goes on from segment to segment. Edges come in another order than without one.
void GLRenderer::drawDashes(const FrameItem& item, const GLGeometry& buffers, bool edges)
{
    if (!prepare(item, buffers, featuresOf(item) | SHADER_WIDE_LINES | SHADER_DASHES)) {
        return;
    }
    GLDashes& dashes = m_device.dashes();
    const SoGeometry& geometry = *item.entry->geometry;
    const auto& lines =
        edges ? dashes.edgesOf(geometry, m_device.getFrameNumber()) : geometry.lines;
    const RenderView& view = m_frame.views[item.view];
    const Matrix4 toClip =
        Matrix4::product(SbMatrix(item.toEye.m), Matrix4::from(view.view.projection));
    const SbVec2s& size = view.region.getViewportSizePixels();
    const std::vector<float> starts =
        dashStarts(geometry.positions, lines, toClip, size[0], size[1]);
    setCulling(GL_NONE);
    if (edges) {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_device.streamIndices(lines));
    }
    const std::size_t base = edges ? 0 : buffers.firstLineIndex();
    for (std::size_t first = 0; first < starts.size(); first += dashes.getMaxSegments()) {
        const std::size_t count = std::min(starts.size() - first, dashes.getMaxSegments());
        dashes.bind(&starts[first], count);
        submit(buffers, GL_LINES, static_cast<GLsizei>(2 * count), base + 2 * first);
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
}

void GLRenderer::drawPoints(const FrameItem& item, const GLGeometry& buffers, bool allVertices)
{
    if (!prepare(item, buffers, featuresOf(item))) {
        return;
    }
    glPointSize(std::max(1.0f, item.entry->appearance->drawStyle.pointSize));
    if (allVertices) {
        numberPrimitives(GL_POINTS, buffers.numVertices);
        m_device.paint().offsetFor(GL_POINTS);
        ++m_statistics.drawCalls;
        glDrawArrays(GL_POINTS, buffers.firstVertex, buffers.numVertices);
    } else {
        submit(buffers, GL_POINTS, buffers.numPointIndices, buffers.firstPointIndex());
    }
}

void GLRenderer::submit(const GLGeometry& buffers, GLenum mode, GLsizei count,
                        std::size_t firstIndex)
{
    numberPrimitives(mode, count);
    m_device.paint().offsetFor(mode);
    ++m_statistics.drawCalls;
    glDrawElementsBaseVertex(mode, count, GL_UNSIGNED_INT, indexOffset(firstIndex),
                             buffers.firstVertex);
}

SoFogValues GLRenderer::fogOn(const SoRenderAppearance& look) const
{
    return m_frame.fog.type != SoEnvironmentValues::NONE ? m_frame.fog
                                                         : SoFogValues::from(look.environment);
}

unsigned GLRenderer::featuresOf(const FrameItem& item) const
{
    const SoGeometry& geometry = *item.entry->geometry;
    const SoRenderAppearance& look = *item.entry->appearance;
    const EyeSurroundings& surroundings = m_frame.surroundings[item.surroundings];
    unsigned features = when(!surroundings.clipPlanes.empty(), SHADER_CLIP)
                        | when(surroundings.clipPlanes.size() > kMaxClipPlanes, SHADER_PLANE_TABLE);
    const std::size_t count = geometry.positions.size();
    features |= when(count > 0 && geometry.pixelOffsets.size() >= count, SHADER_PIXEL_OFFSETS);
    if (m_purpose == Purpose::MASK) {
        const bool hasHoles = look.translucentTexture && geometry.texCoords.size() >= count;
        return features | SHADER_MASK | when(hasHoles, SHADER_TEXTURE);
    }
    if (m_purpose == Purpose::EDGES) {
        return features;
    }
    if (look.lit && geometry.normals.size() >= count) {
        features |= SHADER_LIT | when(!isBlack(look.specular), SHADER_SPECULAR)
                    | when(!isOneDirectional(surroundings), SHADER_MANY_LIGHTS)
                    | when(surroundings.lights.size() > kMaxLights, SHADER_LIGHT_TABLE)
                    | when(geometry.twoSided && !geometry.solid, SHADER_TWO_SIDED);
    }
    // Programs of the scene's own may look up textures of theirs.
    const bool hasImage = !look.texture.image.isNull() || (look.extras && look.extras->program);
    const bool textured = hasImage && geometry.texCoords.size() >= count;
    features |= when(textured, SHADER_TEXTURE)
                | when(geometry.colors.size() >= count, SHADER_COLORS)
                | when(fogOn(look).type != SoEnvironmentValues::NONE, SHADER_FOG);
    return features;
}

const GLProgram* GLRenderer::useProgram(const SoRenderAppearance& look, unsigned& features)
{
    features |= m_peelingFeatures;
    if (features & SHADER_TEXTURE) {
        const GLuint texture = m_device.texture(look.texture);
        if (!texture) {
            features &= ~static_cast<unsigned>(SHADER_TEXTURE);
        } else if (texture != m_texture) {
            glBindTexture(GL_TEXTURE_2D, texture);
            m_texture = texture;
        }
    }
    const GLProgram* program = m_device.program(features);
    if (program && program != m_program) {
        glUseProgram(program->program);
        m_program = program;
        m_material = nullptr;
    }
    return program;
}

void GLRenderer::bindVertexArray(GLuint vertexArray)
{
    if (m_vertexArray != vertexArray) {
        glBindVertexArray(vertexArray);
        m_vertexArray = vertexArray;
    }
}

/// Null when the item is drawn as plain looks are.
const GLProgram* GLRenderer::usePaint(const FrameItem& item, unsigned features)
{
    const SoRenderAppearance& look = *item.entry->appearance;
    if (m_purpose != Purpose::SCENE || !look.extras) {
        return nullptr;
    }
    features |= m_peelingFeatures;
    const GLProgram* program = m_device.paint().find(look, *item.entry->geometry, features);
    if (!program) {
        return nullptr;
    }
    const bool showsImage = (features & SHADER_TEXTURE) && look.extras->program;
    const GLuint texture = showsImage ? m_device.texture(look.texture) : 0;
    if (texture != m_texture) {
        glBindTexture(GL_TEXTURE_2D, texture);
        m_texture = texture;
    }
    if (program != m_program) {
        m_program = program;
        m_material = nullptr;
    }
    glUseProgram(program->program); // a new one may have been made meanwhile
    m_device.paint().bind(*program, look, *item.entry->geometry,
                          m_frame.views[item.view].view.viewing, m_device.textures());
    return program;
}

bool GLRenderer::prepare(const FrameItem& item, const GLGeometry& buffers, unsigned features)
{
    if (m_blending == Blending::SCREEN_DOOR) {
        features |= SHADER_SCREEN_DOOR;
    }
    const SoRenderAppearance& look = *item.entry->appearance;
    if (!usePaint(item, features) && !useProgram(look, features)) {
        return false;
    }
    if (m_purpose == Purpose::SCENE) {
        m_device.paint().applySettings(look.extras.get(), m_writesDepth);
        if (m_blending == Blending::LAYER && look.extras) {
            glDepthFunc(GL_LEQUAL); // layers are found by a test of their own
            glDepthMask(GL_TRUE);
        }
    }
    bindVertexArray(buffers.vertexArray);
    if (m_view != item.view) {
        bindView(item.view);
    }
    bindSurroundings(item, features);
    setMatrices(item, features & SHADER_LIT);
    setMaterial(look, features);
    return true;
}

void GLRenderer::bindView(int view)
{
    m_device.frameBlocks().bindView(static_cast<std::size_t>(view));
    setViewport(m_frame.views[static_cast<std::size_t>(view)].region);
    m_view = view;
}

void GLRenderer::bindSurroundings(const FrameItem& item, unsigned features)
{
    if (m_surroundings == item.surroundings) {
        return;
    }
    const auto planes = static_cast<int>(m_frame.surroundings[item.surroundings].clipPlanes.size());
    for (; m_clipPlanes < std::min(planes, kMaxClipPlanes); ++m_clipPlanes) {
        glEnable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(m_clipPlanes));
    }
    for (; m_clipPlanes > planes; --m_clipPlanes) {
        glDisable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(m_clipPlanes - 1));
    }
    if (features & (SHADER_LIT | SHADER_CLIP)) {
        m_device.frameBlocks().bindSurroundings(item.surroundings);
        m_surroundings = item.surroundings;
    }
}

void GLRenderer::setMatrices(const FrameItem& item, bool lit)
{
    float values[7 * 4];
    std::copy_n(item.toEye.m, 16, values);
    if (lit) {
        normalMatrix(item.toEye, item.mirrored, values + 16);
    }
    glUniform4fv(m_program->toEye, lit ? 7 : 4, values);
}

GLRenderer::MaterialValues GLRenderer::materialValues(const SoRenderAppearance& look,
                                                      unsigned features) const
{
    MaterialValues values{};
    const bool blends = m_blending != Blending::NONE;
    setVector(values[SLOT_DIFFUSE], look.diffuse, blends ? 1 - look.transparency : 1);
    setVector(values[SLOT_AMBIENT], look.ambient, look.shininess * 128);
    const float pattern = m_purpose == Purpose::MASK ? 0xffff : look.drawStyle.linePattern;
    setVector(values[SLOT_SPECULAR], look.specular, pattern);
    const SoEnvironmentValues& around = look.environment;
    SbColor glow;
    for (int c = 0; c < 3; ++c) {
        glow[c] =
            look.emissive[c] + around.ambientIntensity * around.ambientColor[c] * look.ambient[c];
    }
    setVector(values[SLOT_EMISSIVE], glow, look.drawStyle.lineWidth);
    if (features & SHADER_TEXTURE) {
        const SbMatrix& m = look.textureMatrix;
        setVector(values[SLOT_TEXTURE_U], SbColor(m[0][0], m[1][0], m[3][0]), 0);
        setVector(values[SLOT_TEXTURE_V], SbColor(m[0][1], m[1][1], m[3][1]), 0);
        setVector(values[SLOT_BLEND_COLOR], look.texture.blendColor, modelNumber(look.texture));
    }
    if (features & SHADER_FOG) {
        const SoFogValues fog = fogOn(look);
        setVector(values[SLOT_FOG], fog.color, static_cast<float>(fog.type));
        values[SLOT_FOG_RANGE][0] = fog.visibility;
    }
    return values;
}

void GLRenderer::setMaterial(const SoRenderAppearance& look, unsigned features)
{
    if (m_material == &look && m_materialFeatures == features) {
        return;
    }
    m_material = &look;
    m_materialFeatures = features;
    const MaterialValues values = materialValues(look, features);
    const GLsizei count = features & SHADER_FOG       ? NUM_MATERIAL_SLOTS
                          : features & SHADER_TEXTURE ? SLOT_BLEND_COLOR + 1
                                                      : SLOT_EMISSIVE + 1;
    glUniform4fv(m_program->material, count, values[0].data());
}

void GLRenderer::setFaces(const FrameItem& item)
{
    if (item.mirrored != m_mirrored) {
        glFrontFace(item.mirrored ? GL_CW : GL_CCW);
        m_mirrored = item.mirrored;
    }
    setCulling(item.entry->geometry->solid ? GL_BACK : GL_NONE);
}

void GLRenderer::setCulling(GLenum face)
{
    if (face == m_culled) {
        return;
    }
    if (face == GL_NONE) {
        glDisable(GL_CULL_FACE);
    } else {
        glEnable(GL_CULL_FACE);
        glCullFace(face);
    }
    m_culled = face;
}

void GLRenderer::setBlending(Blending blending, bool writeDepth)
{
    if (m_blending == blending) {
        return;
    }
    m_blending = blending;
    m_writesDepth = writeDepth;
    m_device.paint().applySettings(nullptr, writeDepth);
    m_material = nullptr; // its opacity depends on it
    if (blending == Blending::BLEND) {
        glEnable(GL_BLEND);
    } else {
        glDisable(GL_BLEND);
    }
    glDepthMask(writeDepth ? GL_TRUE : GL_FALSE);
}

} // namespace kalmyr::detail
